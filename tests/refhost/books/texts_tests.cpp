#include "refhost/books/texts.hpp"

#include <gtest/gtest.h>

#include <string>

namespace paylodge::refhost {
namespace {

const std::string kZero("a\0b", 3);

TEST(XmlText, IsUtf8WithoutControlCharacters) {
    for (const char* text :
         {"", "plain", "a\tb\r\nc", "caf\xC3\xA9", "\xF0\x9F\x92\xB3", "\x7F", "\xC2\x85", "\xEF\xBF\xBD"}) {
        EXPECT_TRUE(IsXmlText(text)) << text;
    }
}

TEST(XmlText, HasNothingThatXmlHasNoPlaceFor) {
    for (const std::string& text : {kZero, std::string("\x1F"), std::string("plain\x01"), std::string("\xEF\xBF\xBE"),
                                    std::string("\xEF\xBF\xBF")}) {
        EXPECT_FALSE(IsXmlText(text)) << text;
    }
}

TEST(XmlText, IsNoBytesThatAreNoCharacter) {
    // A byte behind nothing, a character cut off, one in too many bytes, half of a pair, and one beyond the last.
    for (const char* text : {"\xA9", "caf\xC3", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF"}) {
        EXPECT_FALSE(IsXmlText(text)) << text;
    }
}

TEST(OneLine, KeepsWhatCanBeShown) { EXPECT_EQ(OneLine("caf\xC3\xA9 & <more>"), "caf\xC3\xA9 & <more>"); }

TEST(OneLine, HasAQuestionMarkForWhatCannot) {
    EXPECT_EQ(OneLine("a\nb\r\tc"), "a?b??c");
    EXPECT_EQ(OneLine(kZero), "a?b");
    EXPECT_EQ(OneLine("caf\xC3"), "caf?");
    EXPECT_EQ(OneLine("\xED\xA0\x80x"), "???x");
    EXPECT_EQ(OneLine("\xC2\x85"), "?");
}

}  // namespace
}  // namespace paylodge::refhost
