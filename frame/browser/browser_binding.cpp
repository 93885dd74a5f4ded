#include "frame/browser/browser_binding.hpp"

namespace paylodge {

OwnedBstr g_bstrBrowserInstance = MakeBstr(L"");

}  // namespace paylodge

extern "C" void __cdecl SetBrowserInstance(const wchar_t* browser_instance) {
    using paylodge::g_bstrBrowserInstance;
    if (browser_instance == g_bstrBrowserInstance.Get()) {
        return;
    }
    g_bstrBrowserInstance = browser_instance == nullptr ? paylodge::OwnedBstr() : paylodge::MakeBstr(browser_instance);
}
