#include "workbench/server/served_path.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace paylodge::workbench {
namespace {

constexpr std::string_view kIndex = "index.html";

[[nodiscard]] constexpr char Lower(char character) noexcept {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A')) : character;
}

[[nodiscard]] std::string Lower(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), [](char character) { return Lower(character); });
    return lower;
}

[[nodiscard]] constexpr int HexDigit(char character) noexcept {
    const char lower = Lower(character);
    if (lower >= '0' && lower <= '9') {
        return lower - '0';
    }
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// Decoded once and never again: "%252e" is the text "%2e".
[[nodiscard]] std::optional<std::string> Decode(std::string_view text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            decoded += text[i];
            continue;
        }
        const int high = i + 1 < text.size() ? HexDigit(text[i + 1]) : -1;
        const int low = i + 2 < text.size() ? HexDigit(text[i + 2]) : -1;
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        decoded += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return decoded;
}

// The names of devices count with any extension, and with blanks before it.
[[nodiscard]] bool IsDevice(std::string_view segment) {
    static constexpr std::array<std::string_view, 7> kDevices{"con",    "prn",     "aux",   "nul",
                                                              "conin$", "conout$", "clock$"};
    std::string name = Lower(segment.substr(0, segment.find('.')));
    name.erase(name.find_last_not_of(' ') + 1);
    if (std::ranges::find(kDevices, name) != kDevices.end()) {
        return true;
    }
    if (!name.starts_with("com") && !name.starts_with("lpt")) {
        return false;
    }
    const std::string_view number = std::string_view(name).substr(3);
    // The superscript digits one to three count as digits here.
    return (number.size() == 1 && number[0] >= '0' && number[0] <= '9') || number == "\xC2\xB9" ||
           number == "\xC2\xB2" || number == "\xC2\xB3";
}

[[nodiscard]] bool IsAllowedCharacter(char character) noexcept {
    return static_cast<unsigned char>(character) >= 0x20 && character != 0x7F &&
           std::string_view("\\:*?\"<>|").find(character) == std::string_view::npos;
}

// Names that begin with a dot are what tools keep to themselves, such as .git. "GIT~1" would be such a folder's short
// name.
[[nodiscard]] bool IsAllowedSegment(std::string_view segment) {
    return !segment.empty() && segment.front() != '.' && segment.back() != '.' && segment.back() != ' ' &&
           segment.find('~') == std::string_view::npos && std::ranges::all_of(segment, IsAllowedCharacter) &&
           !IsDevice(segment);
}

struct Extension {
    std::string_view extension;
    std::string_view media_type;
};

constexpr std::array kExtensions{
    Extension{"html", "text/html"},        Extension{"htm", "text/html"},       Extension{"js", "text/javascript"},
    Extension{"mjs", "text/javascript"},   Extension{"css", "text/css"},        Extension{"json", "application/json"},
    Extension{"map", "application/json"},  Extension{"svg", "image/svg+xml"},   Extension{"png", "image/png"},
    Extension{"jpg", "image/jpeg"},        Extension{"jpeg", "image/jpeg"},     Extension{"gif", "image/gif"},
    Extension{"webp", "image/webp"},       Extension{"avif", "image/avif"},     Extension{"ico", "image/x-icon"},
    Extension{"txt", "text/plain"},        Extension{"xml", "text/xml"},        Extension{"woff", "font/woff"},
    Extension{"woff2", "font/woff2"},      Extension{"ttf", "font/ttf"},        Extension{"otf", "font/otf"},
    Extension{"wasm", "application/wasm"}, Extension{"mp3", "audio/mpeg"},      Extension{"wav", "audio/wav"},
    Extension{"mp4", "video/mp4"},         Extension{"pdf", "application/pdf"},
};

// The length of a well-formed sequence and its smallest character; length 0 for a byte that begins none.
struct Sequence {
    std::size_t length;
    std::uint32_t smallest;
    std::uint32_t first_bits;
};

[[nodiscard]] constexpr Sequence SequenceOf(unsigned char byte) noexcept {
    if (byte < 0x80) {
        return {1, 0, byte};
    }
    if (byte >= 0xC2 && byte < 0xE0) {
        return {2, 0x80, byte & 0x1FU};
    }
    if (byte >= 0xE0 && byte < 0xF0) {
        return {3, 0x800, byte & 0x0FU};
    }
    return byte >= 0xF0 && byte < 0xF5 ? Sequence{4, 0x10000, byte & 0x07U} : Sequence{0, 0, 0};
}

}  // namespace

bool IsUtf8(std::string_view text) noexcept {
    for (std::size_t i = 0; i < text.size();) {
        const Sequence sequence = SequenceOf(static_cast<unsigned char>(text[i]));
        if (sequence.length == 0 || sequence.length > text.size() - i) {
            return false;
        }
        std::uint32_t character = sequence.first_bits;
        for (std::size_t j = 1; j < sequence.length; ++j) {
            const auto byte = static_cast<unsigned char>(text[i + j]);
            if ((byte & 0xC0U) != 0x80U) {
                return false;
            }
            character = character << 6U | (byte & 0x3FU);
        }
        if (character < sequence.smallest || character > 0x10FFFF || (character >= 0xD800 && character < 0xE000)) {
            return false;
        }
        i += sequence.length;
    }
    return true;
}

std::optional<Target> ReadTarget(std::string_view target) {
    const std::size_t fragment = target.find('#');
    target = target.substr(0, fragment);
    const std::size_t mark = target.find('?');
    auto path = Decode(target.substr(0, mark));
    if (!path || !path->starts_with('/') || !IsUtf8(*path)) {
        return std::nullopt;
    }
    Target result{std::move(*path), {}};
    std::string_view rest = mark == std::string_view::npos ? std::string_view() : target.substr(mark + 1);
    while (!rest.empty()) {
        const std::string_view pair = rest.substr(0, rest.find('&'));
        rest.remove_prefix(std::min(rest.size(), pair.size() + 1));
        const std::size_t equals = pair.find('=');
        const auto name = Decode(pair.substr(0, equals));
        const auto value = Decode(equals == std::string_view::npos ? std::string_view() : pair.substr(equals + 1));
        if (!name || !value || !IsUtf8(*name) || !IsUtf8(*value)) {
            return std::nullopt;
        }
        result.query.insert_or_assign(*name, *value);
    }
    return result;
}

std::optional<std::string> RelativeFile(std::string_view path) {
    if (!path.starts_with('/')) {
        return std::nullopt;
    }
    path.remove_prefix(1);
    std::string file(path);
    if (file.empty() || file.ends_with('/')) {
        file += kIndex;
    }
    for (std::size_t begin = 0; begin <= file.size();) {
        const std::size_t end = std::min(file.find('/', begin), file.size());
        if (!IsAllowedSegment(std::string_view(file).substr(begin, end - begin))) {
            return std::nullopt;
        }
        begin = end + 1;
    }
    return file;
}

std::string_view MediaType(std::string_view file) {
    const std::size_t point = file.find_last_of("./");
    if (point != std::string_view::npos && file[point] == '.') {
        const std::string extension = Lower(file.substr(point + 1));
        const auto* const found = std::ranges::find(kExtensions, extension, &Extension::extension);
        if (found != kExtensions.end()) {
            return found->media_type;
        }
    }
    return "application/octet-stream";
}

bool IsText(std::string_view media_type) noexcept {
    return media_type.starts_with("text/") || media_type == "application/json" || media_type == "image/svg+xml";
}

}  // namespace paylodge::workbench
