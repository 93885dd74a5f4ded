// What a request may hold, as tables, and the check of a request against them.
#pragma once

#include <array>
#include <span>
#include <string_view>

#include "refhost/books/element.hpp"

namespace paylodge::refhost {

enum class Form { kText, kName, kBoolean, kAmount, kDate, kDateTime, kCount, kChoice, kAggregate };
enum class Occurs { kOptional, kOnce, kRepeated };

inline constexpr size_t kLongestName = 100;
inline constexpr size_t kLongestText = 4095;
inline constexpr size_t kLongestNumber = 30;

// One element that a request may hold.
struct Field {
    std::string_view name;
    Form form = Form::kText;
    Occurs occurs = Occurs::kOptional;
    // Of a text or name: the longest one, in characters.
    size_t longest = kLongestText;
    // Of a choice: the values, whose letter case does not matter.
    std::span<const std::string_view> choices = {};
    // Of an aggregate: what it may hold.
    std::span<const Field> fields = {};
};

// Throws RefusedRequest, with the name of the field, when the element does not hold what the table says, in the order
// of the table.
void CheckFields(const Element& element, std::span<const Field> fields);

// The value of a checked choice as the table spells it.
[[nodiscard]] std::string_view CanonicalChoice(std::span<const std::string_view> choices, std::string_view value);

// A reference to a record of a list.
inline constexpr std::array kReferenceFields{Field{.name = "ListID"}, Field{.name = "FullName"}};

[[nodiscard]] consteval Field Reference(std::string_view name, Occurs occurs = Occurs::kOptional) {
    return {.name = name, .form = Form::kAggregate, .occurs = occurs, .fields = kReferenceFields};
}
[[nodiscard]] consteval Field Choice(std::string_view name, std::span<const std::string_view> choices,
                                     Occurs occurs = Occurs::kOptional) {
    return {.name = name, .form = Form::kChoice, .occurs = occurs, .choices = choices};
}
[[nodiscard]] consteval Field Aggregate(std::string_view name, std::span<const Field> fields,
                                        Occurs occurs = Occurs::kOptional) {
    return {.name = name, .form = Form::kAggregate, .occurs = occurs, .fields = fields};
}

// A request may name the elements that it wants of each record.
inline constexpr Field kIncludeRetElement{.name = "IncludeRetElement", .occurs = Occurs::kRepeated, .longest = 100};

inline constexpr std::array<std::string_view, 16> kAccountTypes{"AccountsPayable",
                                                                "AccountsReceivable",
                                                                "Bank",
                                                                "CostOfGoodsSold",
                                                                "CreditCard",
                                                                "Equity",
                                                                "Expense",
                                                                "FixedAsset",
                                                                "Income",
                                                                "LongTermLiability",
                                                                "NonPosting",
                                                                "OtherAsset",
                                                                "OtherCurrentAsset",
                                                                "OtherCurrentLiability",
                                                                "OtherExpense",
                                                                "OtherIncome"};

}  // namespace paylodge::refhost
