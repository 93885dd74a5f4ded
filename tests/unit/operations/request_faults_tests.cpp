// Every call of the host fails in turn, in every way, in every operation: the operation returns what it is described
// to, leaves nothing behind, and works the next time.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/support/host_fault.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/live_allocations.hpp"
#include "tests/unit/operations/operation_table.hpp"

namespace paylodge::test {
namespace {

using Calls = std::vector<std::string>;

// The calls of one request, in order.
constexpr std::array kSteps = {"CreateInstance", "CreateObjectFromClassId", "OpenConnection",
                               "BeginSession",   "ProcessRequest",          "EndSession",
                               "CloseConnection"};
enum Step { kCreateBroker, kCreateProcessor, kOpen, kBegin, kProcess, kEnd, kClose };

[[nodiscard]] Calls Names(std::initializer_list<Step> steps) {
    Calls names;
    std::ranges::transform(steps, std::back_inserter(names), [](Step step) { return kSteps.at(step); });
    return names;
}

// What comes after a call that goes wrong.
[[nodiscard]] Calls After(Step step, const HostFault& fault) {
    if (step == kCreateBroker || step == kCreateProcessor) {
        return {};
    }
    if (!fault.IsThrown()) {
        const Calls whole(kSteps.begin(), kSteps.end());
        return {whole.begin() + step + 1, whole.end()};
    }
    switch (step) {
        case kBegin:
            return Names({kClose});
        case kProcess:
            return Names({kEnd, kClose});
        // What could not be closed is closed again.
        case kEnd:
            return Names({kEnd, kClose});
        case kClose:
            return Names({kClose});
        default:
            return {};
    }
}

// The HRESULT of the request.
[[nodiscard]] HRESULT SendResult(Step step, const HostFault& fault) {
    if (fault.IsThrown() || step == kCreateBroker || step == kCreateProcessor) {
        return E_FAIL;
    }
    // Opening and closing are not looked at.
    return step == kProcess ? fault.code : S_OK;
}

// The pass-through operations beside the others.
[[nodiscard]] std::vector<Operation> AllOperations() {
    std::vector<Operation> all(Operations().begin(), Operations().end());
    all.push_back({.name = "ProcessLHRequest", .sends = 1, .call = [](CPaylodge& object) {
                       return Ask(object, &CPaylodge::ProcessLHRequest, L"<CheckAddRq/>");
                   }});
    all.push_back({.name = "SavePaymentTxn",
                   .sends = 1,
                   .call = [](CPaylodge& object) { return Ask(object, &CPaylodge::SavePaymentTxn, L"<CheckAddRq/>"); },
                   .send_failure = E_FAIL});
    return all;
}

class RequestFaults : public OperationTest, public ::testing::WithParamInterface<Operation> {
  protected:
    static void TearDownTestSuite() { std::cout << combinations_ << " combinations of call and failure\n"; }

    [[nodiscard]] Result Call() {
        host_.answers.assign(GetParam().sends, {.response = ResponseDocument(kAnswerToAll)});
        return GetParam().call(object_);
    }

    // The result of an operation whose send with this number ends in this way.
    [[nodiscard]] Result Expected(size_t send, HRESULT code, const Result& healthy) const {
        const Operation& operation = GetParam();
        if (SUCCEEDED(code)) {
            return healthy;
        }
        if (operation.deciding_send && *operation.deciding_send != send) {
            return operation.when_another_fails.value_or(healthy);
        }
        return {operation.send_failure.value_or(code)};
    }

    // The calls after the one that goes wrong, up to the next request, without their arguments.
    [[nodiscard]] Calls CallsAfterFault() const {
        Calls calls;
        for (size_t index = calls_at_fault_; index < host_.calls.size(); ++index) {
            const std::string name = host_.calls[index].substr(0, host_.calls[index].find('('));
            if (name == kSteps[kCreateProcessor]) {
                break;
            }
            calls.push_back(name);
        }
        return calls;
    }

    // Lets this call of that send go wrong once.
    void Plan(Step step, size_t send, const HostFault& fault) {
        calls_of_step_ = 0;
        has_failed_ = false;
        host_.on_call[kSteps.at(step)] = [this, step, send, &fault] {
            const char* const name = kSteps.at(step);
            host_.failures.erase(name);
            if (++calls_of_step_ != send) {
                return;
            }
            has_failed_ = true;
            calls_at_fault_ = host_.calls.size();
            if (fault.IsThrown()) {
                fault.Throw();
            }
            host_.failures[name] = fault.code;
        };
    }

    void Try(Step step, size_t send, const HostFault& fault, const Result& healthy) {
        host_.calls.clear();
        host_.requests.clear();
        Plan(step, send, fault);
        const LiveAllocations allocations;
        EXPECT_EQ(Expected(send, SendResult(step, fault), healthy), Call());
        host_.answers.clear();
        EXPECT_TRUE(has_failed_);
        EXPECT_EQ(After(step, fault), CallsAfterFault());
        EXPECT_EQ(0, host_.live_processors);
        if (LiveAllocations::CanCountStrings()) {
            EXPECT_EQ(0, allocations.Count()) << "strings are left";
        }
        host_.on_call.clear();
        host_.failures.clear();
        EXPECT_EQ(healthy, Call()) << "the next call";
        EXPECT_EQ(0, host_.live_processors);
        ++combinations_;
    }

  private:
    inline static int combinations_ = 0;

    size_t calls_of_step_ = 0;
    size_t calls_at_fault_ = 0;
    bool has_failed_ = false;
};

INSTANTIATE_TEST_SUITE_P(, RequestFaults, ::testing::ValuesIn(AllOperations()),
                         [](const auto& row) { return row.param.name; });

TEST_P(RequestFaults, EndAsDescribedAndLeaveNothingBehind) {
    const Result healthy = Call();
    ASSERT_HRESULT(S_OK, healthy.code);
    ASSERT_EQ(GetParam().sends, host_.requests.size());
    for (size_t send = 1; send <= GetParam().sends; ++send) {
        for (const Step step : {kCreateBroker, kCreateProcessor, kOpen, kBegin, kProcess, kEnd, kClose}) {
            for (const HostFault& fault : kHostFaults) {
                if (step == kCreateBroker && fault.kind == FaultKind::kThrown) {
                    // The system's frames between class object and caller are not this compiler's.
                    continue;
                }
                SCOPED_TRACE(::testing::Message() << kSteps.at(step) << " of send " << send << " " << fault);
                Try(step, send, fault, healthy);
            }
        }
    }
}

}  // namespace
}  // namespace paylodge::test
