#include "tests/unit/bridge/control_fixture.hpp"

#include "bridge/bridge_library.hpp"
#include "bridge/channel_registry.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {

StartState g_start_state;

namespace {

BridgeObserver* g_observer = nullptr;

[[nodiscard]] std::wstring Quoted(std::wstring_view text) { return L"\"" + std::wstring(text) + L"\""; }

[[nodiscard]] std::wstring Show(const VARIANT& argument) {
    switch (V_VT(&argument)) {
        case VT_BSTR:
            return V_BSTR(&argument) == nullptr ? L"null" : Quoted(View(V_BSTR(&argument)));
        case VT_BOOL:
            return L"bool " + std::to_wstring(V_BOOL(&argument));
        default:
            return L"type " + std::to_wstring(V_VT(&argument));
    }
}

[[nodiscard]] std::wstring CurrentFolder() {
    std::wstring folder(::GetCurrentDirectoryW(0, nullptr), L'\0');
    folder.resize(::GetCurrentDirectoryW(static_cast<DWORD>(folder.size()), folder.data()));
    return folder;
}

[[nodiscard]] std::wstring SearchPath() {
    std::wstring path(::GetEnvironmentVariableW(L"PATH", nullptr, 0), L'\0');
    path.resize(::GetEnvironmentVariableW(L"PATH", path.data(), static_cast<DWORD>(path.size())));
    return path;
}

[[nodiscard]] ComPtr<IConnectionPoint> EventsOf(CPaylodgeCtrl& control) {
    ComPtr<IConnectionPoint> point;
    EXPECT_HRESULT(S_OK, control.FindConnectionPoint(DIID__IPaylodgeCtrlEvents, point.Receive()));
    return point;
}

[[nodiscard]] bool HasNotificationData() {
    StringSink data;
    EXPECT_HRESULT(S_OK, Control::Create()->get_LHTransactionNotificationData(data.Slot()));
    return data.Get() != nullptr;
}

class StartStateReader : public ::testing::Environment {
  public:
    void SetUp() override {
        g_start_state = {.has_controls = !g_mapChannelControls.empty(),
                         .channel = std::wstring(View(g_bstrChannelName)),
                         .has_browser_instance_string = static_cast<bool>(g_bstrBrowserInstance),
                         .browser_instance = std::wstring(View(g_bstrBrowserInstance)),
                         .has_notification_data = HasNotificationData(),
                         .has_bridge_library = g_hBridgeModule != nullptr};
    }
};

const ::testing::Environment* const g_start_state_reader = ::testing::AddGlobalTestEnvironment(new StartStateReader);

}  // namespace

void BridgeCalls::Called(const char* variant, const char* function) {
    const std::string call = std::string(variant) + ": " + function + "()";
    calls.emplace_back(call.begin(), call.end());
    if (on_call) {
        on_call();
    }
}

void BridgeCalls::Append(const std::wstring& argument) {
    std::wstring& call = calls.back();
    call.insert(call.size() - 1, (call.ends_with(L"()") ? L"" : L", ") + argument);
}

void BridgeCalls::GotText(const wchar_t* argument) {
    texts.push_back(argument);
    Append(argument == nullptr ? L"null" : Quoted(argument));
}

void BridgeCalls::GotNarrowText(const char* argument) {
    last_narrow_text_ = argument;
    std::wstring wide;
    for (const char character : std::string_view(argument)) {
        wide += static_cast<wchar_t>(static_cast<unsigned char>(character));
    }
    Append(Quoted(wide));
}

void BridgeCalls::GotNumber(int argument) { Append(std::to_wstring(argument)); }

void BridgeCalls::Ran() {
    scripts.push_back(last_narrow_text_);
    // It may replace itself.
    if (const auto run = on_script) {
        run();
    }
}

BSTR BridgeCalls::String() {
    given.push_back(text == nullptr ? nullptr : MakeBstr(text).Detach());
    return given.back();
}

void ExpectNoLibrary() {
    EXPECT_FALSE(IsBridgeLoaded());
    EXPECT_EQ(g_hBridgeModule, nullptr);
}

std::wstring BridgeFolder() {
    const std::wstring program = Module::Path();
    return program.substr(0, program.find_last_of(L'\\')) + L"\\bridge";
}

LibraryFolder::LibraryFolder(const std::wstring& name)
    : previous_folder_(CurrentFolder()), previous_path_(SearchPath()) {
    const std::wstring folder = name.find(L':') == std::wstring::npos ? BridgeFolder() + L"\\" + name : name;
    EXPECT_TRUE(::SetCurrentDirectoryW(folder.c_str())) << "the folder of a bridge library is missing";
    ::SetEnvironmentVariableW(L"PATH", nullptr);
}

LibraryFolder::~LibraryFolder() {
    ::SetCurrentDirectoryW(previous_folder_.c_str());
    ::SetEnvironmentVariableW(L"PATH", previous_path_.c_str());
}

STDMETHODIMP EventSink::Invoke(DISPID id, REFIID interface_id, LCID locale, WORD flags, DISPPARAMS* arguments,
                               VARIANT* result, EXCEPINFO* exception, UINT* argument_error) {
    EXPECT_TRUE(IsEqualIID(interface_id, IID_NULL));
    EXPECT_EQ(locale, static_cast<LCID>(LOCALE_USER_DEFAULT));
    EXPECT_EQ(flags, DISPATCH_METHOD);
    EXPECT_EQ(arguments->cNamedArgs, 0U);
    EXPECT_NE(result, nullptr);
    EXPECT_EQ(exception, nullptr);
    EXPECT_EQ(argument_error, nullptr);
    std::wstring event = std::wstring(name_) + L": " + std::to_wstring(id) + L"(";
    for (UINT index = arguments->cArgs; index > 0; --index) {
        event += Show(arguments->rgvarg[index - 1]) + (index > 1 ? L", " : L"");
    }
    events_.push_back(event + L")");
    // It may replace itself.
    if (const auto run = on_event) {
        run();
    }
    // The control frees it.
    V_VT(result) = VT_BSTR;
    V_BSTR(result) = MakeBstr(L"result").Detach();
    return code;
}

DWORD Advise(CPaylodgeCtrl& control, EventSink& sink) {
    DWORD cookie = 0;
    EXPECT_HRESULT(S_OK, EventsOf(control)->Advise(&sink, &cookie));
    return cookie;
}

HRESULT Unadvise(CPaylodgeCtrl& control, DWORD cookie) { return EventsOf(control)->Unadvise(cookie); }

ProcessState::~ProcessState() {
    EXPECT_EQ(Module::References(), references_before_);
    EXPECT_TRUE(g_mapChannelControls.empty()) << "a control that is gone is still subscribed";
    g_bstrChannelName = MakeBstr(L"Default");
    ::SetBrowserInstance(L"");
    Control::Create()->put_LHTransactionNotificationData(nullptr);
    FreeBridgeLibrary();
}

ControlTest::ControlTest() {
    g_observer = &bridge_;
    static_cast<void>(Advise(control_, *sink_.Get()));
}

ControlTest::~ControlTest() { g_observer = nullptr; }

}  // namespace paylodge::test

// The fake of the bridge library finds its observer by this name.
extern "C" __declspec(dllexport) paylodge::test::BridgeObserver* __cdecl TheBridgeObserver();
extern "C" paylodge::test::BridgeObserver* __cdecl TheBridgeObserver() { return paylodge::test::g_observer; }
