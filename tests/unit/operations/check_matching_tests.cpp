#include "operations/check_matching.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
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

TEST(CheckMatcher, ReturnsAllInvoicesWhenTheyComeToTheAmount) {
    EXPECT_EQ("1001, 1002", Match("100.00", kFortyAndSixty));
}

TEST(CheckMatcher, ReturnsTheOneInvoiceWithThisBalance) {
    EXPECT_EQ("1002", Match("60.00", kFortyAndSixty));
    EXPECT_EQ("1001", Match("40", kFortyAndSixty));
}

TEST(CheckMatcher, ReturnsTheFirstOfEqualBalancesAndIsDecidedThen) {
    CheckMatcher matcher("60.00");
    EXPECT_FALSE(matcher.IsDecided());
    matcher.AddInvoice("7", "60.00");
    EXPECT_TRUE(matcher.IsDecided());
    EXPECT_EQ("7", matcher.Result());
    EXPECT_EQ("7", Match("60.00", {{"7", "60.00"}, {"8", "60.00"}}));
}

TEST(CheckMatcher, IsNotChangedByInvoicesThatItIsShownAfterItsDecision) {
    CheckMatcher matcher("60.00");
    matcher.AddInvoice("7", "60.00");
    matcher.AddInvoice("8", "60.00");
    EXPECT_EQ("7", matcher.Result());
    CheckMatcher nothing("0");
    nothing.AddInvoice("8", "0.00");
    EXPECT_EQ("", nothing.Result());
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

TEST(CheckMatcher, MatchesOneCentWithOneCent) {
    EXPECT_EQ("1", Match("0.01", {{"1", "0.01"}}));
    EXPECT_EQ("1", Match("0.01", {{"1", "0.01"}, {"2", "0.01"}}));
    EXPECT_EQ("", Match("0.01", {{"1", "0.02"}}));
    EXPECT_EQ("2", Match("0.01", {{"1", "0.00"}, {"2", "0.01"}}));
    EXPECT_EQ("1, 2", Match("0.02", {{"1", "0.01"}, {"2", "0.01"}}));
}

TEST(CheckMatcher, AddsBalancesOfNothingToTheList) {
    EXPECT_EQ("1, 2, 3", Match("1", {{"1", "0"}, {"2", "0.40"}, {"3", "0.60"}}));
    EXPECT_EQ("2", Match("1", {{"1", "abc"}, {"2", "1.00000001"}, {"3", "9"}}));
}

// What the matching is, said once more and as plainly as it can be.
[[nodiscard]] std::int32_t PlainCents(const std::string& text) {
    float number = 0;
    static_cast<void>(std::sscanf(text.c_str(), "%f", &number));
    return static_cast<std::int32_t>(static_cast<double>(number) * 100.0 + 0.5);
}
[[nodiscard]] std::string PlainMatch(const std::string& check_amount, const std::vector<Invoice>& invoices) {
    const std::int32_t wanted = PlainCents(check_amount);
    if (wanted < 1) {
        return "";
    }
    std::string list;
    bool is_first = true;
    std::int64_t sum = 0;
    for (const Invoice& invoice : invoices) {
        if (!invoice.reference.empty()) {
            list = is_first ? invoice.reference : list + ", " + invoice.reference;
            is_first = false;
        }
        const std::int32_t cents = PlainCents(invoice.balance);
        if (cents == wanted) {
            return invoice.reference;
        }
        sum += cents;
    }
    return sum == wanted ? list : "";
}

TEST(CheckMatcher, AgreesWithAPlainRestatementOnRandomInvoices) {
    for (unsigned seed = 1; seed <= 20'000; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&random](int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random); };
        // Small amounts, so that they often match; a few that are odd.
        const auto amount = [&below] {
            static constexpr const char* kOdd[] = {"",      "abc",   " 1",  "1e0", "-0.50",
                                                   "1.005", "0.004", "12x", "1.",  "+2"};
            if (below(10) == 0) {
                return std::string(kOdd[below(10)]);
            }
            const std::string cents = std::to_string(below(100));
            return std::to_string(below(3)) + '.' + (cents.size() == 1 ? "0" : "") + (below(2) == 0 ? cents : "50");
        };
        std::vector<Invoice> invoices;
        for (int left = below(5); left > 0; --left) {
            invoices.push_back({below(4) == 0 ? "" : std::to_string(below(100)), amount()});
        }
        std::string check = amount();
        if (below(2) == 0) {
            // All of them together.
            std::int32_t sum = 0;
            for (const Invoice& invoice : invoices) {
                sum += PlainCents(invoice.balance);
            }
            check = std::to_string(sum / 100) + '.' + (sum % 100 < 10 ? "0" : "") + std::to_string(sum % 100);
        }
        ASSERT_EQ(PlainMatch(check, invoices), Match(check, invoices)) << "seed " << seed << ", check " << check;
    }
}

TEST(CentsFromText, AgreesWithThePlainArithmeticOnEveryCent) {
    for (int cents = 0; cents < 300'000; cents += 7) {
        const std::string text =
            std::to_string(cents / 100) + '.' + std::to_string(cents % 100 / 10) + std::to_string(cents % 10);
        ASSERT_EQ(PlainCents(text), CentsFromText(text)) << text;
    }
}

}  // namespace
}  // namespace paylodge
