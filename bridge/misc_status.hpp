// The control's status bits, which containers read from the registry or ask the control for.
#pragma once

#include <windows.h>

#include <oleidl.h>

namespace paylodge {

inline constexpr DWORD kControlMiscStatus = OLEMISC_RECOMPOSEONRESIZE | OLEMISC_CANTLINKINSIDE | OLEMISC_INSIDEOUT |
                                            OLEMISC_ACTIVATEWHENVISIBLE | OLEMISC_SETCLIENTSITEFIRST;

}  // namespace paylodge
