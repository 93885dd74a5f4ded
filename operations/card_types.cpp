#include "operations/card_types.hpp"

#include <algorithm>
#include <array>

namespace paylodge {
namespace {

using namespace std::string_view_literals;

struct CardTypeRow {
    std::string_view search_text;
    std::string_view card_type;
};

// MasterCard has no row on purpose: its refunds go to the item for any card.
constexpr std::array kCardTypes = {
    CardTypeRow{"Visa", "Visa"},
    CardTypeRow{"AmEx", "American Express"},
    CardTypeRow{"Discover", "Discover"},
    CardTypeRow{"Diners", "Diners Club"},
};

constexpr auto kNetRefundItemPrefix = "Net Refund - "sv;
constexpr auto kVisaAndMasterCardLabel = "Visa/MasterCard"sv;
constexpr auto kAnyCardLabel = "Credit Card"sv;

[[nodiscard]] std::string_view LabelFor(std::string_view card_type) noexcept {
    if (card_type == "Visa" || card_type == "MasterCard") {
        return kVisaAndMasterCardLabel;
    }
    return card_type.empty() ? kAnyCardLabel : card_type;
}

}  // namespace

std::string_view CardTypeFromMemo(std::string_view memo_text) noexcept {
    const auto row = std::ranges::find_if(kCardTypes, [memo_text](const CardTypeRow& candidate) {
        return memo_text.find(candidate.search_text) != std::string_view::npos;
    });
    return row == kCardTypes.end() ? std::string_view() : row->card_type;
}

std::string NetRefundItemName(std::string_view card_type) {
    return std::string(kNetRefundItemPrefix).append(LabelFor(card_type));
}

}  // namespace paylodge
