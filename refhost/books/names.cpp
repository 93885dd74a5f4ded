#include "refhost/books/names.hpp"

#include <utf8proc.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace paylodge::refhost {
namespace {

struct FreeText {
    void operator()(utf8proc_uint8_t* text) const noexcept { std::free(text); }  // NOLINT: it comes from malloc
};

[[nodiscard]] bool IsAscii(std::string_view text) noexcept {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80U; });
}

[[nodiscard]] constexpr char FoldedLetter(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

[[nodiscard]] std::string FoldedUnicode(std::string_view name) {
    utf8proc_uint8_t* folded = nullptr;
    const auto options = static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE | UTF8PROC_CASEFOLD);
    const utf8proc_ssize_t size = ::utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(name.data()),
                                                 static_cast<utf8proc_ssize_t>(name.size()), &folded, options);
    const std::unique_ptr<utf8proc_uint8_t, FreeText> owner(folded);
    return size < 0 ? std::string(name) : std::string(reinterpret_cast<const char*>(folded), static_cast<size_t>(size));
}

}  // namespace

std::string Folded(std::string_view name) {
    if (!IsAscii(name)) {
        return FoldedUnicode(name);
    }
    std::string folded(name);
    std::ranges::transform(folded, folded.begin(), FoldedLetter);
    return folded;
}

bool IsSameName(std::string_view left, std::string_view right) {
    return left == right || Folded(left) == Folded(right);
}

bool HasControlCharacter(std::string_view text) noexcept {
    while (!text.empty()) {
        utf8proc_int32_t character = 0;
        const utf8proc_ssize_t size = ::utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                                         static_cast<utf8proc_ssize_t>(text.size()), &character);
        if (size <= 0 || ::utf8proc_category(character) == UTF8PROC_CATEGORY_CC ||
            ::utf8proc_category(character) == UTF8PROC_CATEGORY_CN) {
            return true;
        }
        text.remove_prefix(static_cast<size_t>(size));
    }
    return false;
}

size_t CountCharacters(std::string_view text) noexcept {
    // Every byte but the continuation bytes begins a character.
    return static_cast<size_t>(
        std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

}  // namespace paylodge::refhost
