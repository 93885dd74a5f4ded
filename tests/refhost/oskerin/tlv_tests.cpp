#include "refhost/oskerin/tlv.hpp"

#include <gtest/gtest.h>

#include "refhost/oskerin/json.hpp"

namespace paylodge::refhost {

bool operator==(const TlvItem& left, const TlvItem& right) {
    return left.tag == right.tag && left.value == right.value;
}

namespace {

using Items = std::vector<TlvItem>;

constexpr const char* kUndecodable = R"({"error":"the data is not a sequence of tags, lengths and values"})";

TEST(DecodeTlv, ReadsItemsInOrder) {
    EXPECT_EQ(DecodeTlv("5A0411223344820219809C0100"), (Items{{"5A", "11223344"}, {"82", "1980"}, {"9C", "00"}}));
}

TEST(DecodeTlv, ReadsNoItemsFromNothing) { EXPECT_EQ(DecodeTlv(""), Items{}); }

TEST(DecodeTlv, ReadsValuesWithoutBytes) { EXPECT_EQ(DecodeTlv("5A00"), (Items{{"5A", ""}})); }

TEST(DecodeTlv, ReadsTagsOfSeveralBytes) {
    EXPECT_EQ(DecodeTlv("9F0201AADF810201BB"), (Items{{"9F02", "AA"}, {"DF8102", "BB"}}));
}

TEST(DecodeTlv, TakesDigitsInBothLetterCases) { EXPECT_EQ(DecodeTlv("5a01bC"), (Items{{"5A", "BC"}})); }

TEST(DecodeTlv, FollowsAConstructedItemByThoseInsideIt) {
    EXPECT_EQ(DecodeTlv("70055A01119C0082019F"), (Items{{"70", "5A01119C00"}, {"5A", "11"}, {"9C", ""}, {"82", "9F"}}));
}

TEST(DecodeTlv, ReadsLengthsOfSeveralBytes) {
    const std::string value(size_t{2} * 0x80, 'A');
    EXPECT_EQ(DecodeTlv("5A8180" + value), (Items{{"5A", value}}));
    EXPECT_EQ(DecodeTlv("5A820080" + value), (Items{{"5A", value}}));
}

TEST(DecodeTlv, RefusesWhatIsNotHexadecimal) {
    for (const char* const text : {"5", "5A0", "5A01G1", "5A 0111", "5A01\xE9\xE9", "0x5A00"}) {
        EXPECT_EQ(DecodeTlv(text), std::nullopt) << text;
    }
}

TEST(DecodeTlv, RefusesWhatEndsWithinAnItem) {
    for (const char* const text : {"5A", "9F", "9F81", "5A02AA", "5A81", "5A8201", "5A8200", "5A81FF00", "70025A01"}) {
        EXPECT_EQ(DecodeTlv(text), std::nullopt) << text;
    }
}

TEST(DecodeTlv, RefusesLengthsOfMoreThanTwoBytes) {
    EXPECT_EQ(DecodeTlv("5A8300000100"), std::nullopt);
    EXPECT_EQ(DecodeTlv("5AFFFFFFFFFFFFFFFFFFFFFF"), std::nullopt);
}

TEST(DecodeTlv, RefusesLengthsWithoutOne) {
    EXPECT_EQ(DecodeTlv("5A80"), std::nullopt);
    EXPECT_EQ(DecodeTlv("5A80AA0000"), std::nullopt);
    EXPECT_EQ(DecodeTlv("5A80" + std::string(size_t{2} * 0x80, 'A')), std::nullopt);
}

TEST(DecodeTlv, RefusesDeeperNestingThanAnyCardHas) {
    std::string text = "5A0111";
    for (int depth = 2; depth <= 8; ++depth) {
        text = EncodeTlv({{"70", text}});
    }
    const auto items = DecodeTlv(text);
    ASSERT_TRUE(items.has_value());
    EXPECT_EQ(items->size(), 8U);
    for (int depth = 0; depth < 2000; ++depth) {
        text = EncodeTlv({{"70", text}});
    }
    EXPECT_EQ(DecodeTlv(text), std::nullopt);
}

TEST(DecodeTlv, TakesEightLevelsAndRefusesNine) {
    std::string text = "5A0111";
    for (int depth = 2; depth <= 8; ++depth) {
        text = EncodeTlv({{"70", text}});
    }
    EXPECT_EQ(DecodeTlv(text).value_or(Items{}).size(), 8U);
    EXPECT_EQ(DecodeTlv(EncodeTlv({{"70", text}})), std::nullopt);
    // What is nested deeper but not constructed is only a value.
    EXPECT_EQ(DecodeTlv(EncodeTlv({{"50", text}})).value_or(Items{}).size(), 1U);
}

TEST(DecodeTlv, RefusesTheCharactersBesideTheDigits) {
    for (const char beside : {'/', ':', '@', 'G', '`', 'g'}) {
        EXPECT_EQ(DecodeTlv(std::string("5A010") + beside), std::nullopt) << beside;
        EXPECT_EQ(DecodeTlv(std::string("5A01") + beside + '0'), std::nullopt) << beside;
    }
    EXPECT_EQ(DecodeTlv("5A0509AFaf09"), std::nullopt);
    EXPECT_EQ(DecodeTlv("5A0309AFaf"), (Items{{"5A", "09AFAF"}}));
}

TEST(DecodeTlv, KnowsFromTheFirstByteOfATagWhatIsInIt) {
    // Constructed or not, and of one byte or more.
    EXPECT_EQ(DecodeTlv("2003DF0100"), (Items{{"20", "DF0100"}, {"DF01", ""}}));
    EXPECT_EQ(DecodeTlv("DF0100"), (Items{{"DF01", ""}}));
    EXPECT_EQ(DecodeTlv("1E00"), (Items{{"1E", ""}}));
    EXPECT_EQ(DecodeTlv("1F8000"
                        "00"),
              (Items{{"1F8000", ""}}));
    EXPECT_EQ(DecodeTlv("1F7F00"), (Items{{"1F7F", ""}}));
    EXPECT_EQ(DecodeTlv("BF0102"
                        "5A00"),
              (Items{{"BF01", "5A00"}, {"5A", ""}}));
}

TEST(EncodeTlv, WritesTheShortestLength) {
    const auto begin = [](size_t bytes) { return EncodeTlv({{"5A", std::string(2 * bytes, '7')}}).substr(0, 8); };
    EXPECT_EQ(EncodeTlv({}), "");
    EXPECT_EQ(begin(0), "5A00");
    EXPECT_EQ(begin(1), "5A0177");
    EXPECT_EQ(begin(0x7F), "5A7F7777");
    EXPECT_EQ(begin(0x80), "5A818077");
    EXPECT_EQ(begin(0xFF), "5A81FF77");
    EXPECT_EQ(begin(0x100), "5A820100");
    EXPECT_EQ(begin(0xABCD), "5A82ABCD");
}

TEST(EncodeTlv, IsDecodedToTheSameItems) {
    for (const size_t bytes : {0U, 1U, 0x7FU, 0x80U, 0xFFU, 0x100U, 0xFFFFU}) {
        const Items items = {{"5A", std::string(2 * bytes, '7')}, {"9F02", "000000001250"}};
        EXPECT_EQ(DecodeTlv(EncodeTlv(items)), items) << bytes;
    }
}

TEST(DescribeTlv, NamesTheWantedTags) {
    EXPECT_EQ(DescribeTlv("5A01119C01009F0201AA", "9F02,5A"), R"({"5A":"11","9F02":"AA"})");
    EXPECT_EQ(DescribeTlv("5A01119C01009F0201AA", "9f02 9c"), R"({"9C":"00","9F02":"AA"})");
}

TEST(DescribeTlv, NamesAllTagsWhenNoneIsWanted) {
    EXPECT_EQ(DescribeTlv("5A01119C0100", ""), R"({"5A":"11","9C":"00"})");
    EXPECT_EQ(DescribeTlv("5A01119C0100", " , ,"), R"({"5A":"11","9C":"00"})");
}

TEST(DescribeTlv, IsEmptyWithoutTheWantedTags) {
    EXPECT_EQ(DescribeTlv("5A0111", "9F02"), "{}");
    EXPECT_EQ(DescribeTlv("", ""), "{}");
}

TEST(DescribeTlv, ReportsUndecodableData) {
    EXPECT_EQ(DescribeTlv("5A02AA", ""), kUndecodable);
    EXPECT_EQ(DescribeTlv("hello", "5A"), kUndecodable);
}

TEST(JsonObject, EscapesQuotesBackslashesAndControlCharacters) {
    EXPECT_EQ(JsonObject().Add("a\"b", "c\\d\n\x1F").Text(), R"({"a\"b":"c\\d\u000a\u001f"})");
}

TEST(JsonObject, LeavesOtherTextAsItIs) {
    EXPECT_EQ(JsonObject().Add("a", "Caf\xC3\xA9").Add("a", "").Text(), "{\"a\":\"Caf\xC3\xA9\",\"a\":\"\"}");
    EXPECT_EQ(JsonObject().Text(), "{}");
}

}  // namespace
}  // namespace paylodge::refhost
