#include "operations/check_matching.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace paylodge {
namespace {

TEST(CentsFromText, RoundsToTheNearestCent) {
    struct Case {
        const char* text;
        std::int32_t cents;
    };
    for (const auto& [text, cents] :
         {Case{"125.40", 12540}, Case{"100", 10000}, Case{"0", 0}, Case{"0.004", 0}, Case{"0.006", 1}, Case{"0.01", 1},
          Case{"0.29", 29}, Case{"1.15", 115}, Case{" 7.5", 750}, Case{"+3", 300}, Case{"1e2", 10000},
          // Truncated toward zero after half a cent was added: negative amounts come out half a cent high.
          Case{"-1.00", -99}, Case{"-0.01", 0}}) {
        EXPECT_EQ(cents, CentsFromText(text)) << text;
    }
}

TEST(CentsFromText, ReadsTheLeadingNumberOnly) {
    EXPECT_EQ(1250, CentsFromText("12.5 USD"));
    EXPECT_EQ(100, CentsFromText("1,234.00"));
}

TEST(CentsFromText, IsZeroForTextThatIsNotANumber) {
    for (const char* text : {"", " ", "abc", "$5", ".", "-"}) {
        EXPECT_EQ(0, CentsFromText(text)) << text;
    }
}

TEST(CentsFromText, LosesDigitsAsASinglePrecisionFloatDoes) {
    // 1234567.89 is 1234567.875 as a float; 16777217 is 16777216.
    EXPECT_EQ(123456788, CentsFromText("1234567.89"));
    EXPECT_EQ(1677721600, CentsFromText("16777217"));
    // 99999.99 is 99999.9921875.
    EXPECT_EQ(9999999, CentsFromText("99999.99"));
}

TEST(CentsFromText, IsLessThanACentForAmountsThatDoNotFit) {
    for (const char* text : {"30000000", "1e30", "-1e30", "1e300", "inf", "-inf", "nan", "99999999999999999999"}) {
        EXPECT_LT(CentsFromText(text), 1) << text;
    }
}

TEST(TrimSpaces, RemovesSpacesAtBothEndsOnly) {
    EXPECT_EQ("Smith", TrimSpaces("  Smith  "));
    EXPECT_EQ("Smith & Co", TrimSpaces("Smith & Co "));
    EXPECT_EQ("Smith", TrimSpaces("Smith"));
    EXPECT_EQ("", TrimSpaces("   "));
    EXPECT_EQ("", TrimSpaces(""));
}

TEST(TrimSpaces, KeepsOtherWhiteSpace) {
    EXPECT_EQ("\tSmith\r\n", TrimSpaces(" \tSmith\r\n "));
    EXPECT_EQ("\xA0Smith", TrimSpaces("\xA0Smith"));
    EXPECT_EQ(std::string("\0 x", 3), TrimSpaces(std::string(" \0 x ", 5)));
}

struct Invoice {
    std::string reference;
    std::string balance;
};

[[nodiscard]] std::string Match(const std::string& check_amount, const std::vector<Invoice>& invoices) {
    CheckMatcher matcher(check_amount);
    for (const auto& [reference, balance] : invoices) {
        if (matcher.IsDecided()) {
            break;
        }
        matcher.AddInvoice(reference, balance);
    }
    return matcher.Result();
}

const std::vector<Invoice> kFortyAndSixty = {{"1001", "40.00"}, {"1002", "60.00"}};

TEST(CheckMatcher, GivesAllInvoicesWhenTheyComeToTheAmount) {
    EXPECT_EQ("1001, 1002", Match("100.00", kFortyAndSixty));
}

TEST(CheckMatcher, GivesTheOneInvoiceWithThisBalance) {
    EXPECT_EQ("1002", Match("60.00", kFortyAndSixty));
    EXPECT_EQ("1001", Match("40", kFortyAndSixty));
}

TEST(CheckMatcher, GivesTheFirstOfEqualBalancesAndIsDecidedThen) {
    CheckMatcher matcher("60.00");
    EXPECT_FALSE(matcher.IsDecided());
    matcher.AddInvoice("7", "60.00");
    EXPECT_TRUE(matcher.IsDecided());
    EXPECT_EQ("7", matcher.Result());
    EXPECT_EQ("7", Match("60.00", {{"7", "60.00"}, {"8", "60.00"}}));
}

TEST(CheckMatcher, PrefersAnExactBalanceToTheSumOfThoseBefore) {
    EXPECT_EQ("3", Match("100", {{"1", "40"}, {"2", "60"}, {"3", "100"}}));
}

TEST(CheckMatcher, IsEmptyWithoutADecision) {
    EXPECT_EQ("", Match("99.99", kFortyAndSixty));
    EXPECT_EQ("", Match("100.00", {}));
    EXPECT_EQ("", Match("40", {{"1", "39.98"}, {"2", "0.01"}}));
}

TEST(CheckMatcher, MatchesNothingForLessThanACent) {
    for (const char* amount : {"0", "0.004", "abc", "", "-5"}) {
        EXPECT_EQ("", Match(amount, {{"1", "0"}, {"2", amount}})) << amount;
        EXPECT_TRUE(CheckMatcher(amount).IsDecided()) << amount;
    }
}

TEST(CheckMatcher, SumsInvoicesWithoutANumberButLeavesThemOutOfTheList) {
    EXPECT_EQ("1", Match("100", {{"", "40"}, {"1", "60"}}));
    EXPECT_EQ("1, 2", Match("100", {{"1", "30"}, {"", "40"}, {"2", "30"}}));
    EXPECT_EQ("", Match("100", {{"", "40"}, {"", "60"}}));
}

TEST(CheckMatcher, IsEmptyWhenTheExactInvoiceHasNoNumber) {
    EXPECT_EQ("", Match("60", {{"1", "40"}, {"", "60"}, {"2", "60"}}));
}

TEST(CheckMatcher, CountsCreditsAsNegativeBalances) {
    // -10.00 comes out as -999 cents.
    EXPECT_EQ("1, 2", Match("90.01", {{"1", "100"}, {"2", "-10"}}));
}

TEST(CheckMatcher, WrapsTheSumAroundAsThirtyTwoBitsDo) {
    // 2,000,000,000 + 2,000,000,000 + 294,967,400 cents are 2^32 + 104.
    EXPECT_EQ("1, 2, 3", Match("1.04", {{"1", "20000000"}, {"2", "20000000"}, {"3", "2949674"}}));
}

TEST(CheckMatcher, MatchesNoAmountThatDoesNotFit) {
    EXPECT_EQ("", Match("30000000", {{"1", "30000000"}}));
    EXPECT_EQ("", Match("1e30", {{"1", "1e30"}}));
}

}  // namespace
}  // namespace paylodge
