#include "bridge/bridge_library.hpp"

#include "bridge/guarded_call.hpp"
#include "com/ansi_text.hpp"
#include "frame/browser/browser_binding.hpp"
#include "hostapi/libraries.hpp"

namespace paylodge {

ModuleHandle g_hBridgeModule;

namespace {

// The library's reference for the addresses that are kept, beside the one that comes and goes with each script.
ModuleHandle g_kept_bridge_module;

struct ScriptCall {
    ExecuteJavaScriptFunction* execute;
    std::string browser_instance;
    const std::string& script;
};

void __cdecl Execute(void* context) {
    const auto& call = *static_cast<const ScriptCall*>(context);
    call.execute(call.browser_instance.c_str(), call.script.c_str());
}

// C++ exceptions are caught by the caller; on x86 they do not come that far: see CallGuarded.
[[nodiscard]] HRESULT CallExport(const std::string& script) {
    auto* const execute = reinterpret_cast<ExecuteJavaScriptFunction*>(
        reinterpret_cast<void*>(::GetProcAddress(g_hBridgeModule.Get(), kExecuteJavaScript)));
    if (execute == nullptr) {
        return E_FAIL;
    }
    ScriptCall call{execute, AnsiFromBstr(g_bstrBrowserInstance.Get()), script};
    return CallGuarded(&Execute, &call) ? S_OK : E_FAIL;
}

}  // namespace

void LoadBridgeLibrary() noexcept {
    if (!g_hBridgeModule) {
        g_hBridgeModule.Reset(::LoadLibraryA(kBridgeLibrary));
    }
}

void FreeBridgeLibrary() noexcept { g_hBridgeModule.Reset(); }

HRESULT RunScript(const std::function<std::string()>& make_script) noexcept {
    LoadBridgeLibrary();
    if (!g_hBridgeModule) {
        return E_FAIL;
    }
    // The script may lead to another one, at whose end the library is freed; and an exception is the library's.
    const ModuleHandle in_use(::LoadLibraryA(kBridgeLibrary));
    HRESULT result = E_FAIL;
    try {
        result = CallExport(make_script());
    } catch (...) {
        result = E_FAIL;
    }
    FreeBridgeLibrary();
    return result;
}

FARPROC KeepBridgeExport(const char* name) noexcept {
    LoadBridgeLibrary();
    const FARPROC address = g_hBridgeModule ? ::GetProcAddress(g_hBridgeModule.Get(), name) : nullptr;
    if (address != nullptr && !g_kept_bridge_module) {
        g_kept_bridge_module.Reset(::LoadLibraryA(kBridgeLibrary));
    }
    return address;
}

}  // namespace paylodge
