// The books of one company: lists of records, each record named and filled as responses show it.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "refhost/books/element.hpp"

namespace paylodge::refhost {

// One list of the company file.
struct ListKind {
    // The element that holds the list, and the one of each record; responses add "Ret" to the latter.
    std::string_view section;
    std::string_view record;
    // The element that identifies a record.
    std::string_view id;
    // For messages.
    std::string_view noun;
};

inline constexpr ListKind kAccounts{"Accounts", "Account", "ListID", "account"};
inline constexpr ListKind kCustomers{"Customers", "Customer", "ListID", "customer"};
inline constexpr ListKind kItems{"Items", "Item", "ListID", "item"};
inline constexpr ListKind kPaymentMethods{"PaymentMethods", "PaymentMethod", "ListID", "payment method"};
inline constexpr ListKind kSalesTaxCodes{"SalesTaxCodes", "SalesTaxCode", "ListID", "sales tax code"};
inline constexpr ListKind kInvoices{"Invoices", "Invoice", "TxnID", "invoice"};
inline constexpr ListKind kReceivedPayments{"ReceivedPayments", "ReceivePayment", "TxnID", "received payment"};
inline constexpr ListKind kSalesReceipts{"SalesReceipts", "SalesReceipt", "TxnID", "sales receipt"};
inline constexpr ListKind kCreditMemos{"CreditMemos", "CreditMemo", "TxnID", "credit memo"};
inline constexpr ListKind kDeposits{"Deposits", "Deposit", "TxnID", "deposit"};
inline constexpr ListKind kChecks{"Checks", "Check", "TxnID", "check"};
// They have no id: a category and a number say which one is meant.
inline constexpr ListKind kDataFileRecords{"DataFileRecords", "DataFileRecord", "", "data file record"};

using RecordTest = std::function<bool(const Element& record)>;

class Company {
  public:
    // Takes over what stands in a company file. Raises HostError when it is not the content of one.
    explicit Company(Element root);

    // What has to stand in the company file.
    [[nodiscard]] const Element& Root() const noexcept { return root_; }

    [[nodiscard]] std::span<const Element> Records(const ListKind& kind) const;
    // The record with this id or full name (letter case does not matter), or null. Valid until the next addition.
    [[nodiscard]] const Element* FindById(const ListKind& kind, std::string_view id) const;
    [[nodiscard]] const Element* FindByName(const ListKind& kind, std::string_view full_name) const;

    // A new record with its id, times and edit sequence, to be filled and then added.
    [[nodiscard]] Element NewRecord(const ListKind& kind, std::string_view now) const;
    // The record as it stands in the list afterwards; valid until the next addition.
    const Element& Add(const ListKind& kind, Element record);
    // The record with this id for writing; its edit sequence and time are moved on. The id has to exist.
    [[nodiscard]] Element& Change(const ListKind& kind, std::string_view id, std::string_view now);

    // The same for records that have no id of the company's: the first that passes the test, or null.
    [[nodiscard]] const Element* Find(const ListKind& kind, const RecordTest& test) const;
    // Puts the record in the place of the first that passes the test, or at the end when none does.
    void Put(const ListKind& kind, const RecordTest& test, Element record);
    void Remove(const ListKind& kind, const RecordTest& test);

    // Whether anything was added or changed since the books were read or saved.
    [[nodiscard]] bool IsChanged() const noexcept { return is_changed_; }
    // Does the work and, if that changed the books, saves them. When either raises, the books are as before.
    template <class Work>
    auto ChangeAndSave(const Work& work, const std::function<void()>& save) {
        Company before = *this;
        try {
            auto result = work();
            if (is_changed_) {
                save();
                is_changed_ = false;
            }
            return result;
        } catch (...) {
            *this = std::move(before);
            throw;
        }
    }

  private:
    [[nodiscard]] const Element* FindSection(const ListKind& kind) const noexcept;
    [[nodiscard]] Element& Section(const ListKind& kind);

    Element root_;
    std::uint32_t next_number_ = 1;
    bool is_changed_ = false;
};

// "Parent:Name" where there is a parent, else the name.
[[nodiscard]] std::string_view FullName(const Element& record) noexcept;

// Adds to a record's amount of this name.
void AddToAmount(Element& record, std::string_view name, std::int64_t cents);

}  // namespace paylodge::refhost
