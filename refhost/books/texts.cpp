#include "refhost/books/texts.hpp"

#include <utf8proc.h>

#include <algorithm>
#include <optional>

namespace paylodge::refhost {
namespace {

struct Character {
    utf8proc_int32_t number;
    size_t size;
};

// Of a text that is not empty; nothing when its first byte begins no character.
[[nodiscard]] std::optional<Character> FirstCharacter(std::string_view text) noexcept {
    Character character{};
    const utf8proc_ssize_t size = ::utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                                     static_cast<utf8proc_ssize_t>(text.size()), &character.number);
    character.size = static_cast<size_t>(size);
    return size > 0 ? std::optional(character) : std::nullopt;
}

[[nodiscard]] constexpr bool IsXmlCharacter(utf8proc_int32_t number) noexcept {
    return number >= 0x20 ? number != 0xFFFE && number != 0xFFFF : number == '\t' || number == '\n' || number == '\r';
}

[[nodiscard]] bool IsPlainAscii(std::string_view text) noexcept {
    return std::ranges::all_of(text, [](char c) { return c >= ' ' && static_cast<unsigned char>(c) < 0x80U; });
}

}  // namespace

bool IsXmlText(std::string_view text) noexcept {
    if (IsPlainAscii(text)) {
        return true;
    }
    while (!text.empty()) {
        const auto first = FirstCharacter(text);
        if (!first || !IsXmlCharacter(first->number)) {
            return false;
        }
        text.remove_prefix(first->size);
    }
    return true;
}

std::string OneLine(std::string_view text) {
    std::string line;
    while (!text.empty()) {
        const auto first = FirstCharacter(text);
        const bool is_shown =
            first && IsXmlCharacter(first->number) && ::utf8proc_category(first->number) != UTF8PROC_CATEGORY_CC;
        line.append(is_shown ? text.substr(0, first->size) : "?");
        text.remove_prefix(first ? first->size : 1);
    }
    return line;
}

}  // namespace paylodge::refhost
