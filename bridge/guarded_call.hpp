// Calls of code whose structured exceptions must not reach the host.
#pragma once

namespace paylodge {

// Calls function(context). False when a structured exception left it; what is on the stack between the function and the
// exception is abandoned, not destroyed. C++ exceptions pass through to the caller's handlers where they can: those of
// this compiler on x64. On x86 they cannot leave the module that threw them, and end the process there; C++ exceptions
// of the platform's own compiler are structured ones. Stack overflow is left to the system, since the stack has lost
// its guard page then; so are breakpoints, for debuggers.
extern "C" {
[[nodiscard]] bool CallGuarded(void(__cdecl* function)(void* context), void* context);
}

}  // namespace paylodge
