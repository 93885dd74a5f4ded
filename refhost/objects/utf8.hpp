// Conversions between the platform's wide strings and the host's own UTF-8.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace paylodge::refhost {

// Half a surrogate pair becomes the replacement character.
[[nodiscard]] std::string Utf8FromWide(std::wstring_view text);
[[nodiscard]] std::wstring WideFromUtf8(std::string_view text);
// Nothing when the bytes are not UTF-8.
[[nodiscard]] std::optional<std::wstring> WideFromUntrustedUtf8(std::string_view bytes);

}  // namespace paylodge::refhost
