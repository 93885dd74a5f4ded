// The page in the system's script engine.

#include <windows.h>

#include <activscp.h>

#include "com/bstr.hpp"
#include "com/object_root.hpp"
#include "com/variant.hpp"
#include "tests/support/platform.hpp"
#include "tests/unit/bridge/script_page.hpp"

namespace paylodge::test {
namespace {

constexpr CLSID kJScript = {0xf414c260, 0x6ac0, 0x11cf, {0xb6, 0xd1, 0x00, 0xaa, 0x00, 0xbb, 0xbb, 0x58}};

// The engine's host: it has no objects of its own, and learns of errors by their HRESULTs.
class Site : public IActiveScriptSite {
  public:
    using Row = InterfaceRow<Site>;
    static constexpr std::array kInterfaces = {Row::Of<IActiveScriptSite>()};

    STDMETHODIMP GetLCID(LCID*) override { return E_NOTIMPL; }
    STDMETHODIMP GetItemInfo(LPCOLESTR, DWORD, IUnknown**, ITypeInfo**) override { return TYPE_E_ELEMENTNOTFOUND; }
    STDMETHODIMP GetDocVersionString(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP OnScriptTerminate(const VARIANT*, const EXCEPINFO*) override { return S_OK; }
    STDMETHODIMP OnStateChange(SCRIPTSTATE) override { return S_OK; }
    STDMETHODIMP OnScriptError(IActiveScriptError*) override { return S_OK; }
    STDMETHODIMP OnEnterScript() override { return S_OK; }
    STDMETHODIMP OnLeaveScript() override { return S_OK; }

  protected:
    ~Site() = default;
};

// One engine with its global object.
class Engine {
  public:
    Engine() {
        if (SUCCEEDED(::CoCreateInstance(kJScript, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IActiveScript),
                                         engine_.ReceiveVoid())) &&
            SUCCEEDED(engine_.As(parser_)) && SUCCEEDED(parser_->InitNew())) {
            is_ready_ = SUCCEEDED(engine_->SetScriptSite(ComObject<Site>::Create().Get())) &&
                        SUCCEEDED(engine_->SetScriptState(SCRIPTSTATE_STARTED));
        }
    }
    ~Engine() {
        if (engine_) {
            engine_->Close();
        }
    }
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    [[nodiscard]] bool IsReady() const noexcept { return is_ready_; }

    [[nodiscard]] HRESULT Run(std::string_view script) {
        EXCEPINFO error = {};
        return parser_->ParseScriptText(Wide(script).Get(), nullptr, nullptr, nullptr, 0, 0, 0, nullptr, &error);
    }

    // The text of a global variable.
    [[nodiscard]] std::string TextOf(const wchar_t* variable) {
        ComPtr<IDispatch> global;
        DISPID id = DISPID_UNKNOWN;
        OwnedBstr name = MakeBstr(variable);
        BSTR names[] = {name.Get()};
        OwnedVariant value;
        DISPPARAMS none = {};
        if (FAILED(engine_->GetScriptDispatch(nullptr, global.Receive())) ||
            FAILED(global->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id)) ||
            FAILED(global->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none, value.Receive(),
                                  nullptr, nullptr)) ||
            value.Type() != VT_BSTR) {
            return "(no text)";
        }
        std::string text;
        for (const wchar_t unit : View(value.Bstr())) {
            text += static_cast<char>(unit);
        }
        return text;
    }

  private:
    // Latin-1 is the beginning of Unicode.
    [[nodiscard]] static OwnedBstr Wide(std::string_view text) {
        std::wstring wide;
        for (const char character : text) {
            wide += static_cast<wchar_t>(static_cast<unsigned char>(character));
        }
        return MakeBstr(wide);
    }

    ComPtr<IActiveScript> engine_;
    ComPtr<IActiveScriptParse> parser_;
    bool is_ready_ = false;
};

}  // namespace

std::optional<std::string> WhyNoScriptEngine() {
    return Engine().IsReady() ? std::nullopt : std::optional<std::string>("there is no JScript engine");
}

std::string RunInPage(std::string_view script) {
    Engine engine;
    if (!engine.IsReady() || FAILED(engine.Run(kPageScript))) {
        return "(no page)";
    }
    return FAILED(engine.Run(script)) ? kScriptError : engine.TextOf(L"arrived");
}

std::string RawLineEnd(const std::string& under_wine) { return WindowsOrWine<std::string>(kScriptError, under_wine); }

}  // namespace paylodge::test
