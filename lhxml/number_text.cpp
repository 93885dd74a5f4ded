#include "lhxml/number_text.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace paylodge {
namespace {

// Of a number that no Number holds, without its sign: whether it is too close to 0 rather than too large.
[[nodiscard]] bool IsTiny(std::string_view digits) noexcept {
    const size_t exponent = digits.find_first_of("eE");
    return exponent != std::string_view::npos ? digits.substr(exponent + 1).starts_with('-')
                                              : digits.find_first_of("123456789") > digits.find('.');
}

}  // namespace

bool ParseDouble(const std::string& text, double& number) {
    errno = 0;
    char* end = nullptr;
    number = std::strtod(text.c_str(), &end);
    return errno == 0 && !text.empty() && end == text.c_str() + text.size();
}

void FormatAmount(double number, std::string& text, int decimals) {
    std::array<char, 256> buffer{};
    // A longer number is cut, never overrun.
    std::snprintf(buffer.data(), buffer.size(), decimals == 2 ? "%.2f" : "%.5f", number);
    text = buffer.data();
}

template <class Number>
Number LeadingDecimal(std::string_view text) noexcept {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    const bool is_negative = text.starts_with('-');
    if (is_negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    if (text.empty() || std::string_view("0123456789.").find(text.front()) == std::string_view::npos) {
        return 0;
    }
    Number number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec == std::errc::result_out_of_range) {
        number = IsTiny(text.substr(0, static_cast<size_t>(result.ptr - text.data())))
                     ? Number{0}
                     : std::numeric_limits<Number>::infinity();
    }
    return is_negative ? -number : number;
}
template double LeadingDecimal<double>(std::string_view text) noexcept;
template float LeadingDecimal<float>(std::string_view text) noexcept;

std::optional<std::string> AmountWithTwoDecimals(const std::string& text) {
    constexpr size_t kTooLong = 30;
    if (text.size() >= kTooLong) {
        return std::nullopt;
    }
    // All digits of the largest number, a sign, the point and two decimals.
    std::array<char, std::numeric_limits<double>::max_exponent10 + 5> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), LeadingDecimal<double>(text),
                                      std::chars_format::fixed, 2);
    return std::string(buffer.data(), result.ptr);
}

}  // namespace paylodge
