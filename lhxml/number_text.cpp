#include "lhxml/number_text.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <limits>
#include <system_error>

namespace paylodge {
namespace {

// The exponent that a number is written with; one beyond all ranges stays so.
[[nodiscard]] int ReadExponent(std::string_view text) noexcept {
    const bool is_negative = text.starts_with('-');
    if (is_negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    int exponent = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), exponent).ec == std::errc::result_out_of_range) {
        exponent = std::numeric_limits<int>::max();
    }
    return is_negative ? -exponent : exponent;
}

// Of a number that no Number holds, without its sign: whether it is too close to 0 rather than too large. The place of
// its first digit and its exponent together decide.
[[nodiscard]] bool IsTiny(std::string_view number) noexcept {
    const size_t mantissa_size = std::min(number.find_first_of("eE"), number.size());
    const std::string_view mantissa = number.substr(0, mantissa_size);
    const auto point = static_cast<std::int64_t>(std::min(mantissa.find('.'), mantissa_size));
    const auto first_digit = static_cast<std::int64_t>(mantissa.find_first_of("123456789"));
    const std::int64_t exponent = mantissa_size == number.size() ? 0 : ReadExponent(number.substr(mantissa_size + 1));
    return point - first_digit + exponent < 0;
}

// The decimal number that a text begins with, and how many characters that takes: none when it begins with none.
template <class Number>
struct Leading {
    Number number = 0;
    size_t length = 0;
    bool is_in_range = true;
};

template <class Number>
[[nodiscard]] Leading<Number> ReadLeading(std::string_view text) noexcept {
    const size_t start = std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
    std::string_view digits = text.substr(start);
    const bool is_negative = digits.starts_with('-');
    if (is_negative || digits.starts_with('+')) {
        digits.remove_prefix(1);
    }
    if (digits.empty() || std::string_view("0123456789.").find(digits.front()) == std::string_view::npos) {
        return {};
    }
    Number number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error == std::errc::invalid_argument) {
        return {};
    }
    const bool is_in_range = error == std::errc();
    if (!is_in_range) {
        number = IsTiny({digits.data(), end}) ? Number{0} : std::numeric_limits<Number>::infinity();
    }
    return {is_negative ? -number : number, static_cast<size_t>(end - text.data()), is_in_range};
}

}  // namespace

bool ParseDouble(const std::string& text, double& number) {
    const auto leading = ReadLeading<double>(text);
    number = leading.number;
    return leading.length > 0 && leading.length == text.size() && leading.is_in_range;
}

void FormatAmount(double number, std::string& text, int decimals) {
    // All digits of the largest number, a sign, the point and the decimals.
    std::array<char, std::numeric_limits<double>::max_exponent10 + 8> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::fixed,
                                      decimals == 2 ? 2 : 5);
    text.assign(buffer.data(), result.ptr);
}

template <class Number>
Number LeadingDecimal(std::string_view text) noexcept {
    return ReadLeading<Number>(text).number;
}
template double LeadingDecimal<double>(std::string_view text) noexcept;
template float LeadingDecimal<float>(std::string_view text) noexcept;

std::optional<std::string> AmountWithTwoDecimals(const std::string& text) {
    constexpr size_t kTooLong = 30;
    if (text.size() >= kTooLong) {
        return std::nullopt;
    }
    double number = 0;
    // What is not a number is 0.
    static_cast<void>(ParseDouble(text, number));
    std::string amount;
    FormatAmount(number, amount, 2);
    return amount;
}

}  // namespace paylodge
