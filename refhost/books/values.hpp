// The forms in which values stand in requests and in the company file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace paylodge::refhost {

// Amounts are counted in whole cents. "12", "12.5" and "-12.50" are amounts of up to 13 digits before the point.
[[nodiscard]] std::optional<std::int64_t> ParseCents(std::string_view text) noexcept;
[[nodiscard]] std::string FormatCents(std::int64_t cents);

// YYYY-MM-DD, a day of the calendar.
[[nodiscard]] bool IsDate(std::string_view text) noexcept;
// A date, or a date and time YYYY-MM-DDTHH:MM:SS.
[[nodiscard]] bool IsDateTime(std::string_view text) noexcept;
// A whole number from 1 to 999999999.
[[nodiscard]] std::optional<std::uint32_t> ParseCount(std::string_view text) noexcept;

// Names differ in more than the case of the letters A to Z, or they are the same.
[[nodiscard]] std::string Folded(std::string_view name);
[[nodiscard]] bool IsSameName(std::string_view left, std::string_view right) noexcept;

// Without blanks, tabs and line ends around it.
[[nodiscard]] std::string_view Trimmed(std::string_view text) noexcept;

}  // namespace paylodge::refhost
