#include "lhxml/xml_builder.hpp"

#include <array>
#include <cassert>
#include <cstring>

namespace paylodge {
namespace {

// The end of a tag that ends its line.
constexpr std::string_view kTagEnd = ">\r\n";
constexpr size_t kIndentation = 4;

[[nodiscard]] constexpr std::string_view EntityFor(char character) noexcept {
    switch (character) {
        case '"':
            return "&quot;";
        case '&':
            return "&amp;";
        case '\'':
            return "&apos;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        default:
            return {};
    }
}

// How many characters each of the 256 takes when it is escaped.
constexpr auto kEscapedSizes = [] {
    std::array<std::uint8_t, 256> sizes{};
    for (size_t code = 0; code < sizes.size(); ++code) {
        const std::string_view entity = EntityFor(static_cast<char>(code));
        sizes[code] = static_cast<std::uint8_t>(entity.empty() ? 1 : entity.size());
    }
    return sizes;
}();

[[nodiscard]] size_t EscapedSize(std::string_view value) noexcept {
    size_t size = 0;
    for (const char character : value) {
        size += kEscapedSizes[static_cast<unsigned char>(character)];
    }
    return size;
}

// Writes into blanks that a text has been given at its end. Values are mostly shorter than 20 characters: what counts
// is how little is done for each piece.
class Writer {
  public:
    // The pieces that follow have exactly this size together.
    Writer(std::string& text, size_t size) : position_(Grow(text, size)) {}

    void Put(char character) noexcept { *position_++ = character; }
    void Put(std::string_view piece) noexcept {
        std::memcpy(position_, piece.data(), piece.size());
        position_ += piece.size();
    }
    void LeaveBlanks(size_t count) noexcept { position_ += count; }
    void PutEscaped(std::string_view value, size_t escaped_size) noexcept {
        if (escaped_size == value.size()) {
            Put(value);
            return;
        }
        for (const char character : value) {
            if (kEscapedSizes[static_cast<unsigned char>(character)] == 1) {
                Put(character);
            } else {
                Put(EntityFor(character));
            }
        }
    }

  private:
    [[nodiscard]] static char* Grow(std::string& text, size_t size) {
        const size_t old_size = text.size();
        text.append(size, ' ');
        return text.data() + old_size;
    }

    char* position_;
};

}  // namespace

void AppendEscaped(std::string& text, std::string_view value) {
    if (value.empty()) {
        return;
    }
    const size_t size = EscapedSize(value);
    Writer(text, size).PutEscaped(value, size);
}

void XMLBuilder::AddProcessingInstruction(std::string_view text) { text_.append("<").append(text).append(kTagEnd); }

void XMLBuilder::OpenElement(std::string_view name, std::span<const std::string_view> attribute_names,
                             std::span<const std::string_view> attribute_values) {
    assert(attribute_names.size() == attribute_values.size());
    text_.append(Indentation(), ' ').append("<").append(name);
    for (size_t index = 0; index < attribute_names.size(); ++index) {
        text_.append(" ").append(attribute_names[index]).append("=\"");
        AppendEscaped(text_, attribute_values[index]);
        text_.append("\"");
    }
    text_.append(kTagEnd);
    ++depth_;
}

void XMLBuilder::AddElement(std::string_view name, std::string_view value) {
    if (value.empty()) {
        return;
    }
    constexpr size_t kMarkup = std::string_view("<></").size() + kTagEnd.size();
    const size_t escaped_size = EscapedSize(value);
    Writer writer(text_, Indentation() + 2 * name.size() + kMarkup + escaped_size);
    writer.LeaveBlanks(Indentation());
    writer.Put('<');
    writer.Put(name);
    writer.Put('>');
    writer.PutEscaped(value, escaped_size);
    writer.Put("</");
    writer.Put(name);
    writer.Put(kTagEnd);
}

void XMLBuilder::CloseElement(std::string_view name) {
    --depth_;
    constexpr size_t kMarkup = std::string_view("</").size() + kTagEnd.size();
    Writer writer(text_, Indentation() + name.size() + kMarkup);
    writer.LeaveBlanks(Indentation());
    writer.Put("</");
    writer.Put(name);
    writer.Put(kTagEnd);
}

void XMLBuilder::AddVerbatim(std::string_view text) { text_.append(text); }

size_t XMLBuilder::Indentation() const noexcept { return depth_ > 0 ? kIndentation * static_cast<size_t>(depth_) : 0; }

}  // namespace paylodge
