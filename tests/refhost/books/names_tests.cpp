#include "refhost/books/names.hpp"

#include <gtest/gtest.h>

#include <string>

namespace paylodge::refhost {
namespace {

TEST(Names, AreTheSameWhateverTheirLetterCase) {
    EXPECT_TRUE(IsSameName("Petty CASH", "petty cash"));
    EXPECT_TRUE(IsSameName("CAF\xC3\x89", "caf\xC3\xA9"));  // É, é
    EXPECT_TRUE(IsSameName("STRASSE",
                           "stra\xC3\x9F"  // ß is folded to ss
                           "e"));
    EXPECT_TRUE(IsSameName("\xCE\xA3\xCE\x91\xCE\xA3", "\xCF\x83\xCE\xB1\xCF\x82"));  // the final sigma is a sigma
    EXPECT_FALSE(IsSameName("Petty Cash", "Petty Cash "));
    EXPECT_FALSE(IsSameName("caf\xC3\xA9", "cafe"));
}

TEST(Names, AreTheSameInEveryFormOfUnicode) {
    EXPECT_TRUE(IsSameName("caf\xC3\xA9", "cafe\xCC\x81"));  // one character, or a letter and its accent
}

TEST(Names, ThatAreNotUtf8StayAsTheyAre) { EXPECT_EQ(Folded("\xFF\xFE"), "\xFF\xFE"); }

TEST(Names, HaveNoControlCharacters) {
    EXPECT_FALSE(HasControlCharacter("Caf\xC3\xA9 & Sons, 2nd"));
    for (const std::string& text : {std::string("a\tb"), std::string("a\nb"), std::string("a\0b", 3),
                                    std::string("\x7F"), std::string("\xC2\x85"), std::string("\xFF")}) {
        EXPECT_TRUE(HasControlCharacter(text));
    }
}

TEST(Names, AreCountedInCharacters) { EXPECT_EQ(CountCharacters("\xE2\x82\xAC\xC3\xA9x"), 3U); }

}  // namespace
}  // namespace paylodge::refhost
