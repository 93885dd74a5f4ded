// IObjectSafety with its id, which the platform's header leaves out.
#pragma once

#include <windows.h>

#include <objsafe.h>

__CRT_UUID_DECL(IObjectSafety, 0xCB5BDC81, 0x93C1, 0x11CF, 0x8F, 0x20, 0x00, 0x80, 0x5F, 0x2C, 0xD0, 0x64)
