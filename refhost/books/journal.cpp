#include "refhost/books/journal.hpp"

#include "refhost/books/list_kinds.hpp"
#include "refhost/books/values.hpp"

namespace paylodge::refhost {
namespace {

void AddPostings(Element& transaction, Company& company, std::int64_t number) {
    Statement row = company.Data().Prepare(
        "SELECT (SELECT full_name FROM accounts WHERE number = account),"
        " (SELECT full_name FROM customers WHERE number = customer), amount"
        " FROM postings WHERE txn = ? ORDER BY position",
        number);
    while (row.Step()) {
        Element& posting = transaction.children.emplace_back(MakeElement("Posting"));
        AddText(posting, "Account", row.Text(0));
        AddText(posting, "Name", row.Text(1));
        AddText(posting, "Amount", FormatCents(row.Integer(2)));
    }
}

}  // namespace

Element ReadJournal(Company& company, std::int64_t count) {
    Element journal = MakeElement("Journal");
    Statement row = company.Data().Prepare(
        "SELECT number, kind, txn_date, ref_number, (SELECT full_name FROM customers WHERE number = t.customer), memo,"
        " total FROM transactions t ORDER BY number DESC LIMIT ?",
        count);
    while (row.Step()) {
        Element& transaction = journal.children.emplace_back(MakeElement("Transaction"));
        AddText(transaction, "Type", row.Text(1));
        AddText(transaction, "TxnID", MakeId(kJournalEntries, row.Integer(0)));
        AddText(transaction, "TxnDate", row.Text(2));
        AddText(transaction, "RefNumber", row.Text(3));
        AddText(transaction, "Name", row.Text(4));
        AddText(transaction, "Memo", row.Text(5));
        AddText(transaction, "Total", FormatCents(row.Integer(6)));
        AddPostings(transaction, company, row.Integer(0));
    }
    return journal;
}

}  // namespace paylodge::refhost
