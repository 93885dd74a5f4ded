// Amounts against the C library, which differs in what it reads beside decimal numbers.
#include <array>
#include <cerrno>
#include <cmath>
#include <limits>

#include "lhxml/number_text.hpp"
#include "operations/check_matching.hpp"
#include "tests/fuzz/pieces.hpp"

namespace paylodge {
namespace {

using fuzz::ExpectSame;
using fuzz::ExpectTrue;

template <class Number>
struct Read {
    Number number;
    std::size_t length;
    bool is_in_range;
};

// What is no decimal number to us although it is one to the C library: hexadecimal digits and words. Of those, "0x10"
// begins with the number 0.
[[nodiscard]] std::string WithoutOtherNumbers(const std::string& text) {
    const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
    if (start == std::string::npos) {
        return text;
    }
    const std::size_t digits = start + (text[start] == '-' || text[start] == '+' ? 1 : 0);
    if (digits < text.size() && std::string_view("iInN").find(text[digits]) != std::string_view::npos) {
        return {};
    }
    const bool is_hexadecimal = text.size() > digits + 1 && text[digits] == '0' && (text[digits + 1] | 0x20) == 'x';
    return is_hexadecimal ? text.substr(0, digits + 1) : text;
}

template <class Number>
[[nodiscard]] Read<Number> ReadWithLibrary(const std::string& text) {
    const std::string decimal = WithoutOtherNumbers(text);
    char* end = nullptr;
    errno = 0;
    Number number = 0;
    if constexpr (sizeof(Number) == sizeof(float)) {
        number = std::strtof(decimal.c_str(), &end);
    } else {
        number = std::strtod(decimal.c_str(), &end);
    }
    // A number that is smaller than the smallest one with all its digits is in range; libraries do not agree on that.
    const bool is_in_range = errno == 0 || (number != 0 && std::isfinite(number));
    return {number, static_cast<std::size_t>(end - decimal.c_str()), is_in_range};
}

template <class Number>
[[nodiscard]] std::string Shown(Number number) {
    std::array<char, 64> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "%a", static_cast<double>(number));
    return buffer.data();
}

[[nodiscard]] std::string Formatted(double number, int decimals) {
    std::array<char, 512> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "%.*f", decimals == 2 ? 2 : 5, number);
    return buffer.data();
}

// The same without a word of the code under test: a float, widened, in cents, half a cent added, cut off.
[[nodiscard]] std::int32_t Cents(const std::string& text) {
    const double cents = static_cast<double>(ReadWithLibrary<float>(text).number) * 100.0 + 0.5;
    const bool fits = cents > -2147483649.0 && cents < 2147483648.0;
    return fits ? static_cast<std::int32_t>(cents) : std::numeric_limits<std::int32_t>::min();
}

void Try(const std::string& text) {
    const auto expected = ReadWithLibrary<double>(text);
    double number = 0;
    const bool is_number = ParseDouble(text, number);
    ExpectSame(Shown(expected.number), Shown(number), "the number");
    ExpectTrue(is_number == (expected.length > 0 && expected.length == text.size() && expected.is_in_range),
               "whether it is a number");
    ExpectSame(Shown(ReadWithLibrary<float>(text).number), Shown(LeadingDecimal<float>(text)), "the float");
    for (const int decimals : {2, 3}) {
        std::string formatted;
        FormatAmount(number, formatted, decimals);
        ExpectSame(Formatted(number, decimals), formatted, "the formatted number");
    }
    const auto amount = AmountWithTwoDecimals(text);
    ExpectTrue(amount.has_value() == (text.size() < 30), "whether there is an amount");
    ExpectSame(amount ? Formatted(expected.number, 2) : std::string(), amount.value_or(""), "the amount");
    ExpectTrue(Cents(text) == CentsFromText(text), "the cents");
}

}  // namespace
}  // namespace paylodge

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    paylodge::Try(std::string(paylodge::fuzz::AsText(data, size)));
    return 0;
}
