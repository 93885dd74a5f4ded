// The forms in which values stand in requests and in the company file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace paylodge::refhost {

// The largest amount of a line or a transaction, and the largest balance, in cents.
inline constexpr std::int64_t kLargestAmount = 9'999'999'999'999;
inline constexpr std::int64_t kLargestBalance = 999'999'999'999'999;

// Amounts are counted in whole cents: "12", "12.5" and "-12.50". One of more digits than any limit comes back as a
// number beyond all limits.
[[nodiscard]] std::optional<std::int64_t> ParseCents(std::string_view text) noexcept;
[[nodiscard]] std::string FormatCents(std::int64_t cents);

// YYYY-MM-DD, a day of the calendar.
[[nodiscard]] bool IsDate(std::string_view text) noexcept;
// A date, or a date and time YYYY-MM-DDTHH:MM:SS.
[[nodiscard]] bool IsDateTime(std::string_view text) noexcept;
// A whole number from 1 to 999999999.
[[nodiscard]] std::optional<std::uint32_t> ParseCount(std::string_view text) noexcept;

// Without blanks, tabs and line ends around it.
[[nodiscard]] std::string_view Trimmed(std::string_view text) noexcept;

}  // namespace paylodge::refhost
