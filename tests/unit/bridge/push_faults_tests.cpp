// Every push and script call while what it calls fails in turn, in every way: the described result, nothing left
// behind, and the next one works.

#include <array>
#include <iostream>
#include <stdexcept>
#include <vector>

#include "bridge/bridge_library.hpp"
#include "bridge/channel_registry.hpp"
#include "tests/support/host_fault.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/live_allocations.hpp"
#include "tests/unit/bridge/control_fixture.hpp"

namespace paylodge::test {
namespace {

enum class Delivery { kEventOrScript, kAlwaysEvent, kAlwaysScript };

struct Call {
    const char* name;
    Delivery delivery;
    HRESULT (*run)(CPaylodgeCtrl& control);

    friend std::ostream& operator<<(std::ostream& stream, const Call& call) { return stream << call.name; }
};

template <HRESULT (STDMETHODCALLTYPE CPaylodgeCtrl::*method)(BSTR)>
HRESULT Push(CPaylodgeCtrl& control) {
    return (control.*method)(Argument(L"a \"b\"\nc"));
}

const Call kCalls[] = {
    {"NotifyTransactionChanged", Delivery::kEventOrScript, Push<&CPaylodgeCtrl::NotifyTransactionChanged>},
    {"SetReconFeeData", Delivery::kEventOrScript, Push<&CPaylodgeCtrl::SetReconFeeData>},
    {"SetReconBatchData", Delivery::kEventOrScript, Push<&CPaylodgeCtrl::SetReconBatchData>},
    {"SetReconPaymentData", Delivery::kEventOrScript,
     [](CPaylodgeCtrl& control) {
         return control.SetReconPaymentData(Argument(L"p\n1"), Argument(L"2024-01-31"), VARIANT_TRUE);
     }},
    {"SetTransactionID", Delivery::kEventOrScript, Push<&CPaylodgeCtrl::SetTransactionID>},
    {"setEInvoicedTransactionData", Delivery::kEventOrScript, Push<&CPaylodgeCtrl::setEInvoicedTransactionData>},
    {"ProcessLHRequestData", Delivery::kAlwaysEvent,
     [](CPaylodgeCtrl& control) {
         const OwnedBstr response = MakeBstr(L"response");
         BSTR passed = response.Get();
         const HRESULT result = control.ProcessLHRequestData(Argument(L"<CheckAddRq/>"), &passed);
         EXPECT_EQ(response.Get(), passed) << "nothing is written back";
         return result;
     }},
    {"SetCustomerListData", Delivery::kEventOrScript, Push<&CPaylodgeCtrl::SetCustomerListData>},
    {"SetItemListData", Delivery::kAlwaysEvent, Push<&CPaylodgeCtrl::SetItemListData>},
    {"SetCustomerData", Delivery::kEventOrScript, Push<&CPaylodgeCtrl::SetCustomerData>},
    {"SetCustomerSearchResult", Delivery::kEventOrScript, Push<&CPaylodgeCtrl::SetCustomerSearchResult>},
    {"SetLineItemsSearchResult", Delivery::kEventOrScript, Push<&CPaylodgeCtrl::SetLineItemsSearchResult>},
    {"ExecuteJavaScript", Delivery::kAlwaysScript,
     [](CPaylodgeCtrl& control) { return control.ExecuteJavaScript(Argument(L"a"), 0, Argument(L"f")); }},
};

// What goes wrong with the bridge library.
struct LibraryFault {
    const char* name;
    const wchar_t* folder;
    // Run in the script, which it may leave.
    void (*on_script)();
};

constexpr LibraryFault kLibraryFaults[] = {
    {"no library", L".", nullptr},
    {"no function in the library", L"without_functions", nullptr},
    {"an exception of the platform's compiler", L"first", [] { HostFault{FaultKind::kThrownByHost, E_FAIL}.Throw(); }},
    {"a crash", L"first", [] { ::RaiseException(EXCEPTION_ACCESS_VIOLATION, 0, 0, nullptr); }},
#ifdef _WIN64
    // On x86 exceptions do not cross from one module to another with this compiler.
    {"a COM error", L"first", [] { throw _com_error(E_ACCESSDENIED); }},
    {"an exception", L"first", [] { throw std::runtime_error("the page is gone"); }},
#endif
};

// Three sinks; the first control is subscribed.
class PushFaults : public ControlTest, public ::testing::WithParamInterface<Call> {
  protected:
    PushFaults() {
        control_.SubscribeToNotifications();
        static_cast<void>(Advise(control_, *sinks_[1].Get()));
        static_cast<void>(Advise(control_, *sinks_[2].Get()));
        references_before_ = References();
    }
    static void TearDownTestSuite() { std::cout << combinations_ << " combinations of call and failure\n"; }

    [[nodiscard]] HRESULT Run() {
        events_.clear();
        bridge_.calls.clear();
        return GetParam().run(control_);
    }
    [[nodiscard]] std::vector<ULONG> References() const {
        std::vector<ULONG> references;
        for (const auto& sink : sinks_) {
            sink->AddRef();
            references.push_back(sink->Release());
        }
        return references;
    }
    [[nodiscard]] bool IsScript(bool has_browser) const {
        return GetParam().delivery == Delivery::kAlwaysScript ||
               (GetParam().delivery == Delivery::kEventOrScript && has_browser);
    }
    void ExpectNothingLeft() {
        EXPECT_EQ(references_before_, References());
        EXPECT_FALSE(IsBridgeLoaded());
        EXPECT_EQ(nullptr, g_hBridgeModule);
    }
    // Runs it with a failure and then without one.
    template <class Check>
    void Try(const Check& check) {
        {
            const LiveAllocations allocations;
            check();
            // What is stored of a transaction is no loss.
            control_.put_LHTransactionNotificationData(nullptr);
            if (LiveAllocations::CanCountStrings()) {
                EXPECT_EQ(0, allocations.Count()) << "strings are left";
            }
        }
        ExpectNothingLeft();
        ++combinations_;
    }

    inline static int combinations_ = 0;
    const std::array<ComPtr<ComObject<EventSink>>, 3> sinks_ = {sink_, MakeSink(L"second"), MakeSink(L"third")};
    std::vector<ULONG> references_before_;
};

INSTANTIATE_TEST_SUITE_P(, PushFaults, ::testing::ValuesIn(kCalls), [](const auto& row) { return row.param.name; });

TEST_P(PushFaults, ASinkThatFailsStopsNoOther) {
    if (IsScript(false)) {
        const LibraryFolder library(L"first");
        EXPECT_HRESULT(S_OK, Run());
        EXPECT_EQ(0U, events_.size());
        return;
    }
    for (size_t failing = 0; failing < sinks_.size(); ++failing) {
        for (const HostFault& fault : kHostFaults) {
            if (fault.IsThrown()) {
                continue;
            }
            SCOPED_TRACE(::testing::Message() << "sink " << failing << " " << fault);
            sinks_[failing]->code = fault.code;
            Try([&] {
                EXPECT_HRESULT(failing == 2 ? fault.code : S_OK, Run()) << "that of the last sink";
                EXPECT_EQ(3U, events_.size());
            });
            sinks_[failing]->code = S_OK;
            EXPECT_HRESULT(S_OK, Run());
            EXPECT_EQ(3U, events_.size());
        }
    }
}

TEST_P(PushFaults, AScriptThatCannotRunFailsAndFreesTheLibrary) {
    ::SetBrowserInstance(L"7");
    for (const LibraryFault& fault : kLibraryFaults) {
        SCOPED_TRACE(fault.name);
        Try([&] {
            const LibraryFolder library(fault.folder);
            if (fault.on_script != nullptr) {
                bridge_.on_script = fault.on_script;
            }
            EXPECT_HRESULT(IsScript(true) ? E_FAIL : S_OK, Run());
            bridge_.on_script = nullptr;
            EXPECT_EQ(IsScript(true) ? 0U : 3U, events_.size()) << "a push that is lost as a script is no event";
        });
        const LibraryFolder library(L"first");
        EXPECT_HRESULT(S_OK, Run());
        EXPECT_EQ(IsScript(true) ? 1U : 0U, bridge_.calls.size());
        ExpectNothingLeft();
    }
}

TEST_P(PushFaults, NothingIsCalledWithoutASubscriber) {
    control_.UnSubscribeFromNotifications();
    for (const wchar_t* const browser : {L"", L"7"}) {
        ::SetBrowserInstance(browser);
        const LibraryFolder library(L"first");
        EXPECT_HRESULT(GetParam().delivery == Delivery::kAlwaysScript ? S_OK : E_FAIL, Run());
        EXPECT_EQ(0U, events_.size());
        ExpectNothingLeft();
    }
}

}  // namespace
}  // namespace paylodge::test
