// The browser instance in which the host wants page notifications to run.
#pragma once

#include "com/bstr.hpp"

namespace paylodge {

// The instance that the host named last; "" until then, null when the host named null. Used on the host's
// user-interface thread only.
extern OwnedBstr g_bstrBrowserInstance;

}  // namespace paylodge

// Exported. Keeps a copy of the text. Throws E_OUTOFMEMORY.
extern "C" void __cdecl SetBrowserInstance(const wchar_t* browser_instance);
