// Every push of the host, as an event and as a script.

#include "bridge/bridge_library.hpp"
#include "bridge/channel_registry.hpp"
#include "tests/support/bstr_allocations.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/live_allocations.hpp"
#include "tests/support/rows.hpp"
#include "tests/unit/bridge/control_fixture.hpp"
#include "tests/unit/bridge/script_page.hpp"

namespace paylodge::test {
namespace {

using Texts = std::vector<std::wstring>;

enum class Escaping { kNewline, kQuote, kNeverScript };

// A push with one argument.
struct Push {
    const char* name;
    HRESULT (STDMETHODCALLTYPE CPaylodgeCtrl::*method)(BSTR);
    const wchar_t* function;
    Escaping escaping;
    int event;

    friend std::ostream& operator<<(std::ostream& stream, const Push& push) { return stream << push.name; }
};

const Push kPushes[] = {
    {"NotifyTransactionChanged", &CPaylodgeCtrl::NotifyTransactionChanged, L"app.lhProxy.txnChangeEventFromLH",
     Escaping::kNewline, 1},
    {"SetReconFeeData", &CPaylodgeCtrl::SetReconFeeData, L"app.lhProxy.feeEventFromLH", Escaping::kNewline, 3},
    {"SetReconBatchData", &CPaylodgeCtrl::SetReconBatchData, L"app.lhProxy.batchEventFromLH", Escaping::kNewline, 2},
    {"SetTransactionID", &CPaylodgeCtrl::SetTransactionID, L"app.lhProxy.invoiceIdFromLH", Escaping::kNewline, 5},
    {"setEInvoicedTransactionData", &CPaylodgeCtrl::setEInvoicedTransactionData, L"app.lhProxy.eInvoicesEvent",
     Escaping::kNewline, 6},
    {"SetCustomerListData", &CPaylodgeCtrl::SetCustomerListData, L"app.lhProxy.customerDataFromLH", Escaping::kNewline,
     8},
    {"SetItemListData", &CPaylodgeCtrl::SetItemListData, nullptr, Escaping::kNeverScript, 9},
    {"SetCustomerData", &CPaylodgeCtrl::SetCustomerData, L"$.fn.customerDataFromLH", Escaping::kNewline, 10},
    {"SetCustomerSearchResult", &CPaylodgeCtrl::SetCustomerSearchResult, L"$.fn.CustomerSearchResultFromLH",
     Escaping::kQuote, 11},
    {"SetLineItemsSearchResult", &CPaylodgeCtrl::SetLineItemsSearchResult, L"$.fn.LineItemSearchResultFromLH",
     Escaping::kQuote, 12},
};

std::string NameOf(const ::testing::TestParamInfo<Push>& information) { return information.param.name; }

// The HRESULT of the COM error that a call throws, or what it returns.
template <class Call>
[[nodiscard]] HRESULT CodeOf(const Call& call) {
    try {
        return call();
    } catch (const _com_error& error) {
        return error.Error();
    }
}

// What the process keeps of the last transaction that was notified of.
[[nodiscard]] std::wstring StoredIn(CPaylodgeCtrl& control) {
    StringSink data;
    EXPECT_HRESULT(S_OK, control.get_LHTransactionNotificationData(data.Slot()));
    return data.Show();
}

// The first control is subscribed, and the bridge library is there.
class Pushes : public ControlTest, public ::testing::WithParamInterface<Push> {
  protected:
    Pushes() { control_.SubscribeToNotifications(); }

    [[nodiscard]] HRESULT Send(CPaylodgeCtrl& control, BSTR data) { return (control.*GetParam().method)(data); }
    [[nodiscard]] HRESULT Send(const Argument& data) { return Send(control_, data); }
    [[nodiscard]] bool IsNeverScript() const { return GetParam().escaping == Escaping::kNeverScript; }

    // The event with this text, and the call of ExecuteJavaScript with this browser and argument.
    [[nodiscard]] static std::wstring Event(const std::wstring& shown) {
        return L"sink: " + std::to_wstring(GetParam().event) + L"(" + shown + L")";
    }
    [[nodiscard]] static std::wstring Script(const std::wstring& argument, const std::wstring& browser = L"7") {
        return L"first: ExecuteJavaScript(\"" + browser + L"\", \"" + GetParam().function + L"(\"" + argument +
               L"\")\")";
    }
    void ExpectOnlyEvent(const std::wstring& shown) {
        EXPECT_EQ(events_, Texts{Event(shown)});
        EXPECT_EQ(bridge_.calls, Texts{});
    }
    void ExpectNothing() {
        EXPECT_EQ(events_, Texts{});
        EXPECT_EQ(bridge_.calls, Texts{});
    }

    LibraryFolder library_{L"first"};
};

INSTANTIATE_TEST_SUITE_P(Control, Pushes, ::testing::ValuesIn(kPushes), NameOf);

TEST_P(Pushes, RaiseTheirEventWithoutABrowserInstance) {
    EXPECT_HRESULT(S_OK, Send(Argument(L"a \"b\"\nc\\\u2606")));
    ExpectOnlyEvent(L"\"a \"b\"\nc\\\u2606\"");
}

TEST_P(Pushes, RaiseTheirEventWithNullEmptyAndEmbeddedNuls) {
    EXPECT_HRESULT(S_OK, Send(control_, nullptr));
    EXPECT_HRESULT(S_OK, Send(Argument(L"")));
    EXPECT_HRESULT(S_OK, Send(Argument(std::wstring{L'a', L'\0', L'b'})));
    EXPECT_EQ(events_, (Texts{Event(L"null"), Event(L"\"\""), Event(std::wstring{L'"', L'a', L'\0', L'b', L'"'})}));
}

TEST_P(Pushes, ReturnWhatTheSinkReturns) {
    sink_->code = DISP_E_MEMBERNOTFOUND;
    EXPECT_HRESULT(DISP_E_MEMBERNOTFOUND, Send(Argument(L"a")));
    sink_->code = S_FALSE;
    EXPECT_HRESULT(S_FALSE, Send(Argument(L"a")));
}

TEST_P(Pushes, SucceedWithoutASink) {
    other_.SubscribeToNotifications();
    EXPECT_HRESULT(S_OK, Send(Argument(L"a")));
    ExpectNothing();
}

TEST_P(Pushes, RaiseTheEventOfTheSubscribedControlWhicheverIsCalled) {
    EXPECT_HRESULT(S_OK, Send(other_, Argument(L"a")));
    ExpectOnlyEvent(L"\"a\"");
}

TEST_P(Pushes, RaiseTheirEventForAnUndefinedBrowserInstance) {
    for (const wchar_t* const browser :
         {L"undefined", L"UNDEFINED", L"Undefined", static_cast<const wchar_t*>(nullptr)}) {
        ::SetBrowserInstance(browser);
        events_.clear();
        EXPECT_HRESULT(S_OK, Send(Argument(L"a")));
        ExpectOnlyEvent(L"\"a\"");
    }
}

TEST_P(Pushes, FailWithoutASubscriberOnTheChannel) {
    control_.SetChannelName(Argument(L"nobody's"));
    for (const wchar_t* const browser : {L"", L"7"}) {
        ::SetBrowserInstance(browser);
        EXPECT_HRESULT(E_FAIL, Send(Argument(L"a")));
        ExpectNothing();
    }
}

TEST_P(Pushes, RunTheirScriptInTheBrowserInstanceThatIsNamed) {
    ::SetBrowserInstance(L"7");
    EXPECT_HRESULT(S_OK, Send(Argument(L"a'b\tc")));
    if (IsNeverScript()) {
        ExpectOnlyEvent(L"\"a'b\tc\"");
    } else {
        EXPECT_EQ(bridge_.calls, Texts{Script(L"a'b\tc")});
        EXPECT_EQ(events_, Texts{});
    }
    EXPECT_FALSE(IsBridgeLoaded());
}

TEST_P(Pushes, AreLostWithoutTheLibrary) {
    ::SetBrowserInstance(L"7");
    const LibraryFolder missing(L".");
    EXPECT_HRESULT(IsNeverScript() ? S_OK : E_FAIL, Send(Argument(L"a")));
    EXPECT_EQ(events_.size(), IsNeverScript() ? 1U : 0U);
}

TEST_P(Pushes, AreLostWithoutTheFunction) {
    ::SetBrowserInstance(L"7");
    const LibraryFolder without_functions(L"without_functions");
    EXPECT_HRESULT(IsNeverScript() ? S_OK : E_FAIL, Send(Argument(L"a")));
    EXPECT_EQ(events_.size(), IsNeverScript() ? 1U : 0U);
    EXPECT_FALSE(IsBridgeLoaded());
}

TEST_P(Pushes, StoreNothingUnlessTheyNotifyOfATransaction) {
    for (const wchar_t* const browser : {L"", L"7"}) {
        ::SetBrowserInstance(browser);
        EXPECT_HRESULT(S_OK, Send(Argument(browser)));
        EXPECT_EQ(StoredIn(control_), GetParam().event == 1 ? browser : kNull);
    }
}

TEST_P(Pushes, ThrowOnFailedAllocations) {
    const Argument data(L"a");
    for (const wchar_t* const browser : {L"", L"7"}) {
        ::SetBrowserInstance(browser);
        bool has_failed = true;
        for (int number = 1; has_failed; ++number) {
            BstrAllocations allocations(number);
            // The sink's own result is not the control's business.
            sink_->on_event = [&] { allocations.Pause(); };
            const HRESULT code = CodeOf([&] { return Send(control_, data); });
            has_failed = allocations.HasFailed();
            EXPECT_HRESULT(has_failed ? E_OUTOFMEMORY : S_OK, code) << number;
            ASSERT_LT(number, 10);
        }
    }
    sink_->on_event = nullptr;
}

TEST_P(Pushes, LeaveNothingAllocated) {
    if (!LiveAllocations::CanCountStrings()) {
        GTEST_SKIP() << "OANOCACHE is not set";
    }
    ::SetBrowserInstance(L"7");
    control_.put_LHTransactionNotificationData(Argument(L"a"));
    const LiveAllocations live;
    {
        const Argument data(L"a");
        EXPECT_HRESULT(S_OK, Send(control_, data));
        ::SetBrowserInstance(L"");
        EXPECT_HRESULT(S_OK, Send(control_, data));
        // What the process keeps is freed too; the first two are older than the count.
        control_.put_LHTransactionNotificationData(nullptr);
        ::SetBrowserInstance(nullptr);
    }
    EXPECT_EQ(live.Count(), 0);
}

// All but the one that is always an event.
class ScriptPushes : public Pushes {};

INSTANTIATE_TEST_SUITE_P(
    Control, ScriptPushes,
    ::testing::ValuesIn(RowsThat(kPushes, [](const Push& push) { return push.escaping != Escaping::kNeverScript; })),
    NameOf);

TEST_P(ScriptPushes, EscapeEitherLineFeedsOrQuotes) {
    ::SetBrowserInstance(L"7");
    EXPECT_HRESULT(S_OK, Send(Argument(L"\"a\"\n\r\\'b'\n")));
    EXPECT_EQ(bridge_.calls,
              Texts{Script(GetParam().escaping == Escaping::kQuote ? L"\\\"a\\\"\n\r\\'b'\n" : L"\"a\"\\n\r\\'b'\\n")});
}

TEST_P(ScriptPushes, RunTheirScriptWithAnEmptyTextForNull) {
    ::SetBrowserInstance(L"7");
    EXPECT_HRESULT(S_OK, Send(control_, nullptr));
    EXPECT_EQ(bridge_.calls, Texts{Script(L"")});
}

TEST_P(ScriptPushes, RunTheirScriptFromAnyControl) {
    ::SetBrowserInstance(L" undefined");
    EXPECT_HRESULT(S_OK, Send(other_, Argument(L"a")));
    EXPECT_EQ(bridge_.calls, Texts{Script(L"a", L" undefined")});
}

TEST_P(ScriptPushes, ArriveInThePage) {
    if (const auto reason = WhyNoScriptEngine()) {
        GTEST_SKIP() << *reason;
    }
    ::SetBrowserInstance(L"7");
    const bool has_quotes = GetParam().escaping == Escaping::kQuote;
    EXPECT_HRESULT(S_OK, Send(Argument(has_quotes ? L"He said \"hi\", caf\xE9" : L"caf\xE9\nriverside")));
    ASSERT_EQ(bridge_.scripts.size(), 1U);
    const std::wstring function = GetParam().function;
    EXPECT_EQ(RunInPage(bridge_.scripts[0]),
              std::string(function.begin(), function.end()) +
                  (has_quotes ? "[string He said \"hi\", caf\xE9]" : "[string caf\xE9\nriverside]"));
}

// The one push whose data stay behind.
class TransactionNotifications : public ControlTest {
  protected:
    TransactionNotifications() { control_.SubscribeToNotifications(); }

    [[nodiscard]] HRESULT Notify(const wchar_t* data) { return other_.NotifyTransactionChanged(Argument(data)); }

    LibraryFolder library_{L"first"};
};

TEST_F(TransactionNotifications, AreStoredAsTheyAreInScriptModeToo) {
    ::SetBrowserInstance(L"7");
    EXPECT_HRESULT(S_OK, Notify(L"a\n\"b\""));
    EXPECT_EQ(StoredIn(control_), L"a\n\"b\"");
    EXPECT_HRESULT(S_OK, Notify(nullptr));
    EXPECT_EQ(StoredIn(control_), kNull);
}

TEST_F(TransactionNotifications, StayStoredWhenTheirScriptIsLost) {
    ::SetBrowserInstance(L"7");
    for (const wchar_t* const folder : {L".", L"without_functions"}) {
        const LibraryFolder library(folder);
        EXPECT_HRESULT(E_FAIL, Notify(folder));
        EXPECT_EQ(StoredIn(control_), folder);
    }
}

TEST_F(TransactionNotifications, StayStoredWhenTheirScriptFails) {
    ::SetBrowserInstance(L"7");
    bridge_.on_script = [] { ::RaiseException(EXCEPTION_ACCESS_VIOLATION, 0, 0, nullptr); };
    EXPECT_HRESULT(E_FAIL, Notify(L"a"));
    EXPECT_EQ(StoredIn(control_), L"a");
}

TEST_F(TransactionNotifications, StayStoredWhenTheSinkFails) {
    sink_->code = E_ABORT;
    EXPECT_HRESULT(E_ABORT, Notify(L"a"));
    EXPECT_EQ(StoredIn(control_), L"a");
}

TEST_F(TransactionNotifications, AreStoredBeforeTheyAreDelivered) {
    std::wstring at_event;
    std::wstring in_script;
    sink_->on_event = [&] { at_event = StoredIn(control_); };
    bridge_.on_script = [&] { in_script = StoredIn(control_); };
    EXPECT_HRESULT(S_OK, Notify(L"a"));
    ::SetBrowserInstance(L"7");
    EXPECT_HRESULT(S_OK, Notify(L"b"));
    EXPECT_EQ(at_event, L"a");
    EXPECT_EQ(in_script, L"b");
}

TEST_F(TransactionNotifications, AreNotStoredWithoutASubscriber) {
    control_.put_LHTransactionNotificationData(Argument(L"older"));
    control_.UnSubscribeFromNotifications();
    for (const wchar_t* const browser : {L"", L"7"}) {
        ::SetBrowserInstance(browser);
        EXPECT_HRESULT(E_FAIL, Notify(L"a"));
        EXPECT_EQ(StoredIn(control_), L"older");
    }
}

// Pushes of reconciliation payments have three arguments.
class ReconPayments : public ControlTest {
  protected:
    ReconPayments() { control_.SubscribeToNotifications(); }

    [[nodiscard]] HRESULT Send(VARIANT_BOOL flag, const wchar_t* payments = L"p1",
                               const wchar_t* date = L"2024-01-31") {
        return other_.SetReconPaymentData(Argument(payments), Argument(date), flag);
    }
    [[nodiscard]] static std::wstring Script(const std::wstring& arguments) {
        return L"first: ExecuteJavaScript(\"7\", \"app.lhProxy.txnEventFromLH(" + arguments + L")\")";
    }

    LibraryFolder library_{L"first"};
};

TEST_F(ReconPayments, RaiseTheirEventWithThreeArguments) {
    EXPECT_HRESULT(S_OK, Send(VARIANT_TRUE));
    EXPECT_HRESULT(S_OK, Send(VARIANT_FALSE, nullptr, L""));
    EXPECT_EQ(events_, (Texts{L"sink: 4(\"p1\", \"2024-01-31\", bool -1)", L"sink: 4(null, \"\", bool 0)"}));
}

TEST_F(ReconPayments, PassTheFlagOnAsItIs) {
    EXPECT_HRESULT(S_OK, Send(1));
    EXPECT_HRESULT(S_OK, Send(-2));
    EXPECT_EQ(events_,
              (Texts{L"sink: 4(\"p1\", \"2024-01-31\", bool 1)", L"sink: 4(\"p1\", \"2024-01-31\", bool -2)"}));
}

TEST_F(ReconPayments, RaiseTheirEventForAnUndefinedBrowserInstance) {
    for (const wchar_t* const browser :
         {L"undefined", L"UNDEFINED", L"Undefined", static_cast<const wchar_t*>(nullptr)}) {
        ::SetBrowserInstance(browser);
        events_.clear();
        EXPECT_HRESULT(S_OK, Send(VARIANT_TRUE));
        EXPECT_EQ(events_, Texts{L"sink: 4(\"p1\", \"2024-01-31\", bool -1)"});
    }
    EXPECT_EQ(bridge_.calls, Texts{});
}

TEST_F(ReconPayments, RaiseTheirEventWithEmbeddedNuls) {
    const std::wstring payments{L'p', L'\0', L'1'};
    const std::wstring date{L'\0', L'd'};
    EXPECT_HRESULT(S_OK, control_.SetReconPaymentData(Argument(payments), Argument(date), VARIANT_FALSE));
    EXPECT_EQ(events_, Texts{L"sink: 4(\"" + payments + L"\", \"" + date + L"\", bool 0)"});
}

TEST_F(ReconPayments, SucceedWithoutASink) {
    other_.SubscribeToNotifications();
    EXPECT_HRESULT(S_OK, Send(VARIANT_TRUE));
    EXPECT_EQ(events_, Texts{});
}

TEST_F(ReconPayments, ReturnWhatTheLastSinkReturns) {
    const auto last = MakeSink(L"last");
    const DWORD cookie = Advise(control_, *last.Get());
    sink_->code = E_ABORT;
    EXPECT_HRESULT(S_OK, Send(VARIANT_TRUE));
    last->code = DISP_E_MEMBERNOTFOUND;
    EXPECT_HRESULT(DISP_E_MEMBERNOTFOUND, Send(VARIANT_TRUE));
    EXPECT_EQ(events_.size(), 4U);
    EXPECT_HRESULT(S_OK, Unadvise(control_, cookie));
    EXPECT_HRESULT(E_ABORT, Send(VARIANT_TRUE));
}

TEST_F(ReconPayments, StoreNothing) {
    for (const wchar_t* const browser : {L"", L"7"}) {
        ::SetBrowserInstance(browser);
        EXPECT_HRESULT(S_OK, Send(VARIANT_TRUE));
        EXPECT_EQ(StoredIn(control_), kNull);
    }
}

TEST_F(ReconPayments, RunTheirScriptWithThreeStrings) {
    ::SetBrowserInstance(L"7");
    EXPECT_HRESULT(S_OK, Send(VARIANT_FALSE));
    EXPECT_HRESULT(S_OK, Send(VARIANT_TRUE));
    EXPECT_HRESULT(S_OK, Send(1));
    const std::wstring with_true = Script(L"\"p1\",\"2024-01-31\",\"true\"");
    EXPECT_EQ(bridge_.calls, (Texts{Script(L"\"p1\",\"2024-01-31\",\"false\""), with_true, with_true}));
    EXPECT_EQ(events_, Texts{});
    EXPECT_FALSE(IsBridgeLoaded());
}

TEST_F(ReconPayments, EscapeLineFeedsOfThePaymentsOnly) {
    ::SetBrowserInstance(L"7");
    EXPECT_HRESULT(S_OK, Send(VARIANT_TRUE, L"a\n\"b\"\r", L"c\n\"d\"\r"));
    EXPECT_HRESULT(S_OK, Send(VARIANT_TRUE, nullptr, nullptr));
    EXPECT_EQ(bridge_.calls,
              (Texts{Script(L"\"a\\n\"b\"\r\",\"c\n\"d\"\r\",\"true\""), Script(L"\"\",\"\",\"true\"")}));
}

TEST_F(ReconPayments, FailWithoutASubscriber) {
    control_.UnSubscribeFromNotifications();
    EXPECT_HRESULT(E_FAIL, Send(VARIANT_TRUE));
    ::SetBrowserInstance(L"7");
    EXPECT_HRESULT(E_FAIL, Send(VARIANT_TRUE));
    EXPECT_EQ(bridge_.calls, Texts{});
    EXPECT_EQ(events_, Texts{});
}

TEST_F(ReconPayments, AreLostWithoutTheLibraryOrItsFunction) {
    ::SetBrowserInstance(L"7");
    for (const wchar_t* const folder : {L".", L"without_functions"}) {
        const LibraryFolder library(folder);
        EXPECT_HRESULT(E_FAIL, Send(VARIANT_TRUE));
        EXPECT_EQ(events_, Texts{});
        EXPECT_FALSE(IsBridgeLoaded());
    }
}

TEST_F(ReconPayments, FailWhenAnExceptionLeavesTheFunctionAndFreeTheLibrary) {
#ifdef _WIN64
    ::SetBrowserInstance(L"7");
    bridge_.throws_at_end = true;
    EXPECT_HRESULT(E_FAIL, Send(VARIANT_TRUE));
    ExpectNoLibrary();
    bridge_.throws_at_end = false;
    EXPECT_HRESULT(S_OK, Send(VARIANT_TRUE));
#else
    GTEST_SKIP() << kNoExceptionsBetweenModules;
#endif
}

TEST_F(ReconPayments, FailWhenAStructuredExceptionLeavesTheFunctionAndFreeTheLibrary) {
    ::SetBrowserInstance(L"7");
    for (const DWORD code : kStructuredExceptions) {
        bridge_.on_script = [code] { ::RaiseException(code, 0, 0, nullptr); };
        EXPECT_HRESULT(E_FAIL, Send(VARIANT_TRUE));
        ExpectNoLibrary();
    }
    bridge_.on_script = nullptr;
    EXPECT_HRESULT(S_OK, Send(VARIANT_TRUE));
}

// Requests of the page that the host is notified of.
class RequestData : public ControlTest {
  protected:
    [[nodiscard]] HRESULT Send() { return other_.ProcessLHRequestData(Argument(L"<Request/>"), response_.Slot()); }

    StringSink response_;
};

TEST_F(RequestData, RaisesAnEventWithTheRequestAndTheResponse) {
    control_.SubscribeToNotifications();
    for (const wchar_t* const browser : {L"", L"7"}) {
        ::SetBrowserInstance(browser);
        EXPECT_HRESULT(S_OK, Send());
    }
    const std::wstring event = L"sink: 7(\"<Request/>\", \"\")";
    EXPECT_EQ(events_, (Texts{event, event}));
    EXPECT_EQ(bridge_.calls, Texts{});
}

TEST_F(RequestData, PassesOnWhatTheCallerPlacedInTheResponse) {
    control_.SubscribeToNotifications();
    OwnedBstr response = MakeBstr(L"<Response/>");
    BSTR slot = response.Get();
    EXPECT_HRESULT(S_OK, control_.ProcessLHRequestData(nullptr, &slot));
    EXPECT_EQ(slot, response.Get());
    BSTR none = nullptr;
    EXPECT_HRESULT(S_OK, control_.ProcessLHRequestData(Argument(L"r"), &none));
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(events_, (Texts{L"sink: 7(null, \"<Response/>\")", L"sink: 7(\"r\", null)"}));
}

TEST_F(RequestData, PassesEmbeddedNulsOn) {
    control_.SubscribeToNotifications();
    const std::wstring request{L'a', L'\0', L'b'};
    const std::wstring answer{L'\0', L'c'};
    const OwnedBstr response = MakeBstr(answer);
    BSTR slot = response.Get();
    EXPECT_HRESULT(S_OK, control_.ProcessLHRequestData(Argument(request), &slot));
    EXPECT_EQ(events_, Texts{L"sink: 7(\"" + request + L"\", \"" + answer + L"\")"});
}

TEST_F(RequestData, WritesNothingBack) {
    control_.SubscribeToNotifications();
    EXPECT_HRESULT(S_OK, Send());
    EXPECT_EQ(response_.Show(), kUntouched);
    sink_->code = E_ABORT;
    EXPECT_HRESULT(E_ABORT, Send());
    EXPECT_EQ(response_.Show(), kUntouched);
}

TEST_F(RequestData, FailsWithoutASubscriber) {
    EXPECT_HRESULT(E_FAIL, Send());
    EXPECT_EQ(response_.Show(), kUntouched);
    EXPECT_EQ(events_, Texts{});
}

TEST_F(RequestData, NullResponseIsEPointerOnceAControlIsSubscribed) {
    EXPECT_HRESULT(E_FAIL, control_.ProcessLHRequestData(Argument(L"r"), nullptr));
    control_.SubscribeToNotifications();
    EXPECT_HRESULT(E_POINTER, control_.ProcessLHRequestData(Argument(L"r"), nullptr));
    EXPECT_EQ(events_, Texts{});
}

}  // namespace
}  // namespace paylodge::test
