// A second ledger, as simple as one can be: a list of transactions, and sums over all of it for every question.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace paylodge::refhost {

class NaiveLedger {
  public:
    // An account and, for receivables, the customer in whose name it is posted to.
    using Side = std::pair<std::string, std::string>;
    using Postings = std::map<Side, std::int64_t>;

    struct Invoice {
        std::string id;
        std::string customer;
        std::string date;
        std::int64_t total = 0;
        std::int64_t paid = 0;
    };

    void AddAccount(const std::string& full_name, const std::string& type) { accounts_[full_name] = {type, true}; }
    void AddCustomer(const std::string& full_name) { customers_.push_back(full_name); }
    void AddInvoice(const Invoice& invoice) { invoices_.push_back(invoice); }
    void SetActive(const std::string& account, bool is_active) { accounts_.at(account).is_active = is_active; }

    // What cancels out is not kept, as is a posting of nothing.
    void Record(const Postings& postings) {
        Postings kept;
        for (const auto& [side, cents] : postings) {
            if (cents != 0) {
                kept.emplace(side, cents);
            }
        }
        journal_.push_back(kept);
    }

    // Pays the customer's open invoices, oldest date first, then in the order of their ids. Returns what is left.
    std::int64_t Apply(const std::string& customer, std::int64_t cents) {
        while (cents > 0) {
            Invoice* oldest = nullptr;
            for (Invoice& invoice : invoices_) {
                if (invoice.customer == customer && invoice.paid < invoice.total &&
                    (oldest == nullptr || invoice.date < oldest->date)) {
                    oldest = &invoice;
                }
            }
            if (oldest == nullptr) {
                break;
            }
            const std::int64_t open = oldest->total - oldest->paid;
            const std::int64_t part = open < cents ? open : cents;
            oldest->paid += part;
            cents -= part;
        }
        return cents;
    }

    [[nodiscard]] bool CanPostTo(const std::string& account) const {
        const auto found = accounts_.find(account);
        return found != accounts_.end() && found->second.is_active && found->second.type != "NonPosting";
    }
    [[nodiscard]] std::string TypeOf(const std::string& account) const { return accounts_.at(account).type; }

    // As an accountant reads it: what is owed to others, what was earned and what was put in counts the other way.
    [[nodiscard]] std::int64_t BalanceOfAccount(const std::string& account) const {
        std::int64_t sum = 0;
        for (const Postings& postings : journal_) {
            for (const auto& [side, cents] : postings) {
                sum += side.first == account ? cents : 0;
            }
        }
        const std::string& type = accounts_.at(account).type;
        return type == "Income" || type == "Equity" || type == "CreditCard" ? -sum : sum;
    }
    [[nodiscard]] std::int64_t BalanceOfCustomer(const std::string& customer) const {
        std::int64_t sum = 0;
        for (const Postings& postings : journal_) {
            for (const auto& [side, cents] : postings) {
                sum += side.second == customer ? cents : 0;
            }
        }
        return sum;
    }

    struct Account {
        std::string type;
        bool is_active = true;
    };
    [[nodiscard]] const std::map<std::string, Account>& Accounts() const noexcept { return accounts_; }
    [[nodiscard]] const std::vector<std::string>& Customers() const noexcept { return customers_; }
    [[nodiscard]] const std::vector<Invoice>& Invoices() const noexcept { return invoices_; }
    [[nodiscard]] const std::vector<Postings>& Journal() const noexcept { return journal_; }

  private:
    std::map<std::string, Account> accounts_;
    std::vector<std::string> customers_;
    std::vector<Invoice> invoices_;
    std::vector<Postings> journal_;
};

}  // namespace paylodge::refhost
