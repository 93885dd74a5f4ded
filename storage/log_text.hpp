// What the diagnostic log says and where it stands.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace paylodge {

// An entry for a failed call, with the name of the function in front where one is given; both texts end at their first
// null. At most 1023 characters, the newline at the end included; a longer entry is cut.
[[nodiscard]] std::string FormatLogEntry(std::optional<std::string_view> function, std::string_view message,
                                         std::uint32_t hresult);

// What the user is shown when an entry could not be written.
[[nodiscard]] std::string FormatLostEntry(std::string_view log_path, std::string_view entry);

// The folder with a backslash at its end, unless it has one or a forward slash.
[[nodiscard]] std::wstring WithTrailingSlash(std::wstring_view folder);

// A folder that ends in a slash, and every folder above it, from the top down. The path is wide: in a double-byte code
// page, the second byte of a character may look like a backslash.
[[nodiscard]] std::vector<std::wstring_view> FoldersOf(std::wstring_view folder);

// Whether a log file of this size makes way for a new one.
[[nodiscard]] constexpr bool IsLogFull(std::int64_t size) noexcept { return size > 50000; }

// The name of a network status code; empty for any other code.
[[nodiscard]] std::string_view NetworkStatusName(std::uint32_t code) noexcept;

}  // namespace paylodge
