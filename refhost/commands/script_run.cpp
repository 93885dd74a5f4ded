#include "refhost/commands/script_run.hpp"

#include <windows.h>

#include <activscp.h>
#include <comdef.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>

#include "com/bstr.hpp"
#include "com/com_ptr.hpp"
#include "com/object_root.hpp"
#include "refhost/commands/result_names.hpp"
#include "refhost/commands/script_globals.hpp"
#include "refhost/objects/utf8.hpp"

namespace paylodge::refhost {
namespace {

constexpr CLSID kJScript = {0xf414c260, 0x6ac0, 0x11cf, {0xb6, 0xd1, 0x00, 0xaa, 0x00, 0xbb, 0xbb, 0x58}};
constexpr CLSID kPaylodge = {0xF8A9E1FD, 0x7DCD, 0x4be8, {0xB5, 0x10, 0x7C, 0xBB, 0x84, 0x93, 0x64, 0xAB}};
constexpr CLSID kPaylodgeCtrl = {0x00A0CCCE, 0x89E6, 0x4779, {0xAA, 0xCD, 0xE7, 0x74, 0x65, 0x1C, 0xB5, 0xAD}};

// The globals of a page script besides the language's own.
using Globals = std::map<std::wstring, ComPtr<IUnknown>, std::less<>>;

void PrintError(const std::string& text) { std::fprintf(stderr, "run: %s\n", text.c_str()); }

// Where and why a script ended that caught no error.
struct Uncaught {
    HRESULT result = E_FAIL;
    std::wstring description;
    ULONG line = 0;
    LONG column = 0;
};

[[nodiscard]] Uncaught Read(IActiveScriptError& error) {
    Uncaught uncaught;
    EXCEPINFO information = {};
    if (SUCCEEDED(error.GetExceptionInfo(&information))) {
        if (information.pfnDeferredFillIn != nullptr) {
            information.pfnDeferredFillIn(&information);
        }
        const OwnedBstr source(information.bstrSource);
        const OwnedBstr description(information.bstrDescription);
        const OwnedBstr help(information.bstrHelpFile);
        uncaught.result = information.scode;
        uncaught.description = View(description);
    }
    DWORD context = 0;
    if (SUCCEEDED(error.GetSourcePosition(&context, &uncaught.line, &uncaught.column))) {
        ++uncaught.line;
        ++uncaught.column;
    }
    return uncaught;
}

// The engine's host.
class CScriptSite : public IActiveScriptSite {
  public:
    using Row = InterfaceRow<CScriptSite>;
    static constexpr std::array kInterfaces = {Row::Of<IActiveScriptSite>()};

    CScriptSite(const Globals* globals, std::optional<Uncaught>* uncaught) noexcept
        : globals_(globals), uncaught_(uncaught) {}

    STDMETHODIMP GetLCID(LCID*) override { return E_NOTIMPL; }
    STDMETHODIMP GetItemInfo(LPCOLESTR name, DWORD wanted, IUnknown** item, ITypeInfo** info) override {
        const auto found = globals_->find(name);
        if (found == globals_->end()) {
            return TYPE_E_ELEMENTNOTFOUND;
        }
        if ((wanted & SCRIPTINFO_ITYPEINFO) != 0 && info != nullptr) {
            *info = nullptr;
        }
        if ((wanted & SCRIPTINFO_IUNKNOWN) != 0 && item != nullptr) {
            *item = found->second.Get();
            (*item)->AddRef();
        }
        return S_OK;
    }
    STDMETHODIMP GetDocVersionString(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP OnScriptTerminate(const VARIANT*, const EXCEPINFO*) override { return S_OK; }
    STDMETHODIMP OnStateChange(SCRIPTSTATE) override { return S_OK; }
    STDMETHODIMP OnScriptError(IActiveScriptError* error) override {
        *uncaught_ = Read(*error);
        return S_OK;
    }
    STDMETHODIMP OnEnterScript() override { return S_OK; }
    STDMETHODIMP OnLeaveScript() override { return S_OK; }

  protected:
    ~CScriptSite() = default;

  private:
    const Globals* globals_;
    std::optional<Uncaught>* uncaught_;
};

void Check(HRESULT result) {
    if (FAILED(result)) {
        _com_issue_error(result);
    }
}

[[nodiscard]] ComPtr<IUnknown> CreateGlobal(const CLSID& class_id) {
    ComPtr<IUnknown> object;
    Check(::CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, object.ReceiveVoid()));
    return object;
}

[[nodiscard]] Globals MakeGlobals(ScriptSession& session) {
    Globals globals;
    globals.emplace(L"paylodge", CreateGlobal(kPaylodge));
    globals.emplace(L"paylodgeControl", CreateGlobal(kPaylodgeCtrl));
    ComPtr<IUnknown> script_host;
    Check(ComObject<CScriptGlobals>::Create(&session).As(script_host));
    globals.emplace(L"WScript", std::move(script_host));
    return globals;
}

// What the script did not catch, if anything. Throws COM errors when there is no engine or an object cannot be made.
[[nodiscard]] std::optional<Uncaught> Execute(const std::wstring& text, ScriptSession& session) {
    const Globals globals = MakeGlobals(session);
    std::optional<Uncaught> uncaught;
    const auto site = ComObject<CScriptSite>::Create(&globals, &uncaught);
    ComPtr<IActiveScript> engine;
    ComPtr<IActiveScriptParse> parser;
    Check(::CoCreateInstance(kJScript, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IActiveScript), engine.ReceiveVoid()));
    Check(engine.As(parser));
    Check(parser->InitNew());
    Check(engine->SetScriptSite(site.Get()));
    for (const auto& [name, object] : globals) {
        Check(engine->AddNamedItem(name.c_str(), SCRIPTITEM_ISVISIBLE));
    }
    Check(engine->SetScriptState(SCRIPTSTATE_CONNECTED));
    EXCEPINFO information = {};
    const HRESULT result =
        parser->ParseScriptText(text.c_str(), nullptr, nullptr, nullptr, 0, 0, 0, nullptr, &information);
    if (FAILED(result) && !uncaught) {
        uncaught = Uncaught{.result = result, .description = {}, .line = 0, .column = 0};
    }
    engine->Close();
    return uncaught;
}

// Nothing, with a word about it, when there is no such script.
[[nodiscard]] std::optional<std::wstring> ReadScript(const std::wstring& path) {
    std::error_code error;
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    if (!file || std::filesystem::is_directory(path, error)) {
        PrintError("the script " + Utf8FromWide(path) + " does not exist or cannot be opened");
        return std::nullopt;
    }
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    auto text = WideFromUntrustedUtf8(
        std::string_view(bytes).substr(bytes.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0));
    if (!text) {
        PrintError("the script " + Utf8FromWide(path) + " is not UTF-8 text: save it as UTF-8");
    }
    return text;
}

void Report(const Uncaught& uncaught, const std::wstring& file) {
    const std::string place = uncaught.line == 0
                                  ? std::string()
                                  : ':' + std::to_string(uncaught.line) + ':' + std::to_string(uncaught.column);
    const std::string description = Utf8FromWide(uncaught.description);
    PrintError(Utf8FromWide(file) + place + ": " +
               (description.empty() ? std::string("an error without a description") : description));
    PrintError(DescribeResult(uncaught.result));
}

}  // namespace

int RunScript(const std::vector<std::wstring>& words) {
    const auto text = ReadScript(words.at(0));
    if (!text) {
        return 2;
    }
    ScriptSession session{std::filesystem::absolute(words[0]).wstring(), {words.begin() + 1, words.end()}, {}};
    try {
        const auto uncaught = Execute(*text, session);
        if (session.quit) {
            return *session.quit;
        }
        if (uncaught) {
            Report(*uncaught, words[0]);
            return 1;
        }
        return 0;
    } catch (const _com_error& error) {
        PrintError("the script cannot be run here: " + DescribeResult(error.Error()));
        return 1;
    }
}

}  // namespace paylodge::refhost
