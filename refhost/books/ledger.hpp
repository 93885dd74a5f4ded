// Enters transactions into the books.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "refhost/books/company.hpp"

namespace paylodge::refhost {

using RecordNumber = std::int64_t;

// A line as it was entered.
struct EnteredLine {
    std::optional<RecordNumber> item = {};
    std::optional<RecordNumber> account = {};
    std::optional<RecordNumber> customer = {};
    std::string description = {};
    std::string memo = {};
    std::int64_t cents = 0;
};

// A debit (above 0) or a credit (below 0). A receivables account is posted to in a customer's name, no other is.
struct Posting {
    RecordNumber account = 0;
    std::optional<RecordNumber> customer = {};
    std::int64_t cents = 0;
};

struct CardField {
    std::string name;
    std::string value;
};

struct Entry {
    const ListKind* kind = nullptr;
    std::optional<RecordNumber> customer = {};
    std::optional<RecordNumber> receivables = {};
    std::optional<RecordNumber> account = {};
    std::optional<RecordNumber> payment_method = {};
    std::string date = {};
    std::string ref_number = {};
    std::string memo = {};
    std::int64_t total = 0;
    std::vector<EnteredLine> lines = {};
    std::vector<Posting> postings = {};
    std::vector<CardField> card = {};
};

// The number of the new transaction. The accounts and customers whose balances it moves count as changed. Throws
// RefusedRequest when a balance would go beyond the limits, and BrokenRule for an entry that the schema forbids. What
// was done until then is taken back by the caller's savepoint.
[[nodiscard]] RecordNumber Enter(Company& company, const Entry& entry, std::string_view now);
// The same under a number that the table of records has already, for books that are made anew.
void EnterAs(Company& company, RecordNumber number, const Entry& entry);

// Pays an invoice with a part of a received payment.
void ApplyPayment(Company& company, RecordNumber payment, RecordNumber invoice, std::int64_t cents);

}  // namespace paylodge::refhost
