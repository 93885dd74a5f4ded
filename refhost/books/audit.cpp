#include "refhost/books/audit.hpp"

#include <array>

#include "refhost/books/values.hpp"

namespace paylodge::refhost {
namespace {

// Rows of a rule are what breaks it: whose rule it is, what the books say, and what it should be.
struct Rule {
    std::string_view words;
    const char* violations;
};
constexpr std::array kRules{
    Rule{"has debits and credits that differ by",
         "SELECT 'The transaction T-' || txn, sum(amount), 0 FROM postings GROUP BY txn HAVING sum(amount) <> 0"},
    Rule{"keeps a difference of",
         "SELECT 'The transaction T-' || number, difference, 0 FROM transactions WHERE difference <> 0"},
    Rule{"has the balance",
         "SELECT 'The account \"' || full_name || '\"', balance, coalesce(total, 0) FROM accounts LEFT JOIN"
         " (SELECT account AS posted, sum(amount) AS total FROM postings GROUP BY account) ON posted = number"
         " WHERE balance <> coalesce(total, 0)"},
    Rule{"has the balance",
         "SELECT 'The customer \"' || full_name || '\"', balance, coalesce(total, 0) FROM customers LEFT JOIN"
         " (SELECT customer AS posted, sum(amount) AS total FROM postings GROUP BY customer) ON posted = number"
         " WHERE balance <> coalesce(total, 0)"},
    Rule{"has this left to be paid:",
         "SELECT 'The invoice T-' || number, remaining, rest FROM (SELECT number, remaining, total -"
         " (SELECT coalesce(sum(amount), 0) FROM applied_payments WHERE invoice = transactions.number) AS rest"
         " FROM transactions WHERE kind = 'Invoice') WHERE remaining IS NOT rest"},
    Rule{"has this left over:",
         "SELECT 'The received payment T-' || number, remaining, rest FROM (SELECT number, remaining, total -"
         " (SELECT coalesce(sum(amount), 0) FROM applied_payments WHERE payment = transactions.number) AS rest"
         " FROM transactions WHERE kind = 'ReceivePayment') WHERE remaining IS NOT rest"},
    Rule{"has lines that make",
         "SELECT 'The transaction T-' || number, total, lines FROM (SELECT number, total,"
         " (SELECT sum(amount) FROM lines WHERE txn = transactions.number) AS lines FROM transactions"
         " WHERE kind <> 'JournalEntry') WHERE lines IS NOT NULL AND lines <> total"},
};

// Whole in itself, every reference leading somewhere.
void CheckDatabase(Company& company, std::vector<std::string>& findings) {
    Statement check = company.Data().Prepare("PRAGMA integrity_check");
    while (check.Step()) {
        if (check.Text(0) != "ok") {
            findings.push_back("The database is damaged: " + std::string(check.Text(0)) + '.');
        }
    }
    Statement references = company.Data().Prepare("PRAGMA foreign_key_check");
    while (references.Step()) {
        findings.push_back("A row of " + std::string(references.Text(0)) + " refers to a row of " +
                           std::string(references.Text(2)) + " that does not exist.");
    }
}

void CheckRule(Company& company, const Rule& rule, std::vector<std::string>& findings) {
    Statement row = company.Data().Prepare(rule.violations);
    while (row.Step()) {
        findings.push_back(std::string(row.Text(0)) + ' ' + std::string(rule.words) + ' ' +
                           FormatCents(row.Integer(1)) + " instead of " + FormatCents(row.Integer(2)) + '.');
    }
}

}  // namespace

std::vector<std::string> Audit(Company& company) {
    std::vector<std::string> findings;
    CheckDatabase(company, findings);
    for (const Rule& rule : kRules) {
        CheckRule(company, rule, findings);
    }
    return findings;
}

}  // namespace paylodge::refhost
