#include "refhost/books/values.hpp"

#include <gtest/gtest.h>

#include <random>

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

TEST(Amounts, AreReadBackAsTheyWereWritten) {
    for (unsigned seed = 1; seed <= 5'000; ++seed) {
        std::mt19937_64 random(seed);
        const std::int64_t cents =
            std::uniform_int_distribution<std::int64_t>(-99'999'999'999'999'999, 99'999'999'999'999'999)(random) >>
            (seed % 57);
        const std::string text = FormatCents(cents);
        // By its digits alone, without a calculation.
        std::string digits = std::to_string(cents < 0 ? -cents : cents);
        digits.insert(0, digits.size() < 3 ? 3 - digits.size() : 0, '0');
        ASSERT_EQ(text,
                  (cents < 0 ? "-" : "") + digits.substr(0, digits.size() - 2) + '.' + digits.substr(digits.size() - 2))
            << "seed " << seed;
        ASSERT_EQ(ParseCents(text), cents) << "seed " << seed;
        // A last digit of 0 may be left out, and zeros in front may be added.
        if (text.back() == '0') {
            ASSERT_EQ(ParseCents(text.substr(0, text.size() - 1)), cents) << text;
        }
        ASSERT_EQ(ParseCents(cents < 0 ? "-00" + text.substr(1) : "00" + text), cents) << text;
    }
}

TEST(Amounts, AreReadAtTheirLimits) {
    EXPECT_EQ(ParseCents("999999999999999.99"), 99'999'999'999'999'999);
    EXPECT_EQ(ParseCents("999999999999999"), 99'999'999'999'999'900);
    EXPECT_EQ(ParseCents("1000000000000000"), 1'000'000'000'000'000'000);
    EXPECT_EQ(ParseCents("-1000000000000000"), -1'000'000'000'000'000'000);
    EXPECT_EQ(ParseCents("0"), 0);
    EXPECT_EQ(ParseCents("00"), 0);
    EXPECT_EQ(ParseCents("-0"), 0);
    EXPECT_EQ(ParseCents("0.0"), 0);
    EXPECT_EQ(ParseCents("0.1"), 10);
    EXPECT_EQ(ParseCents("0.01"), 1);
    EXPECT_EQ(ParseCents("0.10"), 10);
    for (const char* text : {"/", ":", "1/", "1:", "0./", "0.:", "0.1/", "0.1:", "0.001", "1..1", "1.1.1", "-.1"}) {
        EXPECT_EQ(ParseCents(text), std::nullopt) << text;
    }
}

TEST(Texts, AreTrimmedOfWhiteSpaceAlone) {
    EXPECT_EQ(Trimmed(" \t\r\na b\n\r\t "), "a b");
    EXPECT_EQ(Trimmed("a"), "a");
    EXPECT_EQ(Trimmed(" \t\r\n"), "");
    EXPECT_EQ(Trimmed(""), "");
    EXPECT_EQ(Trimmed("\va\f"), "\va\f");
}

TEST(Dates, HaveTheirSeparatorsAndDigitsInTheirPlaces) {
    EXPECT_TRUE(IsDate("0000-01-01"));
    EXPECT_TRUE(IsDate("9999-12-31"));
    EXPECT_TRUE(IsDateTime("2025-12-31T23:59:59"));
    const std::string date = "2025-01-10";
    const std::string time = "2025-01-10T10:20:30";
    for (size_t place = 0; place < time.size(); ++place) {
        std::string text = time;
        text[place] = 'x';
        EXPECT_FALSE(IsDateTime(text)) << text;
        if (place < date.size()) {
            EXPECT_FALSE(IsDate(text.substr(0, date.size()))) << text;
            EXPECT_FALSE(IsDateTime(text.substr(0, date.size()))) << text;
        }
    }
    for (const char* text : {"2025-01-00", "2025-01-32", "2025-04-31", "2025-12-32", "2025-01-101", "2025-01-1"}) {
        EXPECT_FALSE(IsDate(text)) << text;
    }
    for (const char* text :
         {"2025-01-10T10:20:60", "2025-01-10T10:20:301", "2025-02-30T10:20:30", "2025-01-10T", "2025-01-10T10:20:3"}) {
        EXPECT_FALSE(IsDateTime(text)) << text;
    }
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
    EXPECT_EQ(ParseCount("1"), 1U);
    EXPECT_EQ(ParseCount("999999999"), 999'999'999U);
    EXPECT_EQ(ParseCount("000000001"), 1U);
    for (const char* text : {"", "0", "-1", "1.5", "1000000000", "x"}) {
        EXPECT_EQ(ParseCount(text), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace paylodge::refhost
