// The slots through which this module's code calls functions of the system. A variable that is declared with such a
// name takes the slot's place when the module is linked, so that the calls arrive where the variable points.
#pragma once

// Of a function by its name and the bytes of its arguments on x86.
#ifdef __i386__
#define PAYLODGE_IMPORT_SLOT(name, argument_bytes) asm("__imp__" #name "@" #argument_bytes)
#else
#define PAYLODGE_IMPORT_SLOT(name, argument_bytes) asm("__imp_" #name)
#endif
