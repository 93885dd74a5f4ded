#include "refhost/books/values.hpp"

#include <gtest/gtest.h>

namespace paylodge::refhost {
namespace {

TEST(Amounts, AreReadInCents) {
    EXPECT_EQ(ParseCents("12"), 1200);
    EXPECT_EQ(ParseCents("12.5"), 1250);
    EXPECT_EQ(ParseCents("-0.05"), -5);
    EXPECT_EQ(ParseCents("9999999999999.99"), 999999999999999);
}

TEST(Amounts, OfAnySizeAreReadAsBeyondTheLimitsAtLeast) {
    for (const std::string& text :
         {std::string("99999999999999999999"), std::string(400, '9'), "0001" + std::string(30, '0')}) {
        EXPECT_GT(ParseCents(text), kLargestBalance) << text;
        EXPECT_LT(ParseCents('-' + text), -kLargestBalance) << text;
    }
    EXPECT_EQ(ParseCents(std::string(400, '0') + "7.5"), 750);
}

TEST(Amounts, OfAnyOtherFormAreRefused) {
    for (const char* text :
         {"", "-", ".5", "1.", "1.234", "1,50", "+1", " 1", "1 ", "abc", "1e5", "nan", "--1", "1.-5"}) {
        EXPECT_EQ(ParseCents(text), std::nullopt) << text;
    }
}

TEST(Amounts, AreWrittenWithTwoDecimals) {
    EXPECT_EQ(FormatCents(0), "0.00");
    EXPECT_EQ(FormatCents(5), "0.05");
    EXPECT_EQ(FormatCents(-5), "-0.05");
    EXPECT_EQ(FormatCents(123456), "1234.56");
}

TEST(Dates, AreDaysOfTheCalendar) {
    EXPECT_TRUE(IsDate("2024-02-29"));
    for (const char* text : {"2025-02-29", "2025-13-01", "2025-00-10", "2025-1-1", "2025/01/01", "", "20250101xx"}) {
        EXPECT_FALSE(IsDate(text)) << text;
    }
}

TEST(Dates, MayHaveATimeOfDay) {
    EXPECT_TRUE(IsDateTime("1970-01-01T00:00:00"));
    EXPECT_TRUE(IsDateTime("2030-01-19"));
    for (const char* text : {"2030-01-19T24:00:00", "2030-01-19T03:60:00", "2030-01-19 03:14:07", "2030-01-19T03:14"}) {
        EXPECT_FALSE(IsDateTime(text)) << text;
    }
}

TEST(Counts, AreWholeNumbersAboveZero) {
    EXPECT_EQ(ParseCount("10000"), 10000U);
    for (const char* text : {"", "0", "-1", "1.5", "1000000000", "x"}) {
        EXPECT_EQ(ParseCount(text), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace paylodge::refhost
