// The texts of the script calls, byte for byte.

#include "bridge/script_text.hpp"

#include <gtest/gtest.h>

namespace paylodge {
namespace {

using namespace std::string_literals;

constexpr auto kNewline = ScriptEscaping::kNewline;
constexpr auto kQuote = ScriptEscaping::kQuote;

TEST(ReplaceAll, ReplacesEveryOccurrence) { EXPECT_EQ(ReplaceAll("a-b--c-", "-", "+"), "a+b++c+"); }

TEST(ReplaceAll, DoesNotScanWhatItPutIn) {
    EXPECT_EQ(ReplaceAll("aa", "a", "aa"), "aaaa");
    EXPECT_EQ(ReplaceAll("\"", "\"", "\\\""), "\\\"");
}

TEST(ReplaceAll, TakesOccurrencesThatDoNotOverlap) {
    EXPECT_EQ(ReplaceAll("aaa", "aa", "b"), "ba");
    EXPECT_EQ(ReplaceAll("aaaa", "aa", "b"), "bb");
}

TEST(ReplaceAll, DoesNotFindWhatOnlyAReplacementCompletes) { EXPECT_EQ(ReplaceAll("aabb", "ab", ""), "ab"); }

TEST(ReplaceAll, LeavesATextWithoutThePattern) {
    EXPECT_EQ(ReplaceAll("", "a", "b"), "");
    EXPECT_EQ(ReplaceAll("text", "longer than the text", "b"), "text");
    EXPECT_EQ(ReplaceAll("text", "", "b"), "text");
}

TEST(ReplaceAll, GoesPastEmbeddedNuls) { EXPECT_EQ(ReplaceAll("\0\n\0\n"s, "\n", "\\n"), "\0\\n\0\\n"s); }

TEST(EscapeForScript, TurnsLineFeedsIntoTwoCharactersInNewlineMode) {
    EXPECT_EQ(EscapeForScript("\na\n\nb\n", kNewline), "\\na\\n\\nb\\n");
}

TEST(EscapeForScript, PutsABackslashBeforeQuotesInQuoteMode) {
    EXPECT_EQ(EscapeForScript("\"a\"\"b\"", kQuote), "\\\"a\\\"\\\"b\\\"");
}

TEST(EscapeForScript, LeavesQuotesRawInNewlineMode) { EXPECT_EQ(EscapeForScript("a\"b", kNewline), "a\"b"); }

TEST(EscapeForScript, LeavesLineFeedsRawInQuoteMode) { EXPECT_EQ(EscapeForScript("a\nb", kQuote), "a\nb"); }

TEST(EscapeForScript, NeverTouchesOtherCharacters) {
    const std::string others = "\r\t\\'`\0<>/&;()+\x01\x7F\x80\xE9\xFF"s;
    EXPECT_EQ(EscapeForScript(others, kNewline), others);
    EXPECT_EQ(EscapeForScript(others, kQuote), others);
}

TEST(ScriptCall, IsTheFunctionWithOneQuotedArgument) {
    EXPECT_EQ(ScriptCall("app.lhProxy.feeEventFromLH", "a\"b", kNewline), "app.lhProxy.feeEventFromLH(\"a\"b\")");
    EXPECT_EQ(ScriptCall("$.fn.CustomerSearchResultFromLH", "He said \"hi\"", kQuote),
              R"($.fn.CustomerSearchResultFromLH("He said \"hi\""))");
}

TEST(ScriptCall, HasAnEmptyArgumentForAnEmptyText) {
    EXPECT_EQ(ScriptCall("fn", "", kNewline), "fn(\"\")");
    EXPECT_EQ(ScriptCall("fn", "", kQuote), "fn(\"\")");
}

TEST(ScriptCall, NeverEscapesTheFunction) {
    EXPECT_EQ(ScriptCall("f[\"a\"]\n", "", kNewline), "f[\"a\"]\n(\"\")");
    EXPECT_EQ(ScriptCall("f[\"a\"]\n", "", kQuote), "f[\"a\"]\n(\"\")");
    EXPECT_EQ(ScriptCall("", "x", kQuote), "(\"x\")");
}

TEST(ScriptCall, HoldsAMillionCharactersThatAllGrow) {
    const std::string quotes(1'000'000, '"');
    EXPECT_EQ(ScriptCall("f", quotes, kQuote).size(), 2'000'000U + 5U);
}

TEST(ReconPaymentScript, QuotesAllThreeArguments) {
    EXPECT_EQ(ReconPaymentScript("p1", "2024-01-31", false),
              R"(app.lhProxy.txnEventFromLH("p1","2024-01-31","false"))");
    EXPECT_EQ(ReconPaymentScript("", "", true), R"(app.lhProxy.txnEventFromLH("","","true"))");
}

TEST(ReconPaymentScript, EscapesLineFeedsOfThePaymentDataOnly) {
    EXPECT_EQ(ReconPaymentScript("a\n\"b\"\r\\", "c\n\"d\"\r\\", true),
              "app.lhProxy.txnEventFromLH(\"a\\n\"b\"\r\\\",\"c\n\"d\"\r\\\",\"true\")");
}

TEST(NamesBrowserInstance, IsTrueForAnyOtherTextThanEmptyAndUndefined) {
    for (const wchar_t* const identifier : {L"1", L"browser", L" ", L"undefined ", L" undefined", L"undefine",
                                            L"undefinedd", L"0", L"null", L"undef\u00EFned", L"\uFF35ndefined"}) {
        EXPECT_TRUE(NamesBrowserInstance(identifier)) << testing::PrintToString(identifier);
    }
}

TEST(NamesBrowserInstance, IsFalseForEmptyAndForUndefinedInAnyLetterCase) {
    for (const wchar_t* const identifier : {L"", L"undefined", L"UNDEFINED", L"Undefined", L"uNdEfInEd"}) {
        EXPECT_FALSE(NamesBrowserInstance(identifier)) << testing::PrintToString(identifier);
    }
}

}  // namespace
}  // namespace paylodge
