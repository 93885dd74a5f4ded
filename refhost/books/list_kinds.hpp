// The lists of a company: which element stands for which column of which table, in responses and in the company's text.
#pragma once

#include <span>
#include <string_view>

namespace paylodge::refhost {

enum class Shape { kText, kAmount, kBoolean, kNumber, kReference };

struct ListKind;

// One element of a record.
struct Column {
    std::string_view element;
    Shape shape = Shape::kText;
    // An SQL expression over the row, which is called t.
    std::string_view value;
    // The column of the table that holds it; empty for what follows from the rest of the books.
    std::string_view stored = {};
    // Of a reference: the list that it points into.
    const ListKind* target = nullptr;
    bool is_required = false;
};

// How the lines of a transaction stand in its record. Without a name it has none.
struct LineKind {
    std::string_view element = {};
};

struct ListKind {
    // The element that holds the list in the company's text, and the one of each record; responses add "Ret" to that.
    std::string_view section;
    std::string_view record;
    // The element that identifies a record.
    std::string_view id;
    // For messages.
    std::string_view noun;
    std::string_view table;
    // Of a named list: the column with the name that others refer to. Empty for transactions.
    std::string_view name_column;
    std::span<const Column> columns;
    LineKind lines = {};

    [[nodiscard]] bool IsTransaction() const noexcept { return name_column.empty(); }
    [[nodiscard]] bool IsTree() const noexcept { return name_column == "full_name"; }
};

extern const ListKind kAccounts;
extern const ListKind kCustomers;
extern const ListKind kSalesTaxCodes;
extern const ListKind kPaymentMethods;
extern const ListKind kItems;
extern const ListKind kInvoices;
extern const ListKind kReceivedPayments;
extern const ListKind kSalesReceipts;
extern const ListKind kCreditMemos;
extern const ListKind kDeposits;
extern const ListKind kChecks;
extern const ListKind kJournalEntries;

// All of them in the order in which they stand in the company's text: none refers to a later one.
[[nodiscard]] std::span<const ListKind* const> AllKinds() noexcept;

}  // namespace paylodge::refhost
