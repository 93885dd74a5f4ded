// Card types in the names of payment items and in the memos of credit memos.
#pragma once

#include <string>
#include <string_view>

namespace paylodge {

// The card type that a memo names; empty when it names none that has an item of its own.
[[nodiscard]] std::string_view CardTypeFromMemo(std::string_view memo_text) noexcept;

// The payment item on which net refunds to cards of this type are recorded.
[[nodiscard]] std::string NetRefundItemName(std::string_view card_type);

}  // namespace paylodge
