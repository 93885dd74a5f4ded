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

// An answer of ProcessRequest; without a text the response stays null.
struct PlannedAnswer {
    std::optional<std::wstring> text;
    HRESULT code = S_OK;
};

class FaultPlan {
  public:
    // The nth call of this name from now fails with the code; 0 stands for every one. False for an unknown name.
    [[nodiscard]] bool FailCall(std::wstring_view call, HRESULT code, LONG nth);
    // The nth ProcessRequest from now answers this; 0 stands for every one.
    void AnswerNth(PlannedAnswer answer, LONG nth);
    // The next ProcessRequest that nothing else was planned for answers this; several stand in line.
    void AnswerNext(PlannedAnswer answer);
    void Clear() noexcept;

    // To be asked once on each call: what was planned for it, if anything.
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
};

}  // namespace paylodge::refhost
