#include "refhost/control/fault_plan.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include "refhost/books/watched_vfs.hpp"
#include "refhost/objects/utf8.hpp"

namespace paylodge::refhost {
namespace {

constexpr std::array kCalls{kCreateObjectCall,
                            kOpenConnectionCall,
                            kCloseConnectionCall,
                            kBeginSessionCall,
                            kEndSessionCall,
                            kProcessRequestCall,
                            kGetApplicationCall,
                            kGetGoodiesCall,
                            kGetFolderCall,
                            kAttachCall,
                            kGetRecordsCall,
                            kItemCall,
                            kExistsCall,
                            kAddCall,
                            kPutVersionCall,
                            kLockCall,
                            kUnlockCall,
                            kSaveCall,
                            kDeleteCall,
                            kGetBagCall,
                            kReadCall,
                            kWriteCall};

}  // namespace

std::vector<std::wstring> PlannableNames() {
    std::vector<std::wstring> names(kCalls.begin(), kCalls.end());
    for (const FileStep step : {FileStep::kOpen, FileStep::kWrite, FileStep::kSync, FileStep::kCommit}) {
        names.push_back(WideFromUtf8(NameOf(step)));
    }
    std::ranges::sort(names);
    return names;
}

bool FaultPlan::FailCall(std::wstring_view call, HRESULT code, LONG nth) {
    const std::vector<std::wstring> names = PlannableNames();
    const bool is_known = std::ranges::find(names, call) != names.end();
    if (is_known) {
        failures_.push_back({std::wstring(call), nth, code});
    }
    return is_known;
}

std::vector<FailingCall> FaultPlan::Failures() const {
    std::vector<FailingCall> failures;
    failures.reserve(failures_.size());
    for (const Plan<HRESULT>& plan : failures_) {
        failures.push_back({plan.call, plan.outcome, plan.nth});
    }
    return failures;
}

void FaultPlan::AnswerNth(PlannedAnswer answer, LONG nth) {
    answers_.push_back({std::wstring(kProcessRequestCall), nth, std::move(answer)});
}

void FaultPlan::AnswerNext(PlannedAnswer answer) { next_answers_.push_back(std::move(answer)); }

void FaultPlan::Clear() noexcept {
    failures_.clear();
    answers_.clear();
    next_answers_.clear();
    calls_to_the_end_ = 0;
}

std::optional<HRESULT> FaultPlan::TakeFailure(std::wstring_view call) {
    if (calls_to_the_end_ > 0) {
        --calls_to_the_end_;
        if (calls_to_the_end_ == 0) {
            ::TerminateProcess(::GetCurrentProcess(), kPlannedExitCode);
        }
    }
    return Take(failures_, call);
}

std::optional<PlannedAnswer> FaultPlan::TakeAnswer() {
    std::optional<PlannedAnswer> answer = Take(answers_, kProcessRequestCall);
    if (!answer && !next_answers_.empty()) {
        answer = std::move(next_answers_.front());
        next_answers_.pop_front();
    }
    return answer;
}

template <class Outcome>
std::optional<Outcome> FaultPlan::Take(std::vector<Plan<Outcome>>& plans, std::wstring_view call) {
    std::optional<Outcome> due;
    std::erase_if(plans, [&](Plan<Outcome>& plan) {
        if (plan.call != call) {
            return false;
        }
        const bool holds_always = plan.nth == 0;
        const bool is_due = holds_always || --plan.nth == 0;
        if (is_due && !due) {
            due = plan.outcome;
        }
        return is_due && !holds_always;
    });
    return due;
}

}  // namespace paylodge::refhost
