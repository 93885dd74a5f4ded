#include "workbench/server/card_masking.hpp"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <vector>

namespace paylodge::workbench {
namespace {

constexpr std::size_t kShortest = 13;
constexpr std::size_t kLongest = 19;
constexpr std::size_t kShown = 4;
// "4111 - 1111": so many characters may stand between two digits of a number.
constexpr std::size_t kLongestGap = 3;
constexpr char kMask = '*';

[[nodiscard]] constexpr bool IsDigit(char character) noexcept { return character >= '0' && character <= '9'; }
[[nodiscard]] constexpr bool IsGap(char character) noexcept { return character == ' ' || character == '-'; }

[[nodiscard]] constexpr std::optional<unsigned> HexValue(char character) noexcept {
    if (IsDigit(character)) {
        return static_cast<unsigned>(character - '0');
    }
    const char lower = static_cast<char>(character | 0x20);
    return lower >= 'a' && lower <= 'f' ? std::optional(static_cast<unsigned>(lower - 'a') + 10U) : std::nullopt;
}

// Where the digits of a run stand in the text.
using Places = std::vector<std::size_t>;

// The check digit of ISO/IEC 7812: from the right, every second digit counts double.
[[nodiscard]] bool PassesCheck(std::string_view text, const Places& places, std::size_t first, std::size_t count) {
    unsigned sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const auto digit = static_cast<unsigned>(text[places[first + count - 1 - i]] - '0');
        const unsigned counted = i % 2 == 0 ? digit : digit * 2;
        sum += counted > 9 ? counted - 9 : counted;
    }
    return sum % 10 == 0;
}

void Hide(std::string& masked, const Places& places, std::size_t first, std::size_t count) {
    for (std::size_t i = first; i + kShown < first + count; ++i) {
        masked[places[i]] = kMask;
    }
}

// Digits with gaps between them: the number may be any of the groups between two gaps, several of them together, or
// stand anywhere in a group that is longer than a number.
void MaskRun(std::string_view text, const Places& places, std::string& masked) {
    const auto begins_group = [&](std::size_t i) { return i == 0 || places[i] != places[i - 1] + 1; };
    const auto ends_group = [&](std::size_t i) { return i + 1 == places.size() || places[i + 1] != places[i] + 1; };
    std::size_t group_begin = 0;
    std::size_t group_end = 0;
    for (std::size_t first = 0; first < places.size(); ++first) {
        if (begins_group(first)) {
            group_begin = first;
            group_end = first;
            while (!ends_group(group_end)) {
                ++group_end;
            }
        }
        const bool is_inside_long_group = group_end - group_begin + 1 > kLongest;
        // Card numbers of the public schemes begin with 3 to 6; without that, any long number would lose its digits.
        const char digit = text[places[first]];
        const bool may_begin_number = is_inside_long_group && digit >= '3' && digit <= '6';
        if (!begins_group(first) && !may_begin_number) {
            continue;
        }
        for (std::size_t count = std::min(kLongest, places.size() - first); count >= kShortest; --count) {
            const std::size_t last = first + count - 1;
            if ((ends_group(last) || (is_inside_long_group && last <= group_end)) &&
                PassesCheck(text, places, first, count)) {
                Hide(masked, places, first, count);
                break;
            }
        }
    }
}

void MaskRuns(std::string_view text, std::string& masked) {
    Places places;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        if (i < text.size() && IsDigit(text[i])) {
            places.push_back(i);
            continue;
        }
        const bool continues = i < text.size() && IsGap(text[i]) && !places.empty() && i - places.back() <= kLongestGap;
        if (!continues && !places.empty()) {
            if (places.size() >= kShortest) {
                MaskRun(text, places, masked);
            }
            places.clear();
        }
    }
}

[[nodiscard]] Places DigitsFrom(std::string_view text, std::size_t begin) {
    Places places;
    while (begin < text.size() && IsDigit(text[begin]) && places.size() <= kLongest) {
        places.push_back(begin++);
    }
    return places;
}

// Tag 5A is the account number, padded with F to whole bytes; tag 57 has it up to a D, and further data of the track
// behind that.
void MaskChipData(std::string_view text, std::string& masked) {
    for (std::size_t i = 0; i + 4 < text.size(); ++i) {
        if (text[i] != '5') {
            continue;
        }
        const bool is_number = text[i + 1] == 'A' || text[i + 1] == 'a';
        const bool is_track = text[i + 1] == '7';
        const auto high = HexValue(text[i + 2]);
        const auto low = HexValue(text[i + 3]);
        if ((!is_number && !is_track) || !high || !low) {
            continue;
        }
        const std::size_t begin = i + 4;
        const std::size_t end = begin + std::size_t{2} * (*high * 16 + *low);
        const std::string_view value = text.substr(begin, end - begin);
        if (end > text.size() || !std::ranges::all_of(value, [](char c) { return HexValue(c).has_value(); })) {
            continue;
        }
        Places places = DigitsFrom(text.substr(0, end), begin);
        const std::size_t after = begin + places.size();
        const auto next = after < end ? HexValue(text[after]) : std::nullopt;
        if (places.size() < kShortest || places.size() > kLongest) {
            continue;
        }
        if (is_number && (after == end || (next == 15U && after + 1 == end))) {
            Hide(masked, places, 0, places.size());
        } else if (is_track && next == 13U) {
            Hide(masked, places, 0, places.size());
            std::fill(masked.begin() + static_cast<std::ptrdiff_t>(after) + 1,
                      masked.begin() + static_cast<std::ptrdiff_t>(end), kMask);
        }
    }
}

// The same tags decoded, as members of a JSON object, whose quotes may be escaped themselves.
void MaskDecodedChipData(std::string_view text, std::string& masked) {
    for (const std::string_view tag : {"5A", "5a", "57"}) {
        for (std::size_t i = text.find(tag); i != std::string_view::npos; i = text.find(tag, i + tag.size())) {
            const std::size_t begin = std::min(text.find_first_not_of("\\\": ", i + tag.size()), text.size());
            const Places places = DigitsFrom(text, begin);
            if (text.substr(i, begin - i).find(':') == std::string_view::npos || places.size() < kShortest) {
                continue;
            }
            Hide(masked, places, 0, places.size());
            for (std::size_t rest = places.back() + 1; rest < text.size() && HexValue(text[rest]); ++rest) {
                masked[rest] = kMask;
            }
        }
    }
}

// "%B4111111111111111^NAME/OF^2512...?" and ";4111111111111111=2512...?": with the number everything behind it goes up
// to the end of the track.
void MaskTracks(std::string_view text, std::string& masked) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool is_first = text[i] == '%' && i + 1 < text.size() && (text[i + 1] == 'B' || text[i + 1] == 'b');
        if (!is_first && text[i] != ';') {
            continue;
        }
        const Places places = DigitsFrom(text, i + (is_first ? 2 : 1));
        if (places.size() < kShortest || places.size() > kLongest) {
            continue;
        }
        const std::size_t after = places.back() + 1;
        if (after < text.size() && text[after] == (is_first ? '^' : '=')) {
            Hide(masked, places, 0, places.size());
            for (std::size_t rest = after + 1; rest < text.size() && text[rest] != '?' && text[rest] != '\n'; ++rest) {
                masked[rest] = text[rest] == '^' ? '^' : kMask;
            }
        }
    }
}

}  // namespace

std::string MaskCardNumbers(std::string_view text) {
    std::string masked(text);
    MaskRuns(text, masked);
    MaskChipData(text, masked);
    MaskDecodedChipData(text, masked);
    MaskTracks(text, masked);
    return masked;
}

}  // namespace paylodge::workbench
