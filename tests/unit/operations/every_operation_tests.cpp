// What all operations on the company file have in common.
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "tests/support/bstr_allocations.hpp"
#include "tests/support/document_watch.hpp"
#include "tests/support/fake_site.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/live_allocations.hpp"
#include "tests/unit/operations/operation_table.hpp"

namespace paylodge::test {
namespace {

// Makes the call fail at one of its allocations after the other; what the host allocates does not fail. `check` gets
// whether the failure was thrown.
template <class Call, class Check>
void FailEachAllocation(FakeHost& host, const Call& call, const Check& check) {
    for (int number = 1;; ++number) {
        BstrAllocations allocations(number);
        host.on_call["BeginSession"] = [&] { allocations.Pause(); };
        host.on_call["EndSession"] = [&] { allocations.Resume(); };
        bool is_raised = false;
        try {
            call();
        } catch (const _com_error& error) {
            EXPECT_HRESULT(E_OUTOFMEMORY, error.Error()) << number;
            is_raised = true;
        }
        host.on_call.clear();
        if (!allocations.HasFailed()) {
            break;
        }
        check(is_raised);
    }
}

class EveryOperation : public OperationTest, public ::testing::WithParamInterface<Operation> {
  protected:
    void AnswerAll(HRESULT code = S_OK) {
        host_.answers.assign(GetParam().sends, {.result = code, .response = ResponseDocument(kAnswerToAll)});
    }
    [[nodiscard]] Result Call() { return GetParam().call(object_); }
    // Once for each of its allocations, which fails then.
    void CallWithoutEachAllocation() {
        FailEachAllocation(
            host_,
            [this] {
                AnswerAll();
                static_cast<void>(Call());
            },
            [](bool) {});
    }
};

INSTANTIATE_TEST_SUITE_P(, EveryOperation, ::testing::ValuesIn(Operations()),
                         [](const auto& row) { return row.param.name; });

TEST_P(EveryOperation, HasASessionOfItsOwnForEachRequest) {
    AnswerAll();
    EXPECT_HRESULT(S_OK, Call().code);
    EXPECT_EQ(GetParam().sends, host_.requests.size());
    for (const char* step : {R"(OpenConnection("", "Ledgerhall Paylodge"))", R"(BeginSession("", 2))",
                             R"(EndSession("ticket"))", "CloseConnection()"}) {
        EXPECT_EQ(GetParam().sends, static_cast<size_t>(std::ranges::count(host_.calls, step))) << step;
    }
    EXPECT_EQ(0, host_.live_processors);
}

TEST_P(EveryOperation, KeepsNothingBetweenCalls) {
    AnswerAll();
    const Result first = Call();
    const std::vector<std::string> sent_first = Sent();
    host_.requests.clear();
    AnswerAll();
    EXPECT_EQ(first, Call());
    EXPECT_EQ(sent_first, Sent());
}

TEST_P(EveryOperation, ReturnsTheCodeOfASendThatFailsAndLeavesTheResultAlone) {
    for (const HRESULT code : {kHostFailure, E_OUTOFMEMORY, E_INVALIDARG}) {
        AnswerAll(code);
        EXPECT_EQ(Result{GetParam().send_failure.value_or(code)}, Call());
        EXPECT_EQ(0, host_.live_processors);
    }
}

TEST_P(EveryOperation, FailsWithoutTheHost) {
    host_.failures["CreateObjectFromClassId"] = kHostFailure;
    EXPECT_EQ(Result{E_FAIL}, Call());
}

TEST_P(EveryOperation, FailsWhenTheHostThrows) {
    host_.on_call["ProcessRequest"] = [] { _com_issue_error(kHostFailure); };
    EXPECT_EQ(Result{E_FAIL}, Call());
    EXPECT_EQ(0, host_.live_processors);
}

TEST_P(EveryOperation, MakesDoWithoutAResponse) {
    Result expected = GetParam().without_response;
    for (const HRESULT code : {S_OK, S_FALSE}) {
        if (GetParam().hands_success_on) {
            expected.code = code;
        }
        for (const bool is_null : {true, false}) {
            host_.answers.assign(GetParam().sends, {.result = code, .response = L"", .is_null = is_null});
            EXPECT_EQ(expected, Call()) << code << (is_null ? " and null" : " and empty");
        }
    }
}

// Another HRESULT of success than S_OK beside a response is taken for S_OK.
TEST_P(EveryOperation, TakesEverySuccessCodeWithAnAnswerForSuccess) {
    AnswerAll(S_FALSE);
    EXPECT_HRESULT(S_OK, Call().code);
}

TEST_P(EveryOperation, ThrowsOnAFailedAllocationAndWorksAgainAfterwards) {
    AnswerAll();
    const Result healthy = Call();
    AnswerAll();
    size_t failed_sends = 0;
    FailEachAllocation(
        host_, [this] { static_cast<void>(Call()); },
        [&](bool is_raised) {
            // Only the session catches, and there the one string that names the processor's class.
            failed_sends += is_raised ? 0 : 1;
            EXPECT_EQ(0, host_.live_processors);
            AnswerAll();
        });
    EXPECT_EQ(GetParam().sends, failed_sends);
    AnswerAll();
    EXPECT_EQ(healthy, Call());
}

TEST_P(EveryOperation, LeavesNoStringBehindWhateverHappens) {
    if (!LiveAllocations::CanCountStrings()) {
        GTEST_SKIP() << "Freed strings are kept for later: set OANOCACHE=1 in the environment";
    }
    const auto call_in_all_ways = [this] {
        for (const HRESULT code : {S_OK, kHostFailure}) {
            AnswerAll(code);
            static_cast<void>(Call());
        }
        CallWithoutEachAllocation();
    };
    call_in_all_ways();
    const LiveAllocations allocations;
    call_in_all_ways();
    EXPECT_EQ(0, allocations.Count());
}

TEST_P(EveryOperation, LeavesNoDocumentBehindWhateverHappens) {
    const DocumentWatch watch;
    AnswerAll();
    EXPECT_HRESULT(S_OK, Call().code);
    AnswerAll(kHostFailure);
    EXPECT_TRUE(FAILED(Call().code));
    for (const wchar_t* response : {L"", L"no document", L"<LHXML/>"}) {
        host_.answers.assign(GetParam().sends, {.response = response});
        static_cast<void>(Call());
    }
    CallWithoutEachAllocation();
    EXPECT_EQ(GetParam().reads_documents, !watch.References().empty());
    EXPECT_THAT(watch.References(), ::testing::Each(0U));
}

TEST_P(EveryOperation, DoesNothingOnARefusedPage) {
    FakeSite site(PageAt(kRefusedPage));
    const OnSite on_site(static_cast<IObjectWithSite*>(&object_), site);
    EXPECT_EQ(Result{S_OK}, Call());
    EXPECT_THAT(host_.calls, ::testing::IsEmpty());
}

TEST_P(EveryOperation, WorksOnAnApprovedPage) {
    FakeSite site(PageAt(kApprovedPage));
    const OnSite on_site(static_cast<IObjectWithSite*>(&object_), site);
    AnswerAll();
    EXPECT_HRESULT(S_OK, Call().code);
    EXPECT_EQ(GetParam().sends, host_.requests.size());
}

class OperationsWithoutAResultSlot : public OperationTest {
  protected:
    // Calls them all, and returns their HRESULTs.
    [[nodiscard]] std::vector<std::pair<const char*, HRESULT>> CallAll() {
        const Argument t(L"1");
        return {
            {"GetAccounts", object_.GetAccounts(t, nullptr)},
            {"GetAccountsForMultipleTypes", object_.GetAccountsForMultipleTypes(t, nullptr)},
            {"GetBalanceForAccountType", object_.GetBalanceForAccountType(t, nullptr)},
            {"CreateTxns", object_.CreateTxns(t, VARIANT_TRUE, nullptr)},
            {"TransferFunds", object_.TransferFunds(t, t, t, t, nullptr)},
            {"CreatePaymentTxn",
             object_.CreatePaymentTxn(t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, nullptr)},
            {"GetCustomerIDForName", object_.GetCustomerIDForName(t, nullptr)},
            {"GetCustomerNameForID", object_.GetCustomerNameForID(t, nullptr)},
            {"GetInvoiceInfoForCustomerID", object_.GetInvoiceInfoForCustomerID(t, t, nullptr)},
            {"GetItems", object_.GetItems(nullptr)},
            {"GetPaymentMethods", object_.GetPaymentMethods(nullptr)},
            {"IsTaxableItem", object_.IsTaxableItem(t, nullptr)},
            {"SavePaymentTxn", object_.SavePaymentTxn(t, nullptr)},
        };
    }
};

TEST_F(OperationsWithoutAResultSlot, RefuseToWork) {
    EXPECT_THAT(CallAll(), ::testing::Each(::testing::Pair(::testing::_, E_POINTER)));
    EXPECT_HRESULT(E_POINTER, object_.ProcessLHRequest(Argument(L"1"), nullptr));
    EXPECT_THAT(host_.calls, ::testing::IsEmpty());
}

// The page is looked at before the arguments.
TEST_F(OperationsWithoutAResultSlot, DoNothingOnARefusedPage) {
    FakeSite site(PageAt(kRefusedPage));
    const OnSite on_site(static_cast<IObjectWithSite*>(&object_), site);
    EXPECT_THAT(CallAll(), ::testing::Each(::testing::Pair(::testing::_, S_OK)));
    EXPECT_HRESULT(E_FAIL, object_.ProcessLHRequest(Argument(L"1"), nullptr));
    EXPECT_THAT(host_.calls, ::testing::IsEmpty());
}

}  // namespace
}  // namespace paylodge::test
