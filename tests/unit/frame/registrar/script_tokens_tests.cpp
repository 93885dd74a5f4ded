#include "frame/registrar/script_tokens.hpp"

#include <gtest/gtest.h>

namespace paylodge {
namespace {

[[nodiscard]] ScriptVariables Variables() { return {{u"MODULE", u"C:\\It's here\\Paylodge.dll"}, {u"EMPTY", u""}}; }

// What the only token of a script means.
[[nodiscard]] std::u16string MeaningOf(std::u16string_view script) {
    ScriptTokenizer tokens(script);
    const std::optional<ScriptToken> token = tokens.Next();
    EXPECT_TRUE(token.has_value());
    std::u16string meaning = token.value().Meaning(Variables());
    EXPECT_FALSE(tokens.Next().has_value());
    return meaning;
}

// The line of the mistake in the only token of a script; 0 without a mistake.
[[nodiscard]] std::size_t MistakeLine(std::u16string_view script) {
    try {
        ScriptTokenizer tokens(script);
        while (const std::optional<ScriptToken> token = tokens.Next()) {
            static_cast<void>(token->Meaning(Variables()));
        }
    } catch (const RegistryScriptError& error) {
        return error.Line();
    }
    return 0;
}

TEST(ScriptTokenizer, FindsNothingInBlanks) {
    EXPECT_FALSE(ScriptTokenizer(u"").Next().has_value());
    EXPECT_FALSE(ScriptTokenizer(u" \t\r\n\v\f").Next().has_value());
}

TEST(ScriptTokenizer, EndsWordsAtBlanksOnly) {
    ScriptTokenizer tokens(u"HKCR\t{F8A9}=x\r\n}");
    EXPECT_EQ(tokens.Next().value().text, u"HKCR");
    EXPECT_EQ(tokens.Next().value().text, u"{F8A9}=x");
    EXPECT_EQ(tokens.Next().value().text, u"}");
    EXPECT_FALSE(tokens.Next().has_value());
}

TEST(ScriptTokenizer, EndsQuotedTextAtItsClosingQuote) {
    ScriptTokenizer tokens(u"'a key'{");
    const ScriptToken name = tokens.Next().value();
    EXPECT_EQ(name.text, u"a key");
    EXPECT_TRUE(name.quoted);
    EXPECT_EQ(name.begin, 0u);
    EXPECT_EQ(name.end, 7u);
    const ScriptToken brace = tokens.Next().value();
    EXPECT_TRUE(brace.IsWord(u"{"));
    EXPECT_EQ(brace.begin, 7u);
}

// What follows in memory is no part of the script.
TEST(ScriptTokenizer, EndsWhereTheScriptEnds) {
    ScriptTokenizer blanks(std::u16string_view(u"a  b", 2));
    EXPECT_EQ(blanks.Next().value().text, u"a");
    EXPECT_FALSE(blanks.Next().has_value());
    ScriptTokenizer word(std::u16string_view(u"abc d", 2));
    EXPECT_EQ(word.Next().value().text, u"ab");
    EXPECT_FALSE(word.Next().has_value());
    ScriptTokenizer quoted(std::u16string_view(u"'a'' b'", 3));
    EXPECT_EQ(quoted.Next().value().text, u"a");
    EXPECT_FALSE(quoted.Next().has_value());
    EXPECT_EQ(MistakeLine(std::u16string_view(u"'a'", 2)), 1u);
}

TEST(ScriptTokenizer, CountsLines) {
    ScriptTokenizer tokens(u"one\n'two\nthree' three\r\n\r\nfive");
    EXPECT_EQ(tokens.Next().value().line, 1u);
    EXPECT_EQ(tokens.Next().value().line, 2u);
    EXPECT_EQ(tokens.Next().value().line, 3u);
    EXPECT_EQ(tokens.Next().value().line, 5u);
}

TEST(ScriptTokenizer, RefusesQuotedTextThatIsNotClosed) {
    EXPECT_EQ(MistakeLine(u"\n'"), 2u);
    EXPECT_EQ(MistakeLine(u"\n\n'it''s\n\n"), 3u);
    EXPECT_EQ(MistakeLine(u"''''''"), 0u);
    EXPECT_EQ(MistakeLine(u"'''''"), 1u);
}

TEST(ScriptToken, IsAWordInAnyLetterCaseUnlessQuoted) {
    EXPECT_TRUE(ScriptTokenizer(u"forceREMOVE").Next().value().IsWord(u"ForceRemove"));
    EXPECT_FALSE(ScriptTokenizer(u"'ForceRemove'").Next().value().IsWord(u"ForceRemove"));
    EXPECT_FALSE(ScriptTokenizer(u"ForceRemover").Next().value().IsWord(u"ForceRemove"));
}

TEST(ScriptToken, TakesTwoQuotesForOneInQuotedTextOnly) {
    EXPECT_EQ(MeaningOf(u"'it''s'"), u"it's");
    EXPECT_EQ(MeaningOf(u"''''"), u"'");
    EXPECT_EQ(MeaningOf(u"''"), u"");
    EXPECT_EQ(MeaningOf(u"it''s"), u"it''s");
}

TEST(ScriptToken, ReplacesVariables) {
    EXPECT_EQ(MeaningOf(u"'%MODULE%, 103'"), u"C:\\It's here\\Paylodge.dll, 103");
    EXPECT_EQ(MeaningOf(u"%MODULE%"), u"C:\\It's here\\Paylodge.dll");
    EXPECT_EQ(MeaningOf(u"'%module%'"), u"C:\\It's here\\Paylodge.dll");
    EXPECT_EQ(MeaningOf(u"'<%EMPTY%%EMPTY%>'"), u"<>");
}

TEST(ScriptToken, TakesTwoPercentSignsForOne) {
    EXPECT_EQ(MeaningOf(u"'%%SystemRoot%%\\100%%'"), u"%SystemRoot%\\100%");
    EXPECT_EQ(MeaningOf(u"'%%%EMPTY%%%'"), u"%%");
}

TEST(ScriptToken, DoesNotReadAVariablesValueAsScript) {
    const ScriptVariables variables = {{u"VALUE", u"%VALUE% '' {"}};
    EXPECT_EQ(ScriptTokenizer(u"'%VALUE%'").Next().value().Meaning(variables), u"%VALUE% '' {");
}

TEST(ScriptToken, RefusesVariablesThatAreUnknownOrNotClosed) {
    EXPECT_EQ(MistakeLine(u"\n'%UNKNOWN%'"), 2u);
    EXPECT_EQ(MistakeLine(u"'%MODULE'"), 1u);
    EXPECT_EQ(MistakeLine(u"100%"), 1u);
    EXPECT_EQ(MistakeLine(u"'%%%'"), 1u);
}

TEST(ScriptToken, RefusesNullCharacters) {
    EXPECT_EQ(MistakeLine(std::u16string_view(u"'a\0b'", 5)), 1u);
    EXPECT_EQ(MistakeLine(std::u16string_view(u"\n\0", 2)), 2u);
}

TEST(ScriptToken, NamesTheLineOnWhichTheTextBegins) {
    // In text of several lines, whichever of them holds the mistake.
    EXPECT_EQ(MistakeLine(u"\n'a\n\n%UNKNOWN%'"), 2u);
    EXPECT_EQ(MistakeLine(u"\n'a\n%MODULE'"), 2u);
    EXPECT_EQ(MistakeLine(std::u16string_view(u"\n'a\n\0'", 6)), 2u);
    EXPECT_EQ(MistakeLine(u"\n\n'a\nb"), 3u);
    // And after it, the lines in the text and between two quotes count.
    EXPECT_EQ(MistakeLine(u"'a\nb''c\nd'\n%UNKNOWN%"), 4u);
    EXPECT_EQ(MistakeLine(u"'a\n' '\nb"), 2u);
    EXPECT_EQ(MistakeLine(u"a\r\nb\r\n%UNKNOWN%"), 3u);
}

TEST(RegistryScriptError, NamesTheLine) {
    EXPECT_STREQ(RegistryScriptError(7, "a name is missing").what(), "line 7: a name is missing");
}

TEST(EqualIgnoringCase, ComparesAsciiLettersWithoutCase) {
    EXPECT_TRUE(EqualIgnoringCase(u"HKEY_az09", u"hkey_AZ09"));
    EXPECT_FALSE(EqualIgnoringCase(u"@[`{", u"`{@["));
    EXPECT_FALSE(EqualIgnoringCase(u"@", u"`"));
    EXPECT_FALSE(EqualIgnoringCase(u"[", u"{"));
    EXPECT_FALSE(EqualIgnoringCase(u"abc", u"ab"));
    EXPECT_FALSE(EqualIgnoringCase(u"\u00e4", u"\u00c4"));
}

}  // namespace
}  // namespace paylodge
