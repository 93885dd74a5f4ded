// What arrives in the page when a script call is run, and which data makes the call no valid script: only one of line
// feeds and quotes is escaped, and nothing else ever is.

#include <gtest/gtest.h>

#include <ostream>

#include "bridge/script_text.hpp"
#include "tests/unit/bridge/script_page.hpp"

namespace paylodge {
namespace {

using test::kScriptError;
using test::RunInPage;

class InPage : public ::testing::Test {
  protected:
    void SetUp() override {
        if (const auto reason = test::WhyNoScriptEngine()) {
            GTEST_SKIP() << *reason;
        }
    }
};

struct Arrival {
    const char* name;
    ScriptEscaping escaping;
    const char* data;
    // What the page's function gets; null when the script is not valid.
    const char* argument;

    friend std::ostream& operator<<(std::ostream& stream, const Arrival& arrival) { return stream << arrival.name; }
};

class ScriptCallInPage : public InPage, public ::testing::WithParamInterface<Arrival> {};

TEST_P(ScriptCallInPage, GivesTheFunctionItsArgument) {
    const Arrival& arrival = GetParam();
    const std::string function = "app.lhProxy.feeEventFromLH";
    const std::string expected =
        arrival.argument == nullptr ? kScriptError : function + "[string " + arrival.argument + "]";
    EXPECT_EQ(RunInPage(ScriptCall(function, arrival.data, arrival.escaping)), expected);
}

constexpr auto kNewline = ScriptEscaping::kNewline;
constexpr auto kQuote = ScriptEscaping::kQuote;

const Arrival kArrivals[] = {
    {"Plain", kNewline, "<Txn id='1'>5 & 6</Txn>", "<Txn id='1'>5 & 6</Txn>"},
    {"Empty", kNewline, "", ""},
    {"LineFeed", kNewline, "a\nb\n", "a\nb\n"},
    {"LatinLetter", kNewline, "Caf\xE9", "Caf\xE9"},
    {"SingleQuote", kNewline, "it's", "it's"},
    {"Tab", kNewline, "a\tb", "a\tb"},
    {"BackslashIsAnEscape", kNewline, "C:\\new", "C:\new"},
    {"QuoteEndsTheArgument", kNewline, "a\"b", nullptr},
    {"TwoQuotesEndTheArgument", kNewline, "He said \"hi\"", nullptr},
    {"QuotesAroundAnExpression", kNewline, "a\"+1+\"b", "a1b"},
    {"LastBackslashSwallowsTheEnd", kNewline, "C:\\", nullptr},
    {"PlainToSearch", kQuote, "Robin Vale", "Robin Vale"},
    {"EmptyToSearch", kQuote, "", ""},
    {"QuoteToSearch", kQuote, "He said \"hi\"", "He said \"hi\""},
    {"OnlyQuotesToSearch", kQuote, "\"\"\"", "\"\"\""},
    {"JsonToSearch", kQuote, R"({"name":"Robin"})", R"({"name":"Robin"})"},
    {"BackslashBeforeQuoteEndsTheArgument", kQuote, "a\\\"b", nullptr},
    {"BackslashPairToSearch", kQuote, "a\\\\b", "a\\b"},
};

std::string NameOf(const ::testing::TestParamInfo<Arrival>& information) { return information.param.name; }

INSTANTIATE_TEST_SUITE_P(Data, ScriptCallInPage, ::testing::ValuesIn(kArrivals), NameOf);

TEST_F(InPage, ReconPaymentScriptGivesThreeStrings) {
    EXPECT_EQ(RunInPage(ReconPaymentScript("p1\np2", "2024-01-31", false)),
              "app.lhProxy.txnEventFromLH[string p1\np2|string 2024-01-31|string false]");
    EXPECT_EQ(RunInPage(ReconPaymentScript("", "", true)), "app.lhProxy.txnEventFromLH[string |string |string true]");
}

TEST_F(InPage, ReconPaymentScriptIsNoneWithAQuote) {
    EXPECT_EQ(RunInPage(ReconPaymentScript("p\"1", "2024-01-31", true)), kScriptError);
    EXPECT_EQ(RunInPage(ReconPaymentScript("p1", "2024\"01", true)), kScriptError);
}

// A string literal ends with its line.
TEST_F(InPage, RawLineEndsMakeAScriptInvalid) {
    EXPECT_EQ(RunInPage(ScriptCall("app.lhProxy.feeEventFromLH", "a\nb", kQuote)),
              test::RawLineEnd("app.lhProxy.feeEventFromLH[string a\nb]"));
    EXPECT_EQ(RunInPage(ScriptCall("app.lhProxy.feeEventFromLH", "a\rb", kNewline)),
              test::RawLineEnd("app.lhProxy.feeEventFromLH[string a\rb]"));
    EXPECT_EQ(RunInPage(ReconPaymentScript("p1", "2024\n", true)),
              test::RawLineEnd("app.lhProxy.txnEventFromLH[string p1|string 2024\n|string true]"));
}

TEST_F(InPage, AFunctionThatThePageLacksIsAnError) {
    EXPECT_EQ(RunInPage(ScriptCall("app.lhProxy.unknown", "", kNewline)), kScriptError);
}

}  // namespace
}  // namespace paylodge
