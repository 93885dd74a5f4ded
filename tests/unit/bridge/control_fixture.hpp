// What the tests of the control share: controls, sinks that record, and the host's bridge library in several variants.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "bridge/paylodge_ctrl.hpp"
#include "com/bstr.hpp"
#include "com/object_root.hpp"
#include "frame/browser/browser_binding.hpp"
#include "refhost/objects/undispatched.hpp"
#include "tests/unit/bridge/bridge_observer.hpp"
#include "tests/unit/operations/operation_fixture.hpp"

namespace paylodge::test {

using Control = ComObject<CPaylodgeCtrl>;

// The calls that reached the bridge library, and what it returns.
class BridgeCalls : public BridgeObserver {
  public:
    // Such as `first: StartEMV("12.50")`; strings between double quotes, null as null. Narrow texts are shown byte by
    // byte.
    std::vector<std::wstring> calls;
    // The texts of ExecuteJavaScript, as they came.
    std::vector<std::string> scripts;
    // Where the texts among the arguments were.
    std::vector<const wchar_t*> texts;
    const wchar_t* text = L"answer";
    unsigned char byte = 1;
    // Run at the start of every call.
    std::function<void()> on_call;
    // Run at the end of a script; may throw.
    std::function<void()> on_script;
    bool throws_at_end = false;
    // The strings that the caller owns by now.
    std::vector<BSTR> given;

    void Called(const char* variant, const char* function) override;
    void GotText(const wchar_t* argument) override;
    void GotNarrowText(const char* argument) override;
    void GotNumber(int argument) override;
    void Ran() override;
    [[nodiscard]] bool ThrowsAtEnd() override { return throws_at_end; }
    [[nodiscard]] const wchar_t* Text() override { return text; }
    [[nodiscard]] BSTR String() override;
    [[nodiscard]] unsigned char Byte() override { return byte; }

  private:
    void Append(const std::wstring& argument);

    std::string last_narrow_text_;
};

// While it lives, the process finds the bridge library in this folder beside the program and nowhere else: `first`,
// `second`, `without_functions`; there is none in `.`.
class LibraryFolder {
  public:
    explicit LibraryFolder(const std::wstring& name);
    ~LibraryFolder();
    LibraryFolder(const LibraryFolder&) = delete;
    LibraryFolder& operator=(const LibraryFolder&) = delete;

  private:
    std::wstring previous_folder_;
    std::wstring previous_path_;
};

// The folder with the folders of the variants.
[[nodiscard]] std::wstring BridgeFolder();
[[nodiscard]] inline bool IsBridgeLoaded() noexcept { return ::GetModuleHandleW(L"Oskerin.dll") != nullptr; }

// A fault, and a C++ exception of the platform's own compiler.
inline constexpr DWORD kThrownByAnotherCompiler = 0xE06D7363;
inline constexpr DWORD kStructuredExceptions[] = {EXCEPTION_ACCESS_VIOLATION, kThrownByAnotherCompiler};

#ifndef _WIN64
inline constexpr auto kNoExceptionsBetweenModules =
    "exceptions do not cross from one module to another with this compiler on x86";
#endif

// What an exception that left a script has to leave behind: no library in the process.
void ExpectNoLibrary();

// A sink of the control's events.
class EventSink : public refhost::Undispatched<_IPaylodgeCtrlEvents> {
  public:
    using Row = InterfaceRow<EventSink>;
    static constexpr std::array kInterfaces = {Row::Of<_IPaylodgeCtrlEvents>(), Row::Of<IDispatch>()};

    // Events are appended to the list, such as `a: 4("p1", "2024-01-31", bool -1)`: arguments in the event's own order.
    EventSink(const wchar_t* name, std::vector<std::wstring>& events) : name_(name), events_(events) {}

    // What Invoke returns, after this was run.
    HRESULT code = S_OK;
    std::function<void()> on_event;

    STDMETHODIMP Invoke(DISPID id, REFIID interface_id, LCID locale, WORD flags, DISPPARAMS* arguments, VARIANT* result,
                        EXCEPINFO* exception, UINT* argument_error) override;

  protected:
    ~EventSink() = default;

  private:
    const wchar_t* name_;
    std::vector<std::wstring>& events_;
};

// Connects a sink; returns its cookie.
[[nodiscard]] DWORD Advise(CPaylodgeCtrl& control, EventSink& sink);
[[nodiscard]] HRESULT Unadvise(CPaylodgeCtrl& control, DWORD cookie);

// What a process starts with, before any test has run.
struct StartState {
    bool has_controls = true;
    std::wstring channel;
    bool has_browser_instance_string = false;
    std::wstring browser_instance = L"?";
    bool has_notification_data = true;
    bool has_bridge_library = true;
};
extern StartState g_start_state;

// Puts the state of the process back to what it starts with, and finds every object gone.
class ProcessState {
  public:
    ProcessState() = default;
    ~ProcessState();
    ProcessState(const ProcessState&) = delete;
    ProcessState& operator=(const ProcessState&) = delete;

  private:
    LONG references_before_ = Module::References();
};

// Two controls, of which neither is subscribed. A sink that is connected to the first.
class ControlTest : public ::testing::Test {
  protected:
    ControlTest();
    ~ControlTest() override;

    [[nodiscard]] ComPtr<ComObject<EventSink>> MakeSink(const wchar_t* name) {
        return ComObject<EventSink>::Create(name, events_);
    }

  private:
    ProcessState state_;

  protected:
    BridgeCalls bridge_;
    std::vector<std::wstring> events_;

  private:
    ComPtr<Control> owner_ = Control::Create();
    ComPtr<Control> other_owner_ = Control::Create();

  protected:
    Control& control_ = *owner_.Get();
    Control& other_ = *other_owner_.Get();
    ComPtr<ComObject<EventSink>> sink_ = MakeSink(L"sink");
};

}  // namespace paylodge::test
