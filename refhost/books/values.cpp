#include "refhost/books/values.hpp"

#include <algorithm>
#include <charconv>
#include <chrono>

namespace paylodge::refhost {
namespace {

constexpr size_t kMostWholeDigits = 15;
constexpr std::int64_t kBeyondEveryLimit = 1'000'000'000'000'000'000;
constexpr size_t kMostCountDigits = 9;

[[nodiscard]] bool IsDigits(std::string_view text) noexcept {
    return !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

template <class Number>
[[nodiscard]] Number NumberFromDigits(std::string_view digits) noexcept {
    Number number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return number;
}

// HH:MM:SS
[[nodiscard]] bool IsTime(std::string_view text) noexcept {
    return text.size() == 8 && text[2] == ':' && text[5] == ':' && IsDigits(text.substr(0, 2)) &&
           IsDigits(text.substr(3, 2)) && IsDigits(text.substr(6, 2)) && text.substr(0, 2) < "24" &&
           text.substr(3, 2) < "60" && text.substr(6, 2) < "60";
}

}  // namespace

std::optional<std::int64_t> ParseCents(std::string_view text) noexcept {
    const bool is_negative = text.starts_with('-');
    text.remove_prefix(is_negative ? 1 : 0);
    const size_t point = text.find('.');
    std::string_view whole = text.substr(0, point);
    if (!IsDigits(whole)) {
        return std::nullopt;
    }
    whole.remove_prefix(std::min(whole.find_first_not_of('0'), whole.size() - 1));
    std::int64_t cents =
        whole.size() > kMostWholeDigits ? kBeyondEveryLimit : NumberFromDigits<std::int64_t>(whole) * 100;
    if (point != std::string_view::npos) {
        const std::string_view fraction = text.substr(point + 1);
        if (!IsDigits(fraction) || fraction.size() > 2) {
            return std::nullopt;
        }
        cents += NumberFromDigits<std::int64_t>(fraction) * (fraction.size() == 1 ? 10 : 1);
    }
    return is_negative ? -cents : cents;
}

std::string FormatCents(std::int64_t cents) {
    const std::int64_t size = cents < 0 ? -cents : cents;
    std::string fraction = std::to_string(size % 100);
    fraction.insert(0, 2 - fraction.size(), '0');
    return (cents < 0 ? "-" : "") + std::to_string(size / 100) + '.' + fraction;
}

bool IsDate(std::string_view text) noexcept {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-' || !IsDigits(text.substr(0, 4)) ||
        !IsDigits(text.substr(5, 2)) || !IsDigits(text.substr(8, 2))) {
        return false;
    }
    return std::chrono::year_month_day(std::chrono::year(NumberFromDigits<int>(text.substr(0, 4))),
                                       std::chrono::month(NumberFromDigits<unsigned>(text.substr(5, 2))),
                                       std::chrono::day(NumberFromDigits<unsigned>(text.substr(8, 2))))
        .ok();
}

bool IsDateTime(std::string_view text) noexcept {
    if (text.size() == 10) {
        return IsDate(text);
    }
    return text.size() == 19 && text[10] == 'T' && IsDate(text.substr(0, 10)) && IsTime(text.substr(11));
}

std::optional<std::uint32_t> ParseCount(std::string_view text) noexcept {
    if (!IsDigits(text) || text.size() > kMostCountDigits) {
        return std::nullopt;
    }
    const auto count = NumberFromDigits<std::uint32_t>(text);
    return count == 0 ? std::nullopt : std::optional(count);
}

std::string_view Trimmed(std::string_view text) noexcept {
    constexpr std::string_view kSpace = " \t\r\n";
    const size_t first = text.find_first_not_of(kSpace);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

}  // namespace paylodge::refhost
