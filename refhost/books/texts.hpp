// Texts that come out of a file which anything may have happened to.
#pragma once

#include <string>
#include <string_view>

namespace paylodge::refhost {

// Whether the text is UTF-8 and holds nothing that XML has no place for: of the control characters it may have tabs and
// line ends.
[[nodiscard]] bool IsXmlText(std::string_view text) noexcept;

// The text for a message: UTF-8 without control characters, with a question mark in the place of each such byte.
[[nodiscard]] std::string OneLine(std::string_view text);

}  // namespace paylodge::refhost
