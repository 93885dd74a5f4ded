#include "refhost/books/ledger.hpp"

#include <algorithm>

#include "refhost/books/status.hpp"
#include "refhost/books/values.hpp"

namespace paylodge::refhost {
namespace {

// An optional text: what is empty is not stored.
[[nodiscard]] std::optional<std::string_view> Given(const std::string& text) {
    return text.empty() ? std::nullopt : std::optional<std::string_view>(text);
}

// Postings to one account in one name are one, and what cancels out is none. Throws RefusedRequest for a sum beyond the
// limit.
[[nodiscard]] std::vector<Posting> Merged(const std::vector<Posting>& postings) {
    std::vector<Posting> merged;
    for (const Posting& posting : postings) {
        const auto same = std::ranges::find_if(merged, [&](const Posting& other) {
            return other.account == posting.account && other.customer == posting.customer;
        });
        if (same == merged.end()) {
            merged.push_back(posting);
        } else {
            same->cents += posting.cents;
            if (std::abs(same->cents) > kLargestAmount) {
                throw RefusedRequest(Code::kBeyondLimit, "The lines post to one account, in sum, beyond the limit of " +
                                                             FormatCents(kLargestAmount) + '.');
            }
        }
    }
    std::erase_if(merged, [](const Posting& posting) { return posting.cents == 0; });
    return merged;
}

void CheckBalance(Company& company, const ListKind& kind, RecordNumber number, std::int64_t cents) {
    Statement row = company.Data().Prepare(
        "SELECT balance, full_name FROM " + std::string(kind.table) + " WHERE number = ?", number);
    if (row.Step() && std::abs(row.Integer(0) + cents) > kLargestBalance) {
        throw RefusedRequest(Code::kBeyondLimit, "The balance of the " + std::string(kind.noun) + ' ' +
                                                     Quoted(row.Text(1)) + " would go beyond " +
                                                     FormatCents(kLargestBalance) + '.');
    }
}

void Post(Company& company, RecordNumber number, const std::vector<Posting>& postings) {
    std::int64_t position = 0;
    for (const Posting& posting : Merged(postings)) {
        CheckBalance(company, kAccounts, posting.account, posting.cents);
        if (posting.customer) {
            CheckBalance(company, kCustomers, *posting.customer, posting.cents);
        }
        company.Data().Run("INSERT INTO postings VALUES (?, ?, ?, ?, ?)", number, ++position, posting.account,
                           posting.customer, posting.cents);
    }
}

}  // namespace

RecordNumber Enter(Company& company, const Entry& entry, std::string_view now) {
    const RecordNumber number = company.NewNumber(now);
    EnterAs(company, number, entry);
    company.Data().Run(
        "UPDATE records SET edit_sequence = edit_sequence + 1, time_modified = ?2 WHERE number IN"
        " (SELECT account FROM postings WHERE txn = ?1 UNION SELECT customer FROM postings WHERE txn = ?1)",
        number, now);
    return number;
}

void EnterAs(Company& company, RecordNumber number, const Entry& entry) {
    const bool can_remain = entry.kind == &kInvoices || entry.kind == &kReceivedPayments;
    company.Data().Run(
        "INSERT INTO transactions (number, kind, customer, receivables, account, txn_date, ref_number, payment_method,"
        " memo, total, remaining) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
        number, entry.kind->record, entry.customer, entry.receivables, entry.account, entry.date,
        Given(entry.ref_number), entry.payment_method, Given(entry.memo), entry.total,
        can_remain ? std::optional(entry.total) : std::nullopt);
    std::int64_t position = 0;
    for (const EnteredLine& line : entry.lines) {
        company.Data().Run("INSERT INTO lines VALUES (?, ?, ?, ?, ?, ?, ?, ?)", number, ++position, line.item,
                           line.account, line.customer, Given(line.description), Given(line.memo), line.cents);
    }
    for (const CardField& field : entry.card) {
        company.Data().Run("INSERT INTO card_fields VALUES (?, ?, ?)", number, field.name, field.value);
    }
    Post(company, number, entry.postings);
}

void ApplyPayment(Company& company, RecordNumber payment, RecordNumber invoice, std::int64_t cents) {
    company.Data().Run("INSERT INTO applied_payments VALUES (?, ?, ?)", payment, invoice, cents);
}

}  // namespace paylodge::refhost
