// What is planned for calls to come, as the control object takes the plans and the host's objects follow them.
#include "refhost/control/fault_plan.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "refhost/objects/processor_object.hpp"
#include "tests/refhost/objects/host_server.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::refhost {
namespace {

class Plans : public HostTest {
  protected:
    void SetUp() override {
        HostTest::SetUp();
        processor_ = host_.Create<IRequestProcessor>(kRequestProcessorClass);
        ASSERT_TRUE(processor_);
    }

    [[nodiscard]] HRESULT Fail(std::wstring_view call, DOUBLE result, LONG nth) const {
        return control_->FailCall(MakeBstr(call).Get(), result, nth);
    }
    // A call that returns kNotConnected unless something else was planned.
    [[nodiscard]] HRESULT Close() const { return processor_->CloseConnection(); }

    void Connect() {
        ASSERT_HRESULT(S_OK, processor_->OpenConnection(nullptr, MakeBstr(L"Test").Get()));
        ASSERT_HRESULT(S_OK, processor_->BeginSession(nullptr, 2, ticket_.Receive()));
    }
    // The response to nothing; "(null)" for none.
    [[nodiscard]] std::string Response() const {
        OwnedBstr response;
        EXPECT_HRESULT(S_OK, processor_->ProcessRequest(ticket_.Get(), nullptr, response.Receive()));
        return response ? Text(response) : "(null)";
    }

    ComPtr<IRequestProcessor> processor_;
    OwnedBstr ticket_;
};

constexpr std::wstring_view kClose = L"RequestProcessor.CloseConnection";

TEST_F(Plans, TakeAnHResultSignedAndUnsigned) {
    struct Row {
        DOUBLE number;
        HRESULT result;
    };
    for (const auto& [number, result] :
         {Row{2147500037.0, E_FAIL}, Row{-2147467259.0, E_FAIL}, Row{4294967295.0, -1}, Row{-1.0, -1},
          Row{-2147483648.0, static_cast<HRESULT>(0x80000000)}, Row{2147483648.0, static_cast<HRESULT>(0x80000000)},
          Row{2147483647.0, 0x7FFFFFFF}, Row{1.0, S_FALSE}, Row{0.0, S_OK}}) {
        EXPECT_HRESULT(S_OK, Fail(kClose, number, 1)) << number;
        EXPECT_HRESULT(result, Close()) << number;
    }
}

TEST_F(Plans, TakeNoOtherNumbers) {
    for (const DOUBLE number :
         {4294967296.0, -2147483649.0, 0.5, -0.5, 4294967295.5, -2147483648.5, std::numeric_limits<DOUBLE>::infinity(),
          -std::numeric_limits<DOUBLE>::infinity(), std::nan("")}) {
        EXPECT_HRESULT(E_INVALIDARG, Fail(kClose, number, 1)) << number;
        EXPECT_EQ("FailCall takes a name, an HRESULT such as 0x80004005 and a number from 0 on.", LastDescription());
    }
    EXPECT_HRESULT(kNotConnected, Close());
}

TEST_F(Plans, AreRefusedForANumberBelowZero) {
    EXPECT_HRESULT(E_INVALIDARG, Fail(kClose, E_FAIL, -1));
    EXPECT_EQ("FailCall takes a name, an HRESULT such as 0x80004005 and a number from 0 on.", LastDescription());
    EXPECT_HRESULT(E_INVALIDARG, control_->AnswerEmpty(-1));
    EXPECT_HRESULT(E_INVALIDARG, control_->AnswerNull(-1));
    EXPECT_HRESULT(E_INVALIDARG, control_->EndProcessAt(-1));
    Connect();
    EXPECT_NE("", Response());
}

TEST_F(Plans, CountTheCallsOfTheirOwnNameOnly) {
    ASSERT_HRESULT(S_OK, Fail(kClose, E_ABORT, 2));
    OwnedBstr ticket;
    EXPECT_HRESULT(kNotConnected, processor_->EndSession(nullptr));
    EXPECT_HRESULT(kNotConnected, Close());
    EXPECT_HRESULT(kNotConnected, processor_->EndSession(nullptr));
    EXPECT_HRESULT(E_ABORT, Close());
    EXPECT_HRESULT(kNotConnected, Close());
}

TEST_F(Plans, OfOneNameAllCountEachCall) {
    ASSERT_HRESULT(S_OK, Fail(kClose, E_ABORT, 1));
    ASSERT_HRESULT(S_OK, Fail(kClose, E_ACCESSDENIED, 3));
    ASSERT_HRESULT(S_OK, Fail(kClose, E_PENDING, 2));
    EXPECT_HRESULT(E_ABORT, Close());
    EXPECT_HRESULT(E_PENDING, Close());
    EXPECT_HRESULT(E_ACCESSDENIED, Close());
    EXPECT_HRESULT(kNotConnected, Close());
}

TEST_F(Plans, ThatHoldForEveryCallComeAfterThoseThatWerePlannedBefore) {
    ASSERT_HRESULT(S_OK, Fail(kClose, E_ABORT, 2));
    ASSERT_HRESULT(S_OK, Fail(kClose, E_PENDING, 0));
    EXPECT_HRESULT(E_PENDING, Close());
    EXPECT_HRESULT(E_ABORT, Close());
    EXPECT_HRESULT(E_PENDING, Close());
}

TEST_F(Plans, ForAnswersHoldForEveryRequestWhenTheNumberIsZero) {
    Connect();
    ASSERT_HRESULT(S_OK, control_->AnswerEmpty(0));
    for (int time = 0; time < 3; ++time) {
        EXPECT_EQ("", Response());
    }
    ASSERT_HRESULT(S_OK, control_->ClearFaults());
    ASSERT_HRESULT(S_OK, control_->AnswerNull(0));
    for (int time = 0; time < 3; ++time) {
        EXPECT_EQ("(null)", Response());
    }
    ASSERT_HRESULT(S_OK, control_->ClearFaults());
    EXPECT_NE("(null)", Response());
}

TEST_F(Plans, AreAllForgottenTogether) {
    Connect();
    ASSERT_HRESULT(S_OK, Fail(L"RequestProcessor.EndSession", E_ABORT, 1));
    ASSERT_HRESULT(S_OK, control_->AnswerNull(1));
    ASSERT_HRESULT(S_OK, control_->AnswerNext(MakeBstr(L"next").Get(), S_OK));
    // Were it not forgotten, this program would end at its next call.
    ASSERT_HRESULT(S_OK, control_->EndProcessAt(1));
    ASSERT_HRESULT(S_OK, control_->ClearFaults());
    const std::string response = Response();
    EXPECT_NE("(null)", response);
    EXPECT_NE("next", response);
    EXPECT_HRESULT(S_OK, processor_->EndSession(ticket_.Get()));
}

// Death tests run in a process of their own.
using PlansDeathTest = Plans;

TEST_F(PlansDeathTest, EndTheProcessBeforeTheNthCallOfAnyName) {
    const auto call_five_times = [this](LONG nth) {
        static_cast<void>(control_->EndProcessAt(nth));
        for (int call = 1; call <= 5; ++call) {
            static_cast<void>(call % 2 == 0 ? Close() : processor_->EndSession(nullptr));
            std::fprintf(stderr, "call %d done;", call);
            std::fflush(stderr);
        }
        std::exit(7);
    };
    EXPECT_EXIT(call_five_times(1), ::testing::ExitedWithCode(kPlannedExitCode), "^$");
    EXPECT_EXIT(call_five_times(3), ::testing::ExitedWithCode(kPlannedExitCode), "call 2 done;$");
    EXPECT_EXIT(call_five_times(6), ::testing::ExitedWithCode(7), "call 5 done;$");
    EXPECT_EXIT(call_five_times(0), ::testing::ExitedWithCode(7), "call 5 done;$");
}

TEST_F(Plans, ToEndTheProcessAreTakenBackByAZero) {
    ASSERT_HRESULT(S_OK, control_->EndProcessAt(1));
    ASSERT_HRESULT(S_OK, control_->EndProcessAt(0));
    EXPECT_HRESULT(kNotConnected, Close());
    EXPECT_HRESULT(kNotConnected, Close());
}

}  // namespace
}  // namespace paylodge::refhost
