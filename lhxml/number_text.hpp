// Numbers as the texts of requests and responses have them.
#pragma once

#include <optional>
#include <string>

namespace paylodge {

// Reads a number as the C library's strtod does, leading white space included. *number is what the leading numeric part
// says (0 without one), also when the result is false: the text is empty, out of range, or goes on after the number.
[[nodiscard]] bool ParseDouble(const std::string& text, double& number);

// The number with two decimals when `decimals` is 2 and with five for any other value; at most 255 characters.
void FormatAmount(double number, std::string& text, int decimals);

// The amount of a request: the number that the text begins with (0 without one) with two decimals. Nothing for a text
// of 30 characters or more.
[[nodiscard]] std::optional<std::string> AmountWithTwoDecimals(const std::string& text);

}  // namespace paylodge
