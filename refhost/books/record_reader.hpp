// Reads records of the books as responses show them.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "refhost/books/company.hpp"

namespace paylodge::refhost {

using SqlValue = std::variant<std::int64_t, std::string>;

// What a query asks for, besides the list itself. Rows are called t, what all records have in common r.
struct Selection {
    // Conditions that all have to hold, each in SQL, with a question mark for each value.
    std::vector<std::string> conditions = {};
    std::vector<SqlValue> values = {};
    std::int64_t limit = -1;
};

// The records in the order of their ids.
[[nodiscard]] std::vector<Element> ReadRecords(Company& company, const ListKind& kind, const Selection& selection);

// A reference to a record: its id and its full name.
[[nodiscard]] Element ReferenceElement(std::string_view name, const ListKind& target, std::int64_t number,
                                       std::string_view full_name);

// The details of card transactions, as the elements that hold them are called.
inline constexpr std::string_view kCardElement = "CreditCardTxnInfo";
struct CardPart {
    std::string_view element;
    std::span<const std::string_view> fields;
};
[[nodiscard]] std::span<const CardPart> CardParts() noexcept;

}  // namespace paylodge::refhost
