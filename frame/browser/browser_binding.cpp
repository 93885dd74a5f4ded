#include "frame/browser/browser_binding.hpp"

namespace paylodge {

// Without memory for it, the library does not load.
OwnedBstr g_bstrBrowserInstance = MakeBstr(L"");  // NOLINT(cert-err58-cpp)

}  // namespace paylodge

extern "C" void __cdecl SetBrowserInstance(const wchar_t* browser_instance) {
    using paylodge::g_bstrBrowserInstance;
    if (browser_instance == g_bstrBrowserInstance.Get()) {
        return;
    }
    g_bstrBrowserInstance = browser_instance == nullptr ? paylodge::OwnedBstr() : paylodge::MakeBstr(browser_instance);
}
