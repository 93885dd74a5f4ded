#include "frame/registrar/registrar.hpp"

#include "com/ansi_text.hpp"
#include "com/boundary.hpp"
#include "com/module.hpp"
#include "frame/registrar/registry_writer.hpp"

namespace paylodge {
namespace {

// What the platform handed out. Throws its error if that is nothing.
template <class Handle>
[[nodiscard]] Handle Checked(Handle handle) {
    if (handle == nullptr) {
        _com_issue_error(HRESULT_FROM_WIN32(::GetLastError()));
    }
    return handle;
}

// Lives as long as the module is loaded.
[[nodiscard]] std::string_view ScriptResource(WORD id) {
    const HINSTANCE module = Module::Instance();
    const HRSRC resource = Checked(::FindResourceW(module, MAKEINTRESOURCEW(id), L"REGISTRY"));
    const HGLOBAL script = Checked(::LoadResource(module, resource));
    return {static_cast<const char*>(::LockResource(script)), ::SizeofResource(module, resource)};
}

[[nodiscard]] std::u16string ScriptText(WORD id, RegistrationScope scope) {
    const OwnedBstr text = BstrFromAnsi(ScriptResource(id));
    const std::wstring_view view = View(text);
    std::u16string script(view.begin(), view.end());
    return scope == RegistrationScope::kCurrentUser ? RewriteForCurrentUser(script) : script;
}

// A developer who gets a script wrong sees where.
void ReportMistake(WORD id, const RegistryScriptError& error) {
    ::OutputDebugStringA(("Registry script " + std::to_string(id) + ", " + error.what() + ".\n").c_str());
}

}  // namespace

HRESULT Registrar::Register(WORD script) const { return Run(script, &WriteScript); }

HRESULT Registrar::Unregister(WORD script) const { return Run(script, &RemoveScript); }

HRESULT Registrar::Run(WORD script, HRESULT (*apply)(const RegistryScript&)) const {
    try {
        return apply(ParseRegistryScript(ScriptText(script, scope_), variables_));
    } catch (const RegistryScriptError& error) {
        ReportMistake(script, error);
        return DISP_E_EXCEPTION;
    } catch (...) {
        return CaughtHResult();
    }
}

}  // namespace paylodge
