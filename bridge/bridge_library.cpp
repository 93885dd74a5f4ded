#include "bridge/bridge_library.hpp"

#include <utility>

#include "com/ansi_text.hpp"
#include "com/guarded_call.hpp"
#include "frame/browser/browser_binding.hpp"
#include "hostapi/libraries.hpp"

namespace paylodge {

HMODULE g_hBridgeModule = nullptr;

namespace {

// The library's reference for the addresses that are kept, beside the one that comes and goes with each script.
HMODULE g_kept_bridge_module = nullptr;

}  // namespace

void LoadBridgeLibrary() noexcept {
    if (g_hBridgeModule == nullptr) {
        g_hBridgeModule = ::LoadLibraryA(kBridgeLibrary);
    }
}

void FreeBridgeLibrary() noexcept {
    if (const HMODULE library = std::exchange(g_hBridgeModule, nullptr)) {
        ::FreeLibrary(library);
    }
}

ScriptRun::ScriptRun() noexcept {
    LoadBridgeLibrary();
    if (g_hBridgeModule != nullptr) {
        in_use_.Reset(::LoadLibraryA(kBridgeLibrary));
    }
}

HRESULT ScriptRun::Execute(const std::string& script) const {
    auto* const execute = reinterpret_cast<ExecuteJavaScriptFunction*>(
        reinterpret_cast<void*>(::GetProcAddress(in_use_.Get(), kExecuteJavaScript)));
    if (execute == nullptr) {
        return E_FAIL;
    }
    const std::string browser_instance = AnsiFromBstr(g_bstrBrowserInstance.Get());
    const auto call = [&] { execute(browser_instance.c_str(), script.c_str()); };
    return RunGuarded(call, &IsForeignExceptionOrCrash) == 0 ? S_OK : E_FAIL;
}

FARPROC KeepBridgeExport(const char* name) noexcept {
    LoadBridgeLibrary();
    const FARPROC address = g_hBridgeModule == nullptr ? nullptr : ::GetProcAddress(g_hBridgeModule, name);
    if (address != nullptr && g_kept_bridge_module == nullptr) {
        g_kept_bridge_module = ::LoadLibraryA(kBridgeLibrary);
    }
    return address;
}

}  // namespace paylodge
