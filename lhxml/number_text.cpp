#include "lhxml/number_text.hpp"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace paylodge {

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

std::optional<std::string> AmountWithTwoDecimals(const std::string& text) {
    constexpr size_t kTooLong = 30;
    if (text.size() >= kTooLong) {
        return std::nullopt;
    }
    double number = 0;
    static_cast<void>(ParseDouble(text, number));
    std::string amount;
    FormatAmount(number, amount, 2);
    return amount;
}

}  // namespace paylodge
