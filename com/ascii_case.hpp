// Comparison without regard to the letter case of the letters A to Z.
#pragma once

#include <algorithm>
#include <string_view>

namespace paylodge {

[[nodiscard]] constexpr bool EqualsIgnoringCase(std::string_view left, std::string_view right) noexcept {
    constexpr auto to_lower = [](char character) {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
    };
    return std::ranges::equal(left, right, {}, to_lower, to_lower);
}

}  // namespace paylodge
