#include "lhxml/number_text.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <clocale>
#include <cmath>
#include <limits>
#include <optional>
#include <string>

namespace paylodge {
namespace {

using namespace std::string_literals;

struct Number {
    std::string text;
    bool is_number;
    double value;
};
class NumberTable : public testing::TestWithParam<Number> {};

TEST_P(NumberTable, IsReadWhole) {
    double number = -77;
    EXPECT_EQ(GetParam().is_number, ParseDouble(GetParam().text, number));
    EXPECT_EQ(GetParam().value, number);
}

INSTANTIATE_TEST_SUITE_P(Numbers, NumberTable,
                         testing::Values(Number{"12.5", true, 12.5}, Number{"0", true, 0}, Number{"-0.25", true, -0.25},
                                         Number{"+3", true, 3}, Number{".5", true, 0.5}, Number{"5.", true, 5},
                                         Number{"1e3", true, 1000}, Number{"1E-2", true, 0.01},
                                         Number{std::string(500, '0') + "7", true, 7}));

INSTANTIATE_TEST_SUITE_P(LeadingWhiteSpace, NumberTable,
                         testing::Values(Number{" 12.5", true, 12.5}, Number{"\t\r\n\v\f 12.5", true, 12.5}));

INSTANTIATE_TEST_SUITE_P(Leftovers, NumberTable,
                         testing::Values(Number{"12.5 ", false, 12.5}, Number{"12.5\r\n", false, 12.5},
                                         Number{"12.5abc", false, 12.5}, Number{"12,5", false, 12},
                                         Number{"1.2.3", false, 1.2}, Number{"1 2", false, 1}, Number{"0x10", false, 0},
                                         Number{"12\0"s, false, 12}, Number{"12\0005"s, false, 12}));

INSTANTIATE_TEST_SUITE_P(NoNumbers, NumberTable,
                         testing::Values(Number{"", false, 0}, Number{"abc", false, 0}, Number{" ", false, 0},
                                         Number{"-", false, 0}, Number{".", false, 0}, Number{"-.", false, 0},
                                         Number{"inf", false, 0}, Number{"nan", false, 0}, Number{"$5", false, 0},
                                         Number{"\0005"s, false, 0}, Number{"e5", false, 0}));

TEST(ParseDouble, RefusesWhatIsOutOfRange) {
    double number = 0;
    EXPECT_FALSE(ParseDouble("1e999", number));
    EXPECT_EQ(std::numeric_limits<double>::infinity(), number);
    EXPECT_FALSE(ParseDouble("-1e999", number));
    EXPECT_EQ(-std::numeric_limits<double>::infinity(), number);
    EXPECT_FALSE(ParseDouble("1e-999", number));
    EXPECT_EQ(0, number);
}

TEST(ParseDouble, IsNotMisledByAnEarlierError) {
    double number = 0;
    errno = ERANGE;
    EXPECT_TRUE(ParseDouble("12.5", number));
    EXPECT_EQ(ERANGE, errno);
}

struct Amount {
    double number;
    int decimals;
    std::string text;
};
class AmountTable : public testing::TestWithParam<Amount> {};

TEST_P(AmountTable, IsFormatted) {
    std::string text = "what was there before";
    FormatAmount(GetParam().number, text, GetParam().decimals);
    EXPECT_EQ(GetParam().text, text);
}

INSTANTIATE_TEST_SUITE_P(TwoDecimals, AmountTable,
                         testing::Values(Amount{0, 2, "0.00"}, Amount{12.5, 2, "12.50"},
                                         Amount{1234567.891, 2, "1234567.89"}, Amount{-12.5, 2, "-12.50"},
                                         Amount{0.375, 2, "0.38"}, Amount{2.675, 2, "2.67"}, Amount{0.001, 2, "0.00"},
                                         Amount{-0.001, 2, "-0.00"}, Amount{99.999, 2, "100.00"}));

INSTANTIATE_TEST_SUITE_P(FiveDecimals, AmountTable,
                         testing::Values(Amount{12.5, 0, "12.50000"}, Amount{12.5, 3, "12.50000"},
                                         Amount{12.5, 1, "12.50000"}, Amount{12.5, 5, "12.50000"},
                                         Amount{12.5, -2, "12.50000"},
                                         Amount{12.5, std::numeric_limits<int>::max(), "12.50000"},
                                         Amount{1.0 / 3, 4, "0.33333"}, Amount{0.0000051, 3, "0.00001"}));

TEST(FormatAmount, WritesAHugeNumberWithAllItsDigits) {
    std::string text;
    FormatAmount(1e200, text, 2);
    EXPECT_EQ(200U + 3U, text.size());
    EXPECT_EQ("99999999999999996973312221", text.substr(0, 26));
    EXPECT_EQ(".00", text.substr(200));
}

TEST(FormatAmount, CutsNothingOffTheLargestNumber) {
    std::string text;
    FormatAmount(-std::numeric_limits<double>::max(), text, 3);
    EXPECT_EQ(1U + 309U + 6U, text.size());
    EXPECT_EQ("-17976931348623157", text.substr(0, 18));
    EXPECT_EQ(".00000", text.substr(310));
}

struct RequestAmount {
    std::string text;
    std::optional<std::string> amount;
};
class RequestAmountTable : public testing::TestWithParam<RequestAmount> {};

TEST_P(RequestAmountTable, HasTwoDecimals) { EXPECT_EQ(GetParam().amount, AmountWithTwoDecimals(GetParam().text)); }

INSTANTIATE_TEST_SUITE_P(
    Short, RequestAmountTable,
    testing::Values(RequestAmount{"12.5", "12.50"}, RequestAmount{"12", "12.00"}, RequestAmount{"-1.239", "-1.24"},
                    RequestAmount{" 7 ", "7.00"}, RequestAmount{"12.5abc", "12.50"}, RequestAmount{"1,234.50", "1.00"},
                    RequestAmount{"", "0.00"}, RequestAmount{"abc", "0.00"}, RequestAmount{"$5", "0.00"},
                    RequestAmount{"12\0005"s, "12.00"}, RequestAmount{"1e3", "1000.00"}, RequestAmount{"+2.5", "2.50"},
                    RequestAmount{"\t\n\v\f\r 3", "3.00"}, RequestAmount{".5", "0.50"}, RequestAmount{"5.", "5.00"},
                    RequestAmount{"1e", "1.00"}, RequestAmount{"-0.001", "-0.00"}, RequestAmount{"+-2", "0.00"},
                    RequestAmount{"-", "0.00"}, RequestAmount{".", "0.00"}, RequestAmount{"-.", "0.00"},
                    RequestAmount{"-x", "0.00"}, RequestAmount{"-0", "-0.00"}, RequestAmount{"0.125", "0.12"},
                    RequestAmount{"0.375", "0.38"}));

INSTANTIATE_TEST_SUITE_P(NeitherHexadecimalNorWords, RequestAmountTable,
                         testing::Values(RequestAmount{"0x10", "0.00"}, RequestAmount{"inf", "0.00"},
                                         RequestAmount{"-infinity", "0.00"}, RequestAmount{"nan", "0.00"},
                                         RequestAmount{"nan(5)", "0.00"}));

INSTANTIATE_TEST_SUITE_P(WithAllDigits, RequestAmountTable,
                         testing::Values(RequestAmount{"1e22", "1" + std::string(22, '0') + ".00"},
                                         RequestAmount{"1e-400", "0.00"}, RequestAmount{"-1e-400", "-0.00"},
                                         RequestAmount{"1e400", "inf"}));

TEST(AmountWithTwoDecimals, HasAllDigitsOfTheLargestNumbers) {
    EXPECT_EQ(301U + 3U, AmountWithTwoDecimals("1e300")->size());
    EXPECT_EQ(1U + 309U + 3U, AmountWithTwoDecimals("-1.7976931348623157e308")->size());
}

// The host's locale is the process's.
TEST(AmountWithTwoDecimals, IsTheSameInEveryLocale) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* locale : {"German", "de_DE.UTF-8", "fr_FR.UTF-8"}) {
        std::setlocale(LC_ALL, locale);
        EXPECT_EQ("12.50", AmountWithTwoDecimals("12.5"));
        EXPECT_EQ(12.5F, LeadingDecimal<float>("12.5"));
    }
    std::setlocale(LC_ALL, before.c_str());
}

TEST(LeadingDecimal, IsInfiniteOrNothingBeyondTheRange) {
    EXPECT_EQ(std::numeric_limits<float>::infinity(), LeadingDecimal<float>("1e39"));
    EXPECT_EQ(-std::numeric_limits<float>::infinity(), LeadingDecimal<float>("-" + std::string(50, '9')));
    EXPECT_EQ(0, LeadingDecimal<float>("1e-60"));
    EXPECT_EQ(0, LeadingDecimal<float>("0." + std::string(60, '0') + "1"));
    EXPECT_EQ(std::numeric_limits<double>::infinity(), LeadingDecimal<double>(std::string(400, '1') + ".5"));
}

TEST(LeadingDecimal, TellsTooLargeFromTooSmallByAllOfTheNumber) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(kInfinity, LeadingDecimal<double>("1" + std::string(500, '0') + "e-100"));
    EXPECT_EQ(0, LeadingDecimal<double>("0." + std::string(500, '0') + "1e+100"));
    EXPECT_EQ(kInfinity, LeadingDecimal<double>("0.001e400"));
    EXPECT_EQ(-kInfinity, LeadingDecimal<double>("-1e99999999999999999999"));
    EXPECT_EQ(0, LeadingDecimal<double>("1e-99999999999999999999"));
    EXPECT_EQ(0, LeadingDecimal<double>("12345.6789e-4000"));
    EXPECT_EQ(1, LeadingDecimal<double>("0." + std::string(399, '0') + "1e400"));
}

INSTANTIATE_TEST_SUITE_P(AroundThirtyCharacters, RequestAmountTable,
                         testing::Values(RequestAmount{std::string(26, '0') + "1.5", "1.50"},
                                         RequestAmount{"12.5" + std::string(25, ' '), "12.50"},
                                         RequestAmount{std::string(27, '0') + "1.5", std::nullopt},
                                         RequestAmount{"12.5" + std::string(26, ' '), std::nullopt},
                                         RequestAmount{std::string(30, 'x'), std::nullopt},
                                         RequestAmount{"5\0"s + std::string(28, ' '), std::nullopt},
                                         RequestAmount{std::string(100'000, '9'), std::nullopt}));

}  // namespace
}  // namespace paylodge
