// What a test has planned for calls to come, instead of what the host would do by itself.
#pragma once

#include <windows.h>

#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace paylodge::refhost {

// The host's calls, as plans and records name them.
inline constexpr std::wstring_view kCreateObjectCall = L"ObjectBroker.CreateObjectFromClassId";
inline constexpr std::wstring_view kOpenConnectionCall = L"RequestProcessor.OpenConnection";
inline constexpr std::wstring_view kCloseConnectionCall = L"RequestProcessor.CloseConnection";
inline constexpr std::wstring_view kBeginSessionCall = L"RequestProcessor.BeginSession";
inline constexpr std::wstring_view kEndSessionCall = L"RequestProcessor.EndSession";
inline constexpr std::wstring_view kProcessRequestCall = L"RequestProcessor.ProcessRequest";
inline constexpr std::wstring_view kGetApplicationCall = L"ApplicationLocator.GetRunningApplication";
inline constexpr std::wstring_view kGetGoodiesCall = L"Application.GetAddInGoodies";
inline constexpr std::wstring_view kGetFolderCall = L"Application.GetFolder";
inline constexpr std::wstring_view kAttachCall = L"AddInGoodies.AttachToCurrentCompany";
inline constexpr std::wstring_view kGetRecordsCall = L"Company.GetDataFileRecords";
inline constexpr std::wstring_view kItemCall = L"DataFileRecords.Item";
inline constexpr std::wstring_view kExistsCall = L"DataFileRecords.Exists";
inline constexpr std::wstring_view kAddCall = L"DataFileRecords.Add";
inline constexpr std::wstring_view kPutVersionCall = L"DataFileRecord.PutDataVersion";
inline constexpr std::wstring_view kLockCall = L"DataFileRecord.Lock";
inline constexpr std::wstring_view kUnlockCall = L"DataFileRecord.Unlock";
inline constexpr std::wstring_view kSaveCall = L"DataFileRecord.Save";
inline constexpr std::wstring_view kDeleteCall = L"DataFileRecord.Delete";
inline constexpr std::wstring_view kGetBagCall = L"DataFileRecord.GetPropertyBag";
inline constexpr std::wstring_view kReadCall = L"PropertyBag.Read";
inline constexpr std::wstring_view kWriteCall = L"PropertyBag.Write";

// Of a process that was planned to end.
inline constexpr UINT kPlannedExitCode = 86;

// What ProcessRequest returns; without a text the response stays null.
struct PlannedAnswer {
    std::optional<std::wstring> text;
    HRESULT code = S_OK;
};

// The names that can be planned to fail, in alphabetical order.
[[nodiscard]] std::vector<std::wstring> PlannableNames();

// A call that is going to fail: the nth of its name from now, or every one when that is 0.
struct FailingCall {
    std::wstring call;
    HRESULT code = E_FAIL;
    LONG nth = 0;
};

class FaultPlan {
  public:
    // The nth call or step of this name from now fails with the HRESULT; 0 stands for every one. False for an unknown
    // name.
    [[nodiscard]] bool FailCall(std::wstring_view call, HRESULT code, LONG nth);
    // Those failures that are still to come, in the order in which they were planned.
    [[nodiscard]] std::vector<FailingCall> Failures() const;
    // The nth ProcessRequest from now answers this; 0 stands for every one.
    void AnswerNth(PlannedAnswer answer, LONG nth);
    // The next ProcessRequest that nothing else was planned for returns this; several wait in line.
    void AnswerNext(PlannedAnswer answer);
    // The process ends, as if it had crashed, before the nth call or step from now; 0: it does not.
    void EndProcessAt(LONG nth) noexcept { calls_to_the_end_ = nth; }
    void Clear() noexcept;

    // To be asked once on each call: what was planned for it, if anything. Does not return when the process has to end.
    [[nodiscard]] std::optional<HRESULT> TakeFailure(std::wstring_view call);
    [[nodiscard]] std::optional<PlannedAnswer> TakeAnswer();

  private:
    template <class Outcome>
    struct Plan {
        std::wstring call;
        // Calls to go; 0 for a plan that holds for every call.
        LONG nth;
        Outcome outcome;
    };

    template <class Outcome>
    [[nodiscard]] static std::optional<Outcome> Take(std::vector<Plan<Outcome>>& plans, std::wstring_view call);

    std::vector<Plan<HRESULT>> failures_;
    std::vector<Plan<PlannedAnswer>> answers_;
    std::deque<PlannedAnswer> next_answers_;
    LONG calls_to_the_end_ = 0;
};

}  // namespace paylodge::refhost
