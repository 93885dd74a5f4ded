// Random days of requests, entered into the books and into a naive ledger beside them, which have to agree in every
// balance, every open invoice and the whole journal. A failure names the seed of its day.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "refhost/books/company_text.hpp"
#include "refhost/books/values.hpp"
#include "refhost/books/xml_reader.hpp"
#include "tests/refhost/books/naive_ledger.hpp"
#include "tests/refhost/books/sample_books.hpp"

namespace paylodge::refhost {
namespace {

constexpr int kRequestsOfADay = 120;
constexpr int kRequestsBetweenComparisons = 30;

using Postings = NaiveLedger::Postings;

[[nodiscard]] std::string Named(const std::string& element, const std::string& full_name) {
    return '<' + element + "><FullName>" + full_name + "</FullName></" + element + '>';
}

// The postings of every transaction of the books, in the order of their ids.
[[nodiscard]] std::vector<Postings> JournalOf(Company& books) {
    std::map<std::int64_t, Postings> journal;
    const Element root = ReadXml(ExportText(books)).root;
    for (const Element& section : root.children) {
        for (const Element& record : section.children) {
            const std::string id(ChildText(record, "TxnID"));
            for (const Element& child : record.children) {
                if (child.name == "Posting") {
                    const Element* const customer = FindChild(child, "CustomerRef");
                    journal[std::stoll(id.substr(2))]
                           [{std::string(ChildText(*FindChild(child, "AccountRef"), "FullName")),
                             customer == nullptr ? std::string() : std::string(ChildText(*customer, "FullName"))}] +=
                        ParseCents(ChildText(child, "Amount")).value();
                }
            }
        }
    }
    std::vector<Postings> postings;
    for (const auto& [number, transaction] : journal) {
        postings.push_back(transaction);
    }
    return postings;
}

class NaiveDay : public ::testing::TestWithParam<unsigned> {
  protected:
    NaiveDay() {
        for (const Element& account : books_->Records(kAccounts)) {
            ledger_.AddAccount(std::string(ChildText(account, "FullName")),
                               std::string(ChildText(account, "AccountType")));
        }
        ledger_.SetActive("Old Bank", false);
        for (const Element& customer : books_->Records(kCustomers)) {
            ledger_.AddCustomer(std::string(ChildText(customer, "FullName")));
        }
        ledger_.AddInvoice({"T-11", "Smith", "2025-02-02", 6000});
        ledger_.AddInvoice({"T-12", "Smith", "2025-02-01", 4000});
        ledger_.AddInvoice({"T-13", "Smith:Kitchen", "2025-01-01", 3000, 3000});
        for (const Postings& postings : JournalOf(*books_)) {
            ledger_.Record(postings);
        }
        EXPECT_EQ(Send("<ItemPaymentAddRq><ItemPaymentAdd><Name>Goods</Name></ItemPaymentAdd></ItemPaymentAddRq>"),
                  "0");
        for (const auto& [name, type] :
             {std::pair{"Card", "CreditCard"}, {"Fees", "Expense"}, {"Orders", "NonPosting"}}) {
            AddAccount(name, type);
        }
    }

    [[nodiscard]] std::string Send(const std::string& request) { return StatusCode(SendOne(*books_, request)); }

    [[nodiscard]] int Below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }
    template <class List>
    [[nodiscard]] const auto& AnyOf(const List& list) {
        return *std::next(list.begin(), Below(static_cast<int>(list.size())));
    }
    [[nodiscard]] std::string AnyAccount() {
        return Below(20) == 0 ? std::string("Nowhere") : AnyOf(ledger_.Accounts()).first;
    }
    [[nodiscard]] std::string AnyCustomer() {
        return Below(20) == 0 ? std::string("Nobody") : AnyOf(ledger_.Customers());
    }
    // Mostly small, so that invoices are paid in full and in part; sometimes nothing, or a credit.
    [[nodiscard]] std::int64_t AnyAmount() {
        static constexpr std::int64_t kTypical[] = {0, 1, 10, 99, 1000, 3000, 4000, 6000, 10000, 123456, -1, -500};
        return Below(3) == 0 ? Below(20000) : kTypical[Below(std::size(kTypical))];
    }

    [[nodiscard]] bool IsCustomer(const std::string& name) const {
        return std::ranges::find(ledger_.Customers(), name) != ledger_.Customers().end();
    }
    [[nodiscard]] bool IsAccountOf(const std::string& name, std::initializer_list<std::string_view> types) const {
        return ledger_.CanPostTo(name) && std::ranges::find(types, ledger_.TypeOf(name)) != types.end();
    }

    // Sends the request; what the ledger makes of it counts when it is to be done, else nothing may change.
    template <class Change>
    void Expect(bool is_done, const std::string& request, const Change& change) {
        const std::string before = is_done ? std::string() : ExportText(*books_);
        const std::string status = Send(request);
        ASSERT_EQ(is_done, status == "0") << status << " for " << request;
        if (is_done) {
            change();
        } else {
            ASSERT_EQ(before, ExportText(*books_)) << request;
        }
    }

    void AddAccount(const std::string& name, const std::string& type) {
        const bool is_new = !ledger_.Accounts().contains(name);
        Expect(is_new,
               "<AccountAddRq><AccountAdd><Name>" + name + "</Name><AccountType>" + type +
                   "</AccountType></AccountAdd></AccountAddRq>",
               [&] { ledger_.AddAccount(name, type); });
    }

    void AddCustomer() {
        const std::string name = "Customer " + std::to_string(Below(12));
        const std::string parent = Below(2) == 0 ? AnyCustomer() : std::string();
        const std::string full_name = parent.empty() ? name : parent + ':' + name;
        Expect((parent.empty() || IsCustomer(parent)) && !IsCustomer(full_name),
               "<CustomerAddRq><CustomerAdd><Name>" + name + "</Name>" +
                   (parent.empty() ? std::string() : Named("ParentRef", parent)) + "</CustomerAdd></CustomerAddRq>",
               [&] { ledger_.AddCustomer(full_name); });
    }

    void SwitchAccount() {
        const std::string account = AnyOf(ledger_.Accounts()).first;
        // What everything else is paid into and from stays in use, so that a day has something to do.
        if (account == "Receivables" || account == "Sales" || account == "Undeposited Funds") {
            return;
        }
        const bool is_active = Below(3) != 0;
        const Element record = *books_->FindByName(kAccounts, account);
        Expect(true,
               "<AccountModRq><AccountMod><ListID>" + std::string(ChildText(record, "ListID")) +
                   "</ListID><EditSequence>" + std::string(ChildText(record, "EditSequence")) +
                   "</EditSequence><IsActive>" + (is_active ? "true" : "false") +
                   "</IsActive></AccountMod></AccountModRq>",
               [&] { ledger_.SetActive(account, is_active); });
    }

    void ReceivePayment() {
        const std::string customer = AnyCustomer();
        const std::int64_t amount = AnyAmount();
        const std::string account = Below(2) == 0 ? AnyAccount() : std::string();
        const bool is_applied = Below(2) == 0;
        const std::string into = account.empty() ? "Undeposited Funds" : account;
        Expect(IsCustomer(customer) && amount > 0 && IsAccountOf(into, {"Bank", "OtherCurrentAsset"}),
               "<ReceivePaymentAddRq><ReceivePaymentAdd>" + Named("CustomerRef", customer) + "<TotalAmount>" +
                   FormatCents(amount) + "</TotalAmount>" +
                   (account.empty() ? std::string() : Named("DepositToAccountRef", account)) +
                   (is_applied ? "<IsAutoApply>true</IsAutoApply>" : "") + "</ReceivePaymentAdd></ReceivePaymentAddRq>",
               [&] {
                   ledger_.Record({{{into, ""}, amount}, {{"Receivables", customer}, -amount}});
                   if (is_applied) {
                       static_cast<void>(ledger_.Apply(customer, amount));
                   }
               });
    }

    // A sale, or what of it is taken back.
    void Sell(bool is_returned) {
        const std::string customer = AnyCustomer();
        std::int64_t total = 0;
        std::string lines;
        const std::string line_name = is_returned ? "CreditMemoLineAdd" : "SalesReceiptLineAdd";
        for (int line = Below(3); line >= 0; --line) {
            const std::int64_t amount = AnyAmount();
            total += amount;
            lines += '<' + line_name + '>' + Named("ItemRef", "Goods") + "<Amount>" + FormatCents(amount) +
                     "</Amount></" + line_name + '>';
        }
        const std::string kind = is_returned ? "CreditMemoAdd" : "SalesReceiptAdd";
        Expect(IsCustomer(customer) && total >= 0,
               '<' + kind + "Rq><" + kind + '>' + Named("CustomerRef", customer) + lines + "</" + kind + "></" + kind +
                   "Rq>",
               [&] {
                   ledger_.Record(is_returned ? Postings{{{"Receivables", customer}, -total}, {{"Sales", ""}, total}}
                                              : Postings{{{"Undeposited Funds", ""}, total}, {{"Sales", ""}, -total}});
               });
    }

    // Money moves between one account and those of the lines: to it in a deposit, from it in a check.
    void Move(bool is_deposit) {
        const std::string account = AnyAccount();
        const std::string line_name = is_deposit ? "DepositLineAdd" : "ExpenseLineAdd";
        const int side = is_deposit ? 1 : -1;
        bool is_done = is_deposit ? IsAccountOf(account, {"Bank", "CreditCard", "Equity", "OtherCurrentAsset"})
                                  : IsAccountOf(account, {"Bank", "CreditCard", "OtherCurrentAsset"});
        std::int64_t total = 0;
        Postings postings;
        std::string lines;
        for (int line = Below(3); line >= 0; --line) {
            const std::string other = AnyAccount();
            const std::string customer = Below(2) == 0 ? AnyCustomer() : std::string();
            const std::int64_t amount = AnyAmount();
            const bool is_receivable = other == "Receivables";
            is_done = is_done && ledger_.CanPostTo(other) && (customer.empty() || IsCustomer(customer)) &&
                      (!is_receivable || !customer.empty());
            total += amount;
            postings[{other, is_receivable ? customer : ""}] -= side * amount;
            lines += '<' + line_name + '>' + Named("AccountRef", other) +
                     (customer.empty() ? std::string() : Named("EntityRef", customer)) + "<Amount>" +
                     FormatCents(amount) + "</Amount></" + line_name + '>';
        }
        postings[{account, ""}] += side * total;
        const std::string kind = is_deposit ? "DepositAdd" : "CheckAdd";
        Expect(is_done && total > 0,
               '<' + kind + "Rq><" + kind + '>' + Named(is_deposit ? "DepositToAccountRef" : "AccountRef", account) +
                   lines + "</" + kind + "></" + kind + "Rq>",
               [&] { ledger_.Record(postings); });
    }

    void DoAnything() {
        switch (Below(12)) {
            case 0:
                AddAccount("Account " + std::to_string(Below(12)), Below(2) == 0 ? "Bank" : "Expense");
                break;
            case 1:
                AddCustomer();
                break;
            case 2:
                SwitchAccount();
                break;
            case 3:
            case 4:
            case 5:
                ReceivePayment();
                break;
            case 6:
            case 7:
                Sell(Below(2) == 0);
                break;
            default:
                Move(Below(2) == 0);
                break;
        }
    }

    void Compare() {
        for (const auto& [account, state] : ledger_.Accounts()) {
            if (state.type != "NonPosting") {
                ASSERT_EQ(FormatCents(ledger_.BalanceOfAccount(account)), BalanceOf(*books_, kAccounts, account))
                    << account;
            }
        }
        for (const std::string& customer : ledger_.Customers()) {
            ASSERT_EQ(FormatCents(ledger_.BalanceOfCustomer(customer)), BalanceOf(*books_, kCustomers, customer))
                << customer;
        }
        for (const NaiveLedger::Invoice& invoice : ledger_.Invoices()) {
            ASSERT_EQ(FormatCents(invoice.total - invoice.paid),
                      ChildText(*books_->FindById(kInvoices, invoice.id), "BalanceRemaining"))
                << invoice.id;
        }
        // A sale of nothing has no postings, which the books' text shows as none.
        std::vector<Postings> journal = ledger_.Journal();
        std::erase_if(journal, [](const Postings& postings) { return postings.empty(); });
        ASSERT_EQ(journal, JournalOf(*books_));
        // All of it as text, and back.
        const std::string text = ExportText(*books_);
        const auto again = Company::CreateInMemory(CompanyNameIn(text));
        ImportText(*again, text);
        ASSERT_TRUE(ExportText(*again) == text);
    }

    std::unique_ptr<Company> books_ = SampleBooks();
    NaiveLedger ledger_;
    std::mt19937 random_{GetParam()};
};

TEST_P(NaiveDay, EndsWithTheSameBooks) {
    for (int request = 1; request <= kRequestsOfADay; ++request) {
        ASSERT_NO_FATAL_FAILURE(DoAnything()) << "request " << request << " of the day with the seed " << GetParam();
        if (request % kRequestsBetweenComparisons == 0) {
            ASSERT_NO_FATAL_FAILURE(Compare()) << "seed " << GetParam() << " after " << request << " requests";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, NaiveDay, ::testing::Values(1U, 2U, 3U, 4U));

}  // namespace
}  // namespace paylodge::refhost
