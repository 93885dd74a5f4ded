#include "lhxml/xml_builder.hpp"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace paylodge {
namespace {

// Of one level.
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

// Throws std::bad_alloc where no text can be that long.
[[nodiscard]] size_t EscapedSize(std::string_view value) {
    std::uint64_t size = 0;
    for (const char character : value) {
        size += kEscapedSizes[static_cast<unsigned char>(character)];
    }
    if (size > std::numeric_limits<size_t>::max() / 2) {
        throw std::bad_alloc();
    }
    return static_cast<size_t>(size);
}

// The two copies overlap where the size is less than twice that of a part.
template <class Part>
inline void CopyBothEnds(char* to, const char* from, size_t size) noexcept {
    Part first;
    Part last;
    std::memcpy(&first, from, sizeof(Part));
    std::memcpy(&last, from + size - sizeof(Part), sizeof(Part));
    std::memcpy(to, &first, sizeof(Part));
    std::memcpy(to + size - sizeof(Part), &last, sizeof(Part));
}

// Names and values are mostly this short, and calling the library's function takes longer than copying them.
constexpr size_t kShort = 16;

inline void CopyShort(char* to, const char* from, size_t size) noexcept {
    if (size >= sizeof(std::uint64_t)) {
        CopyBothEnds<std::uint64_t>(to, from, size);
    } else if (size >= sizeof(std::uint32_t)) {
        CopyBothEnds<std::uint32_t>(to, from, size);
    } else {
        for (size_t index = 0; index < size; ++index) {
            to[index] = from[index];
        }
    }
}

// Writes pieces where there is room for all of them.
class Writer {
  public:
    explicit Writer(char* position) noexcept : position_(position) {}

    // A literal.
    template <size_t size_with_null>
    void Put(const char (&literal)[size_with_null]) noexcept {
        std::memcpy(position_, literal, size_with_null - 1);
        position_ += size_with_null - 1;
    }
    void Put(std::string_view piece) noexcept {
        if (piece.size() <= kShort) {
            CopyShort(position_, piece.data(), piece.size());
        } else {
            std::memcpy(position_, piece.data(), piece.size());
        }
        position_ += piece.size();
    }
    void PutIndentation(std::int32_t depth) noexcept {
        for (std::int32_t level = 0; level < depth; ++level) {
            Put("    ");
        }
    }
    void PutEscaped(std::string_view value) noexcept {
        for (const char character : value) {
            if (kEscapedSizes[static_cast<unsigned char>(character)] == 1) {
                *position_++ = character;
            } else {
                Put(EntityFor(character));
            }
        }
    }
    [[nodiscard]] const char* Position() const noexcept { return position_; }

  private:
    char* position_;
};

// Enough for the escaped value; of a short one it is not worth a look.
[[nodiscard]] size_t RoomForEscaped(std::string_view value) {
    constexpr size_t kLongestEntity = 6;
    constexpr size_t kLittle = 64;
    return value.size() <= kLittle ? kLongestEntity * value.size() : EscapedSize(value);
}

[[nodiscard]] size_t RoomForIndentation(std::int32_t depth) noexcept {
    return depth > 0 ? kIndentation * static_cast<size_t>(depth) : 0;
}

}  // namespace

template <class Write>
void XMLBuilder::Append(size_t room, const Write& write) {
    if (text_.size() - size_ < room) {
        // Enough at once for most requests, later twice as much each time.
        constexpr size_t kFirstRoom = 2000;
        text_.resize(std::max(size_ + room, kFirstRoom));
        text_.resize(text_.capacity());
    }
    Writer writer(text_.data() + size_);
    write(writer);
    size_ = static_cast<size_t>(writer.Position() - text_.data());
}

std::string XMLBuilder::GetText() && {
    text_.resize(std::exchange(size_, 0));
    return std::exchange(text_, {});
}

void XMLBuilder::AddProcessingInstruction(std::string_view text) {
    constexpr size_t kMarkup = std::string_view("<>\r\n").size();
    Append(text.size() + kMarkup, [&](Writer& line) {
        line.Put("<");
        line.Put(text);
        line.Put(">\r\n");
    });
}

void XMLBuilder::OpenElement(std::string_view name, std::span<const std::string_view> attribute_names,
                             std::span<const std::string_view> attribute_values) {
    assert(attribute_names.size() == attribute_values.size());
    constexpr size_t kMarkup = std::string_view("<>\r\n").size();
    size_t room = RoomForIndentation(depth_) + name.size() + kMarkup;
    constexpr size_t kAttributeMarkup = std::string_view(" =\"\"").size();
    for (size_t index = 0; index < attribute_names.size(); ++index) {
        room += attribute_names[index].size() + RoomForEscaped(attribute_values[index]) + kAttributeMarkup;
    }
    Append(room, [&](Writer& line) {
        line.PutIndentation(depth_);
        line.Put("<");
        line.Put(name);
        for (size_t index = 0; index < attribute_names.size(); ++index) {
            line.Put(" ");
            line.Put(attribute_names[index]);
            line.Put("=\"");
            line.PutEscaped(attribute_values[index]);
            line.Put("\"");
        }
        line.Put(">\r\n");
    });
    ++depth_;
}

void XMLBuilder::AddElement(std::string_view name, std::string_view value) {
    if (value.empty()) {
        return;
    }
    constexpr size_t kMarkup = std::string_view("<></>\r\n").size();
    Append(RoomForIndentation(depth_) + 2 * name.size() + kMarkup + RoomForEscaped(value), [&](Writer& line) {
        line.PutIndentation(depth_);
        line.Put("<");
        line.Put(name);
        line.Put(">");
        line.PutEscaped(value);
        line.Put("</");
        line.Put(name);
        line.Put(">\r\n");
    });
}

void XMLBuilder::CloseElement(std::string_view name) {
    --depth_;
    constexpr size_t kMarkup = std::string_view("</>\r\n").size();
    Append(RoomForIndentation(depth_) + name.size() + kMarkup, [&](Writer& line) {
        line.PutIndentation(depth_);
        line.Put("</");
        line.Put(name);
        line.Put(">\r\n");
    });
}

void XMLBuilder::AddVerbatim(std::string_view text) {
    Append(text.size(), [&](Writer& writer) { writer.Put(text); });
}

}  // namespace paylodge
