// Comparison without regard to the letter case of the letters A to Z.
#pragma once

#include <algorithm>
#include <string_view>
#include <type_traits>

namespace paylodge {

template <class Char>
[[nodiscard]] constexpr bool EqualsIgnoringAsciiCase(
    std::basic_string_view<Char> left, std::type_identity_t<std::basic_string_view<Char>> right) noexcept {
    constexpr auto to_lower = [](Char character) {
        return character >= Char{'A'} && character <= Char{'Z'} ? static_cast<Char>(character - Char{'A'} + Char{'a'})
                                                                : character;
    };
    return std::ranges::equal(left, right, {}, to_lower, to_lower);
}

}  // namespace paylodge
