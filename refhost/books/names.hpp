// Names as they count: in one canonical form of Unicode and without regard to letter case.
#pragma once

#include <string>
#include <string_view>

namespace paylodge::refhost {

// Two names are the same when they are folded to the same text. Text that is not UTF-8 is folded to itself.
[[nodiscard]] std::string Folded(std::string_view name);
[[nodiscard]] bool IsSameName(std::string_view left, std::string_view right);

// Whether the text holds a character that no name may have: a control character, or one that is no character at all.
[[nodiscard]] bool HasControlCharacter(std::string_view text) noexcept;

// How many characters UTF-8 text has.
[[nodiscard]] size_t CountCharacters(std::string_view text) noexcept;

}  // namespace paylodge::refhost
