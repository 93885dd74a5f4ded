// Numbers beside what the C library makes of them, on a machine where that is exact.

#include <gtest/gtest.h>

#include <bit>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <string_view>

#include "lhxml/number_text.hpp"

namespace paylodge {
namespace {

template <class... Arguments>
[[nodiscard]] std::string Printed(const char* format, Arguments... arguments) {
    std::string text(static_cast<size_t>(std::snprintf(nullptr, 0, format, arguments...)), '\0');
    std::snprintf(text.data(), text.size() + 1, format, arguments...);
    return text;
}

// Bit by bit, so that the sign of 0 counts.
void ExpectReadAsTheCLibraryDoes(const std::string& text) {
    double number = -77;
    static_cast<void>(ParseDouble(text, number));
    ASSERT_EQ(std::bit_cast<std::uint64_t>(std::strtod(text.c_str(), nullptr)), std::bit_cast<std::uint64_t>(number))
        << text;
    ASSERT_EQ(std::bit_cast<std::uint32_t>(std::strtof(text.c_str(), nullptr)),
              std::bit_cast<std::uint32_t>(LeadingDecimal<float>(text)))
        << text;
}

void ExpectWrittenAsTheCLibraryDoes(double number) {
    std::string text;
    FormatAmount(number, text, 2);
    ASSERT_EQ(Printed("%.2f", number), text) << Printed("%a", number);
    FormatAmount(number, text, 5);
    ASSERT_EQ(Printed("%.5f", number), text) << Printed("%a", number);
}

// With all digits: an extended number has enough bits for the middle of two others.
[[nodiscard]] std::string Middle(double low, double high) {
    return Printed("%.1100Le", (static_cast<long double>(low) + static_cast<long double>(high)) / 2);
}

class NumberComparison : public ::testing::Test {
  protected:
    [[nodiscard]] std::string Digits(size_t count) {
        std::string digits;
        for (size_t index = 0; index < count; ++index) {
            digits.push_back(static_cast<char>('0' + random() % 10));
        }
        return digits;
    }
    // Of any size, subnormal ones among them.
    [[nodiscard]] double AnyNumber() {
        for (;;) {
            if (const double number = std::bit_cast<double>(random()); std::isfinite(number)) {
                return number;
            }
        }
    }

    std::mt19937_64 random{20261122};
};

TEST_F(NumberComparison, ReadsAmounts) {
    for (int run = 0; run < 3'000; ++run) {
        ExpectReadAsTheCLibraryDoes(Digits(random() % 9) + "." + Digits(1 + random() % 4));
    }
}

TEST_F(NumberComparison, ReadsWhatStandsForANumberOfAnySize) {
    for (int run = 0; run < 600; ++run) {
        const double number = AnyNumber();
        for (const char* format : {"%.17g", "%.16g", "%.9g", "%.3g"}) {
            ExpectReadAsTheCLibraryDoes(Printed(format, number));
        }
        ExpectReadAsTheCLibraryDoes(Printed(
            "%.9g", static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(random() % 0x7f800000)))));
    }
}

TEST_F(NumberComparison, ReadsLongDigitsWithAnyExponent) {
    for (int run = 0; run < 300; ++run) {
        const std::string exponent = "e" + std::to_string(static_cast<int>(random() % 800) - 400);
        ExpectReadAsTheCLibraryDoes(Digits(random() % 900) + "." + Digits(1 + random() % 900) + exponent);
        ExpectReadAsTheCLibraryDoes(Digits(1 + random() % 40) + exponent);
    }
    ExpectReadAsTheCLibraryDoes(Digits(1'000'000) + "e-1000000");
    ExpectReadAsTheCLibraryDoes("0." + std::string(1'000'000, '0') + Digits(1'000) + "e1000010");
}

TEST_F(NumberComparison, ReadsTheMiddleOfTwoNumbersAndWhatIsNextToIt) {
    const auto expect_around_middle = [](double low, double high) {
        const std::string middle = Middle(low, high);
        const size_t exponent = middle.find('e');
        for (const char* more : {"", "0", "1", "00000000000000000001"}) {
            ExpectReadAsTheCLibraryDoes(middle.substr(0, exponent) + more + middle.substr(exponent));
        }
        std::string less = middle.substr(0, exponent);
        for (size_t index = less.size(); index-- > 0;) {
            if (less[index] == '.') {
                continue;
            }
            if (less[index] != '0') {
                --less[index];
                break;
            }
            less[index] = '9';
        }
        ExpectReadAsTheCLibraryDoes(less + middle.substr(exponent));
    };
    for (int run = 0; run < 60; ++run) {
        const double number = std::abs(AnyNumber());
        expect_around_middle(number, std::nextafter(number, std::numeric_limits<double>::infinity()));
        const auto single = std::bit_cast<float>(static_cast<std::uint32_t>(random() % 0x7f7fffff));
        expect_around_middle(static_cast<double>(single), static_cast<double>(std::nextafterf(single, 1e38F)));
    }
}

TEST_F(NumberComparison, ReadsTheEndsOfTheRanges) {
    for (const double number :
         {std::numeric_limits<double>::max(), std::numeric_limits<double>::min(),
          std::numeric_limits<double>::denorm_min(), static_cast<double>(std::numeric_limits<float>::max()),
          static_cast<double>(std::numeric_limits<float>::min()),
          static_cast<double>(std::numeric_limits<float>::denorm_min())}) {
        for (const double factor : {0.25, 0.5, 0.75, 0.999999, 1.0, 1.00000001, 1.5}) {
            for (const char* format : {"%.1100Le", "%.17Lg", "%.9Lg", "-%.20Lg"}) {
                ExpectReadAsTheCLibraryDoes(
                    Printed(format, static_cast<long double>(number) * static_cast<long double>(factor)));
            }
        }
    }
    for (int exponent = -345; exponent <= 310; ++exponent) {
        for (const char* digits : {"1", "9", "17976931348623157", "4.9406564584124654", "340282356779733661637"}) {
            ExpectReadAsTheCLibraryDoes(digits + ("e" + std::to_string(exponent)));
        }
    }
}

TEST_F(NumberComparison, ReadsAllDigitsOfSubnormalNumbers) {
    for (int run = 0; run < 60; ++run) {
        const auto number = std::bit_cast<double>(random() >> 12 >> random() % 52);
        ExpectReadAsTheCLibraryDoes(Printed("%.1074f", number));
        ExpectReadAsTheCLibraryDoes(Printed("%.800e", number));
    }
}

TEST_F(NumberComparison, WritesNumbersOfAnySize) {
    for (int run = 0; run < 3'000; ++run) {
        ExpectWrittenAsTheCLibraryDoes(AnyNumber());
    }
    for (const double number : {0.0, -0.0, std::numeric_limits<double>::max(), std::numeric_limits<double>::lowest(),
                                std::numeric_limits<double>::min(), std::numeric_limits<double>::denorm_min(),
                                -std::numeric_limits<double>::denorm_min(), 1e308,
                                std::numeric_limits<double>::epsilon(), std::numeric_limits<double>::infinity(),
                                -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        ExpectWrittenAsTheCLibraryDoes(number);
    }
}

TEST_F(NumberComparison, WritesAmounts) {
    for (int run = 0; run < 8'000; ++run) {
        ExpectWrittenAsTheCLibraryDoes(static_cast<double>(static_cast<std::int64_t>(random())) / 1e12);
        ExpectWrittenAsTheCLibraryDoes(static_cast<double>(random() % 100'000'000) / 1000);
    }
}

// Exactly in the middle of two texts: a number of eighths has at most three decimals, one of 64ths six.
TEST_F(NumberComparison, WritesTheMiddleOfTwoTexts) {
    for (int run = 0; run < 3'000; ++run) {
        ExpectWrittenAsTheCLibraryDoes(static_cast<double>(static_cast<std::int64_t>(random() >> 20)) / 8);
        ExpectWrittenAsTheCLibraryDoes(-static_cast<double>(random() % 100'000) / 64);
    }
    for (int eighths = -800; eighths <= 800; ++eighths) {
        ExpectWrittenAsTheCLibraryDoes(eighths / 8.0);
        ExpectWrittenAsTheCLibraryDoes(eighths / 64.0);
        ExpectWrittenAsTheCLibraryDoes(std::nextafter(eighths / 8.0, 1e9));
        ExpectWrittenAsTheCLibraryDoes(std::nextafter(eighths / 8.0, -1e9));
    }
}

// Text that is no number, or goes on behind it: what is read is as long as the C library finds it, which knows words
// and hexadecimal numbers besides.
TEST_F(NumberComparison, EndsWhereTheNumberEnds) {
    constexpr std::string_view kCharacters = "0123456789..--++eE  5";
    for (int run = 0; run < 60'000; ++run) {
        std::string text;
        for (size_t length = random() % 10; length > 0; --length) {
            text.push_back(kCharacters[random() % kCharacters.size()]);
        }
        char* end = nullptr;
        errno = 0;
        const double expected = std::strtod(text.c_str(), &end);
        const bool is_expected = !text.empty() && end == text.c_str() + text.size() && errno == 0;
        double number = -77;
        ASSERT_EQ(is_expected, ParseDouble(text, number)) << '"' << text << '"';
        ASSERT_EQ(std::bit_cast<std::uint64_t>(expected), std::bit_cast<std::uint64_t>(number)) << '"' << text << '"';
    }
}

}  // namespace
}  // namespace paylodge
