#include "refhost/oskerin/tlv.hpp"

#include <algorithm>
#include <charconv>

#include "refhost/oskerin/json.hpp"

namespace paylodge::refhost {
namespace {

constexpr int kDeepestNesting = 8;
constexpr unsigned kConstructed = 0x20;
constexpr unsigned kMoreTagBytes = 0x1F;

[[nodiscard]] constexpr bool IsHexadecimal(char character) noexcept {
    return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'F');
}

[[nodiscard]] std::string ToUpper(std::string_view text) {
    std::string upper(text);
    std::ranges::transform(upper, upper.begin(), [](char character) {
        return character >= 'a' && character <= 'f' ? static_cast<char>(character - 'a' + 'A') : character;
    });
    return upper;
}

// Takes whole bytes off the front of hexadecimal text that has been checked.
class ByteReader {
  public:
    explicit ByteReader(std::string_view text) noexcept : text_(text) {}

    [[nodiscard]] bool IsAtEnd() const noexcept { return text_.empty(); }

    [[nodiscard]] std::optional<std::string_view> TakeText(size_t bytes) noexcept {
        if (text_.size() / 2 < bytes) {
            return std::nullopt;
        }
        const std::string_view taken = text_.substr(0, bytes * 2);
        text_.remove_prefix(taken.size());
        return taken;
    }

    [[nodiscard]] std::optional<unsigned> TakeByte() noexcept {
        const auto text = TakeText(1);
        unsigned value = 0;
        if (text) {
            std::from_chars(text->data(), text->data() + text->size(), value, 16);
        }
        return text ? std::optional(value) : std::nullopt;
    }

  private:
    std::string_view text_;
};

[[nodiscard]] std::string TwoDigits(unsigned byte) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    return {kDigits[(byte >> 4U) & 0xFU], kDigits[byte & 0xFU]};
}

// A tag of one byte, or of more when the first one says so.
[[nodiscard]] std::optional<std::string> TakeTag(ByteReader& bytes, bool& is_constructed) {
    auto byte = bytes.TakeByte();
    if (!byte) {
        return std::nullopt;
    }
    is_constructed = (*byte & kConstructed) != 0;
    std::string tag = TwoDigits(*byte);
    if ((*byte & kMoreTagBytes) == kMoreTagBytes) {
        do {
            byte = bytes.TakeByte();
            if (!byte) {
                return std::nullopt;
            }
            tag += TwoDigits(*byte);
        } while ((*byte & 0x80U) != 0);
    }
    return tag;
}

// A length of one byte, or of one or two more bytes when the first one says so. A length that is left open (80) stands
// in no card data.
[[nodiscard]] std::optional<size_t> TakeLength(ByteReader& bytes) {
    const auto first = bytes.TakeByte();
    if (!first || *first < 0x80) {
        return first;
    }
    if (*first < 0x81 || *first > 0x82) {
        return std::nullopt;
    }
    size_t length = 0;
    for (unsigned left = *first & 0x7FU; left > 0; --left) {
        const auto byte = bytes.TakeByte();
        if (!byte) {
            return std::nullopt;
        }
        length = length * 256 + *byte;
    }
    return length;
}

[[nodiscard]] bool DecodeItems(std::string_view text, int depth, std::vector<TlvItem>& items) {
    ByteReader bytes(text);
    while (!bytes.IsAtEnd()) {
        bool is_constructed = false;
        const auto tag = TakeTag(bytes, is_constructed);
        const auto length = tag ? TakeLength(bytes) : std::nullopt;
        const auto value = length ? bytes.TakeText(*length) : std::nullopt;
        if (!value) {
            return false;
        }
        items.push_back({*tag, std::string(*value)});
        if (is_constructed && (depth == kDeepestNesting || !DecodeItems(*value, depth + 1, items))) {
            return false;
        }
    }
    return true;
}

[[nodiscard]] std::vector<std::string> SplitTags(std::string_view tags) {
    std::vector<std::string> result(1);
    for (const char character : tags) {
        if (character != ',' && character != ' ') {
            result.back() += character;
        } else if (!result.back().empty()) {
            result.emplace_back();
        }
    }
    std::erase(result, std::string());
    return result;
}

}  // namespace

std::optional<std::vector<TlvItem>> DecodeTlv(std::string_view hexadecimal) {
    const std::string text = ToUpper(hexadecimal);
    std::vector<TlvItem> items;
    if (text.size() % 2 != 0 || !std::ranges::all_of(text, IsHexadecimal) || !DecodeItems(text, 1, items)) {
        return std::nullopt;
    }
    return items;
}

std::string EncodeTlv(const std::vector<TlvItem>& items) {
    std::string text;
    for (const TlvItem& item : items) {
        const auto length = static_cast<unsigned>(item.value.size() / 2);
        text += item.tag;
        if (length > 0x7F) {
            text += length > 0xFF ? "82" + TwoDigits(length >> 8U) : "81";
        }
        text += TwoDigits(length) + item.value;
    }
    return text;
}

std::string DescribeTlv(std::string_view hexadecimal, std::string_view tags) {
    const auto items = DecodeTlv(hexadecimal);
    if (!items) {
        return JsonObject().Add("error", "the data is not a sequence of tags, lengths and values").Text();
    }
    const std::vector<std::string> wanted = SplitTags(ToUpper(tags));
    JsonObject object;
    for (const TlvItem& item : *items) {
        if (wanted.empty() || std::ranges::find(wanted, item.tag) != wanted.end()) {
            object.Add(item.tag, item.value);
        }
    }
    return object.Text();
}

}  // namespace paylodge::refhost
