// Card data as tags, lengths and values, in hexadecimal text.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace paylodge::refhost {

struct TlvItem {
    std::string tag;    // upper-case hexadecimal
    std::string value;  // upper-case hexadecimal, empty for a value without bytes
};

// The items in order; a constructed item is followed by those inside it. Nothing when the text is not hexadecimal, ends
// within an item, or nests deeper than any card does.
[[nodiscard]] std::optional<std::vector<TlvItem>> DecodeTlv(std::string_view hexadecimal);

[[nodiscard]] std::string EncodeTlv(const std::vector<TlvItem>& items);

// The values of the tags, which commas or blanks separate (all tags when there are none), as a JSON object; with one
// member "error" when the data cannot be decoded.
[[nodiscard]] std::string DescribeTlv(std::string_view hexadecimal, std::string_view tags);

}  // namespace paylodge::refhost
