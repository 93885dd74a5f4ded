// Numbers as the texts of requests and responses have them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace paylodge {

// The decimal number that a text begins with, after white space; 0 when it begins with none, infinite when the number
// is too large. Unlike the C library's, it knows no hexadecimal numbers and no words, and the host's locale does not
// change it.
template <class Number>
[[nodiscard]] Number LeadingDecimal(std::string_view text) noexcept;
extern template double LeadingDecimal<double>(std::string_view text) noexcept;
extern template float LeadingDecimal<float>(std::string_view text) noexcept;

// The same, and whether the text is a number: false when it is empty, out of range, or goes on after the number.
[[nodiscard]] bool ParseDouble(const std::string& text, double& number);

// The number with all its digits, and two decimals when `decimals` is 2, five for any other value.
void FormatAmount(double number, std::string& text, int decimals);

// The amount of a request: the decimal number that the text begins with (0 without one) with two decimals. Nothing for
// a text of 30 characters or more.
[[nodiscard]] std::optional<std::string> AmountWithTwoDecimals(const std::string& text);

}  // namespace paylodge
