#include "workbench/server/log_book.hpp"

#include <utility>

#include "workbench/server/card_masking.hpp"
#include "workbench/server/limits.hpp"
#include "workbench/server/served_path.hpp"

namespace paylodge::workbench {
namespace {

// At a border between two characters.
[[nodiscard]] std::string Cut(const std::string& text) {
    std::size_t end = kLongestLogText;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    return text.substr(0, end) + "... (" + std::to_string(text.size()) + " bytes)";
}

// Masked before it is cut, so that no half of a number is left at the end.
[[nodiscard]] Json MaskedText(const std::string& text) {
    std::string masked = MaskCardNumbers(text);
    return masked.size() > kLongestLogText ? Cut(masked) : masked;
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
