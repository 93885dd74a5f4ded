// Numbers as the texts of requests and responses have them.
#pragma once

#include <string>

namespace paylodge {

// Reads a number as the C library's strtod does, leading white space included. *number is what the leading numeric part
// says (0 without one), also when the result is false: the text is empty, out of range, or goes on after the number.
[[nodiscard]] bool ParseDouble(const std::string& text, double& number);

// The number with two decimals when `decimals` is 2 and with five for any other value; at most 255 characters.
void FormatAmount(double number, std::string& text, int decimals);

}  // namespace paylodge
