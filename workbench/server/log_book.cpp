#include "workbench/server/log_book.hpp"

#include <algorithm>
#include <string_view>
#include <utility>

#include "workbench/server/card_masking.hpp"
#include "workbench/server/limits.hpp"

namespace paylodge::workbench {
namespace {

// What stands behind a cut belongs to a number that may begin before it.
constexpr std::size_t kPastCut = 256;

// Of a long text only what is kept is masked, and cut at a border between two characters afterwards.
[[nodiscard]] Json MaskedText(const std::string& text) {
    if (text.size() <= kLongestLogText) {
        return MaskCardNumbers(text);
    }
    const std::string masked = MaskCardNumbers(std::string_view(text).substr(0, kLongestLogText + kPastCut));
    std::size_t end = kLongestLogText;
    while (end > 0 && (static_cast<unsigned char>(masked[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    return masked.substr(0, std::min(end, masked.size())) + "... (" + std::to_string(text.size()) + " bytes)";
}

// A number of so many digits may be a card's.
[[nodiscard]] Json MaskedNumber(const Json& number) {
    std::string text = number.is_number_float() && number.get<double>() < 1e19 && number.get<double>() > 1e12
                           ? std::to_string(number.get<double>())
                           : number.dump();
    text.erase(std::min(text.find('.'), text.size()));
    std::string masked = MaskCardNumbers(text);
    return masked == text ? number : Json(std::move(masked));
}

}  // namespace

Json Masked(const Json& value) {
    if (value.is_string()) {
        return MaskedText(value.get_ref<const std::string&>());
    }
    if (value.is_number()) {
        return MaskedNumber(value);
    }
    if (!value.is_structured()) {
        return value;
    }
    Json masked = value;
    for (Json& part : masked) {
        part = Masked(part);
    }
    return masked;
}

const std::string& LogBook::Add(Json entry) {
    entry = Masked(entry);
    entry["n"] = ++last_number_;
    bytes_ += entries_.emplace_back(Text(entry)).size();
    while (entries_.size() > kMostLogEntries || (bytes_ > kMostLogBytes && entries_.size() > 1)) {
        bytes_ -= entries_.front().size();
        entries_.pop_front();
    }
    return entries_.back();
}

void LogBook::Clear() noexcept {
    entries_.clear();
    bytes_ = 0;
}

}  // namespace paylodge::workbench
