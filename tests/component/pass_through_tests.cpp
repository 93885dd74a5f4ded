// ProcessLHRequest and SavePaymentTxn, and the notification channel behind the last slot.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "com/ansi_text.hpp"
#include "tests/component/control_under_test.hpp"
#include "tests/component/member_call.hpp"
#include "tests/component/module_under_test.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/recording_container.hpp"

namespace paylodge::test {
namespace {

using ::testing::ElementsAre;

constexpr const char* kEnvelopeStart =
    "<?xml version=\"1.0\"?><?lhxml version=\"7.0\" ?><LHXML><LHXMLMsgsRq onError=\"continueOnError\">";
constexpr const char* kEnvelopeEnd = "</LHXMLMsgsRq></LHXML>";

// The two operations, which differ in what they make of a failure.
struct Operation {
    const char* name;
    HRESULT (STDMETHODCALLTYPE IPaylodge8::*call)(BSTR, BSTR*);
    bool passes_failures_on;
};

class PassThrough : public Component, public ::testing::WithParamInterface<Operation> {
  protected:
    [[nodiscard]] HRESULT CallWith(BSTR body) {
        response_.Reset();
        return (paylodge.Get()->*GetParam().call)(body, response_.Receive());
    }
    [[nodiscard]] HRESULT Call(std::wstring_view body) { return CallWith(MakeBstr(body).Get()); }
    [[nodiscard]] std::wstring Response() const { return std::wstring(View(response_)); }
    [[nodiscard]] bool HasResponse() const { return static_cast<bool>(response_); }

  private:
    OwnedBstr response_;
};

constexpr Operation kOperations[] = {
    {"ProcessLHRequest", &IPaylodge8::ProcessLHRequest, true},
    {"SavePaymentTxn", &IPaylodge8::SavePaymentTxn, false},
};
INSTANTIATE_TEST_SUITE_P(Operations, PassThrough, ::testing::ValuesIn(kOperations),
                         [](const auto& row) { return row.param.name; });

TEST_P(PassThrough, WrapsTheBodyInOneLine) {
    EXPECT_HRESULT(S_OK, Call(L"<AccountQueryRq/>"));
    EXPECT_EQ(std::string(kEnvelopeStart) + "<AccountQueryRq/>" + kEnvelopeEnd, host.OnlyRequest());
}

TEST_P(PassThrough, SendsAnyBodyUnchanged) {
    constexpr std::wstring_view kBody = L"a & b < c \r\n\t\"x\" \u20ac\u00fc</LHXML>";
    EXPECT_HRESULT(S_OK, Call(kBody));
    ASSERT_EQ(1U, host.requests.size());
    const std::wstring start(kEnvelopeStart, kEnvelopeStart + std::char_traits<char>::length(kEnvelopeStart));
    const std::wstring end(kEnvelopeEnd, kEnvelopeEnd + std::char_traits<char>::length(kEnvelopeEnd));
    EXPECT_EQ(start + std::wstring(kBody) + end, host.requests[0]);
}

TEST_P(PassThrough, EmptyAndNullBodiesSendAnEmptyMessageSet) {
    EXPECT_HRESULT(S_OK, Call(L""));
    EXPECT_HRESULT(S_OK, CallWith(nullptr));
    const std::string empty = std::string(kEnvelopeStart) + kEnvelopeEnd;
    ASSERT_EQ(2U, host.requests.size());
    EXPECT_EQ(empty, AnsiFromWide(host.requests[0]));
    EXPECT_EQ(empty, AnsiFromWide(host.requests[1]));
}

TEST_P(PassThrough, MakesOneSession) {
    EXPECT_HRESULT(S_OK, Call(L"x"));
    EXPECT_THAT(host.calls, ElementsAre("CreateObjectFromClassId(\"{45F5708E-3B43-4FA8-BE7E-A5F1849214CB}\")",
                                        "OpenConnection(\"\", \"Ledgerhall Paylodge\")", "BeginSession(\"\", 2)",
                                        "ProcessRequest(\"ticket\")", "EndSession(\"ticket\")", "CloseConnection()"));
    EXPECT_EQ(0, host.live_processors);
}

TEST_P(PassThrough, ReturnsTheResponseAsItCame) {
    for (const wchar_t* response :
         {L"<LHXML/>", L"not XML at all <", L"<AccountQueryRs statusCode=\"500\" statusSeverity=\"Error\"/>"}) {
        host.answers.push_back({.response = response});
        EXPECT_HRESULT(S_OK, Call(L"x"));
        EXPECT_EQ(response, Response());
    }
}

TEST_P(PassThrough, ResponseGoesThroughTheAnsiCodePage) {
    host.answers.push_back({.response = L"\u00fc\u20ac \u4e00"});
    EXPECT_HRESULT(S_OK, Call(L"x"));
    EXPECT_EQ(L"\u00fc\u20ac ?", Response());
}

TEST_P(PassThrough, EmbeddedNullsSurvive) {
    constexpr std::wstring_view kText(L"a\0b", 3);
    host.answers.push_back({.response = std::wstring(kText)});
    EXPECT_HRESULT(S_OK, Call(kText));
    EXPECT_EQ(kText, Response());
    ASSERT_EQ(1U, host.requests.size());
    EXPECT_NE(std::wstring::npos, host.requests[0].find(kText));
}

TEST_P(PassThrough, HugeBodyAndResponseArriveWhole) {
    const std::wstring text(2'000'000, L'x');
    host.answers.push_back({.response = text});
    EXPECT_HRESULT(S_OK, Call(text));
    EXPECT_EQ(text, Response());
    EXPECT_EQ(
        std::char_traits<char>::length(kEnvelopeStart) + text.size() + std::char_traits<char>::length(kEnvelopeEnd),
        host.requests[0].size());
}

TEST_P(PassThrough, EmptyResponseIsAResponse) {
    host.answers.push_back({.response = L""});
    EXPECT_HRESULT(S_OK, Call(L"x"));
    EXPECT_TRUE(HasResponse());
    EXPECT_EQ(L"", Response());
}

TEST_P(PassThrough, SuccessOfAnyCodeWithAResponseIsSOk) {
    host.answers.push_back({.result = S_FALSE, .response = L"<LHXML/>"});
    EXPECT_HRESULT(S_OK, Call(L"x"));
    EXPECT_EQ(L"<LHXML/>", Response());
}

TEST_P(PassThrough, NullResponseLeavesTheResultUntouched) {
    for (const HRESULT result : {S_OK, S_FALSE}) {
        host.answers.push_back({.result = result, .response = L"", .is_null = true});
        EXPECT_HRESULT(GetParam().passes_failures_on ? result : E_FAIL, Call(L"x"));
        EXPECT_FALSE(HasResponse());
    }
}

TEST_P(PassThrough, FailureOfTheProcessor) {
    for (const HRESULT failure : {E_ACCESSDENIED, E_FAIL, E_OUTOFMEMORY, DISP_E_OVERFLOW}) {
        host.answers.push_back({.result = failure, .response = L"", .is_null = true});
        EXPECT_HRESULT(GetParam().passes_failures_on ? failure : E_FAIL, Call(L"x"));
        EXPECT_FALSE(HasResponse());
    }
}

TEST_P(PassThrough, FailureWithAResponseReturnsNoResult) {
    host.answers.push_back({.result = E_ACCESSDENIED, .response = L"<LHXML/>"});
    EXPECT_HRESULT(GetParam().passes_failures_on ? E_ACCESSDENIED : E_FAIL, Call(L"x"));
    EXPECT_FALSE(HasResponse());
}

TEST_P(PassThrough, WithoutAHostFails) {
    host.failures["CreateObjectFromClassId"] = E_ACCESSDENIED;
    EXPECT_HRESULT(E_FAIL, Call(L"x"));
    EXPECT_FALSE(HasResponse());
}

TEST_P(PassThrough, PageSeesTheFailureAsAnException) {
    host.failures["ProcessRequest"] = E_ACCESSDENIED;
    const Outcome outcome = CallInvoke(*paylodge.Get(), FindMember(GetParam().name));
    EXPECT_HRESULT(DISP_E_EXCEPTION, outcome.result);
    EXPECT_HRESULT(GetParam().passes_failures_on ? E_ACCESSDENIED : E_FAIL, outcome.exception);
}

class NotificationChannel : public Component {
  protected:
    [[nodiscard]] HRESULT Set(BSTR name) { return CallSlot(*paylodge.Get(), kSetNotificationChannelSlot, name); }
};

TEST_F(NotificationChannel, TakesAnyName) {
    const OwnedBstr name = MakeBstr(L"channel");
    EXPECT_HRESULT(S_OK, Set(name.Get()));
    EXPECT_HRESULT(S_OK, Set(name.Get()));
    EXPECT_HRESULT(S_OK, Set(MakeBstr(L"").Get()));
    EXPECT_HRESULT(S_OK, Set(MakeBstr(std::wstring(100'000, L'c')).Get()));
    EXPECT_HRESULT(S_OK, Set(nullptr));
    EXPECT_HRESULT(S_OK, Set(nullptr));
}

TEST_F(NotificationChannel, WithNobodyOnItLeavesTheResponseAlone) {
    EXPECT_HRESULT(S_OK, Set(MakeBstr(L"channel").Get()));
    const Outcome outcome = CallSlot(*paylodge.Get(), FindMember("ProcessLHRequest"));
    EXPECT_HRESULT(S_OK, outcome.result);
    EXPECT_EQ("\"<LHXML></LHXML>\"", outcome.results);
}

// A control of the same module, whose events are recorded.
class NotifiedControl : public NotificationChannel {
  protected:
    NotifiedControl() {
        DWORD cookie = 0;
        EXPECT_HRESULT(S_OK, EventPoint(*control_.Get())->Advise(sink_.Get(), &cookie));
        EXPECT_HRESULT(S_OK, control_->SubscribeToNotifications2(name_.Get()));
        EXPECT_HRESULT(S_OK, control_->SetChannelName(name_.Get()));
    }
    [[nodiscard]] Outcome Process() { return CallSlot(*paylodge.Get(), FindMember("ProcessLHRequest")); }

    const OwnedBstr name_ = MakeBstr(L"channel");
    Record record_;
    const ComPtr<ComObject<RecordingSink>> sink_ = ComObject<RecordingSink>::Create(record_, "event", kControlEvents);
    const ComPtr<IPaylodgeCtrl10> control_ = CreateControl(module);
};

TEST_F(NotifiedControl, IsNotifiedOfTheRequestOnceTheObjectHasItsChannel) {
    static_cast<void>(Process());
    EXPECT_EQ("", record_.Take());
    EXPECT_HRESULT(S_OK, Set(name_.Get()));
    EXPECT_EQ("\"<LHXML></LHXML>\"", Process().results);
    EXPECT_EQ("event7", record_.Take());
    EXPECT_EQ((std::vector<std::wstring>{L"a&1", L"<LHXML></LHXML>"}), sink_->arguments);
    EXPECT_HRESULT(S_OK, Set(nullptr));
    static_cast<void>(Process());
    EXPECT_EQ("", record_.Take());
}

// The channel's name is the object's own copy.
TEST_F(NotifiedControl, IsNotifiedAlthoughTheNameThatWasSetIsGone) {
    EXPECT_HRESULT(S_OK, Set(MakeBstr(L"channel").Get()));
    static_cast<void>(Process());
    EXPECT_EQ("event7", record_.Take());
}

}  // namespace
}  // namespace paylodge::test
