// The records that the fields of a request name.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "refhost/books/ledger.hpp"
#include "refhost/books/request.hpp"

namespace paylodge::refhost {

// A record that a request refers to.
struct Referred {
    RecordNumber number = 0;
    std::string full_name;
    // Of an account or an item.
    std::string type;
};

// Where money stays that was received and not yet deposited.
inline constexpr std::string_view kUndepositedFunds = "Undeposited Funds";

// Kinds of account, for what an account may be used as. An empty list stands for every kind that is posted to.
using AccountTypes = std::span<const std::string_view>;

// The record that a reference names by id or by name, or nothing when it names none. Throws RefusedRequest when there
// is no such record, or it is inactive. `element` holds the reference as a child of this name.
[[nodiscard]] std::optional<Referred> Refer(Company& company, const ListKind& kind, const Element& element,
                                            std::string_view name);
// The same for a reference that has to name a record.
[[nodiscard]] Referred ReferRequired(Company& company, const ListKind& kind, const Element& element,
                                     std::string_view name);

// An account that a reference has to name. Throws RefusedRequest also for one of another type.
[[nodiscard]] Referred ReferAccount(Company& company, const Element& element, std::string_view name,
                                    AccountTypes types);
// The account that a reference names for money that comes in; without one the undeposited funds.
[[nodiscard]] Referred ReferDepositAccount(Company& company, const Element& element, std::string_view name);

// The first active account of this type. Throws RefusedRequest when the company has none.
[[nodiscard]] RecordNumber FirstAccountOfType(Company& company, std::string_view type);

// Where a sale of the item is posted: to the item's own account, or to the first one for income. Throws RefusedRequest
// when that account is inactive.
[[nodiscard]] RecordNumber AccountOfItem(Company& company, RecordNumber item);

// An optional number of a record that may be missing.
[[nodiscard]] inline std::optional<RecordNumber> NumberOf(const std::optional<Referred>& referred) {
    return referred ? std::optional(referred->number) : std::nullopt;
}

}  // namespace paylodge::refhost
