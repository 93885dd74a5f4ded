#include "refhost/books/list_kinds.hpp"

#include <array>

namespace paylodge::refhost {
namespace {

constexpr Column kName{"Name", Shape::kText, "t.name", "name", nullptr, true};
constexpr Column kFullName{"FullName", Shape::kText, "t.full_name", "full_name"};
constexpr Column kIsActive{"IsActive", Shape::kBoolean, "t.is_active", "is_active"};
constexpr Column kSublevel{"Sublevel", Shape::kNumber, "length(t.full_name) - length(replace(t.full_name, ':', ''))"};
constexpr Column kDescription{"Desc", Shape::kText, "t.description", "description"};

[[nodiscard]] constexpr Column Reference(std::string_view element, std::string_view value, std::string_view stored,
                                         const ListKind& target, bool is_required = false) {
    return {element, Shape::kReference, value, stored, &target, is_required};
}
[[nodiscard]] constexpr Column Parent(const ListKind& kind) {
    return Reference("ParentRef", "t.parent", "parent", kind);
}

constexpr std::array kAccountColumns{
    kName,
    kFullName,
    kIsActive,
    Parent(kAccounts),
    kSublevel,
    Column{"AccountType", Shape::kText, "t.type", "type", nullptr, true},
    Column{"AccountNumber", Shape::kText, "t.account_number", "account_number"},
    Column{"BankNumber", Shape::kText, "t.bank_number", "bank_number"},
    kDescription,
    Column{"Balance", Shape::kAmount,
           "t.balance * (SELECT normal_side FROM account_types WHERE account_types.type = t.type)"},
};

constexpr std::array kCustomerColumns{
    kName,
    kFullName,
    kIsActive,
    Parent(kCustomers),
    kSublevel,
    Column{"CompanyName", Shape::kText, "t.company_name", "company_name"},
    Column{"Contact", Shape::kText, "t.contact", "contact"},
    Column{"Phone", Shape::kText, "t.phone", "phone"},
    Column{"Email", Shape::kText, "t.email", "email"},
    Column{"Balance", Shape::kAmount, "t.balance"},
};

constexpr std::array kTaxCodeColumns{
    kName,
    kIsActive,
    Column{"IsTaxable", Shape::kBoolean, "t.is_taxable", "is_taxable", nullptr, true},
    kDescription,
};

constexpr std::array kPaymentMethodColumns{
    kName,
    kIsActive,
    Column{"PaymentMethodType", Shape::kText, "t.type", "type"},
};

constexpr std::array kItemColumns{
    kName,
    kFullName,
    kIsActive,
    Parent(kItems),
    kSublevel,
    Column{"ItemType", Shape::kText, "t.type", "type", nullptr, true},
    Column{"ItemDesc", Shape::kText, "t.description", "description"},
    Reference("SalesTaxCodeRef", "t.tax_code", "tax_code", kSalesTaxCodes),
    Column{"Price", Shape::kAmount, "t.price", "price"},
    Reference("AccountRef", "t.account", "account", kAccounts),
    Reference("PaymentMethodRef", "t.payment_method", "payment_method", kPaymentMethods),
};

// What transactions have in common.
constexpr Column kCustomer = Reference("CustomerRef", "t.customer", "customer", kCustomers);
constexpr Column kReceivables = Reference("ARAccountRef", "t.receivables", "receivables", kAccounts);
constexpr Column kTxnDate{"TxnDate", Shape::kText, "t.txn_date", "txn_date", nullptr, true};
constexpr Column kRefNumber{"RefNumber", Shape::kText, "t.ref_number", "ref_number"};
constexpr Column kMemo{"Memo", Shape::kText, "t.memo", "memo"};
constexpr Column kPaymentMethod = Reference("PaymentMethodRef", "t.payment_method", "payment_method", kPaymentMethods);
constexpr Column kDepositTo = Reference("DepositToAccountRef", "t.account", "account", kAccounts);
constexpr Column kTotal{"TotalAmount", Shape::kAmount, "t.total", "total", nullptr, true};

constexpr std::array kInvoiceColumns{
    kCustomer,
    kReceivables,
    kTxnDate,
    kRefNumber,
    kMemo,
    Column{"Subtotal", Shape::kAmount, "t.total", "total", nullptr, true},
    Column{"AppliedAmount", Shape::kAmount, "t.remaining - t.total"},
    Column{"BalanceRemaining", Shape::kAmount, "t.remaining"},
    Column{"IsPaid", Shape::kBoolean, "t.remaining = 0"},
};

constexpr std::array kReceivedPaymentColumns{
    kCustomer,  kReceivables, kTxnDate,
    kRefNumber, kTotal,       kPaymentMethod,
    kMemo,      kDepositTo,   Column{"UnusedPayment", Shape::kAmount, "t.remaining"},
};

constexpr std::array kSalesReceiptColumns{kTxnDate, kRefNumber, kMemo, kCustomer, kPaymentMethod, kDepositTo, kTotal};

constexpr std::array kCreditMemoColumns{kTxnDate, kRefNumber, kMemo, kCustomer, kReceivables, kTotal};

constexpr std::array kDepositColumns{
    kTxnDate, kRefNumber, kMemo, kDepositTo, Column{"DepositTotal", Shape::kAmount, "t.total", "total", nullptr, true},
};

constexpr std::array kCheckColumns{
    kTxnDate,
    kRefNumber,
    kMemo,
    Reference("AccountRef", "t.account", "account", kAccounts),
    Reference("PayeeEntityRef", "t.customer", "customer", kCustomers),
    kTotal,
};

constexpr std::array kJournalEntryColumns{kTxnDate, kRefNumber, kMemo, kTotal};

constexpr std::array kAll{&kAccounts,    &kCustomers, &kSalesTaxCodes,    &kPaymentMethods,
                          &kItems,       &kInvoices,  &kReceivedPayments, &kSalesReceipts,
                          &kCreditMemos, &kDeposits,  &kChecks,           &kJournalEntries};

}  // namespace

constexpr ListKind kAccounts{"Accounts", "Account", "ListID", "account", "accounts", "full_name", kAccountColumns};
constexpr ListKind kCustomers{"Customers", "Customer",  "ListID",        "customer",
                              "customers", "full_name", kCustomerColumns};
constexpr ListKind kSalesTaxCodes{"SalesTaxCodes", "SalesTaxCode", "ListID",       "sales tax code",
                                  "tax_codes",     "name",         kTaxCodeColumns};
constexpr ListKind kPaymentMethods{
    "PaymentMethods", "PaymentMethod", "ListID", "payment method", "payment_methods", "name", kPaymentMethodColumns};
constexpr ListKind kItems{"Items", "Item", "ListID", "item", "items", "full_name", kItemColumns};
constexpr ListKind kInvoices{"Invoices",     "Invoice", "TxnID",         "invoice",
                             "transactions", "",        kInvoiceColumns, {"InvoiceLineRet"}};
constexpr ListKind kReceivedPayments{
    "ReceivedPayments", "ReceivePayment", "TxnID", "received payment", "transactions", "", kReceivedPaymentColumns};
constexpr ListKind kSalesReceipts{"SalesReceipts",      "SalesReceipt",         "TxnID",
                                  "sales receipt",      "transactions",         "",
                                  kSalesReceiptColumns, {"SalesReceiptLineRet"}};
constexpr ListKind kCreditMemos{"CreditMemos",      "CreditMemo",         "TxnID", "credit memo", "transactions", "",
                                kCreditMemoColumns, {"CreditMemoLineRet"}};
constexpr ListKind kDeposits{"Deposits",     "Deposit", "TxnID",         "deposit",
                             "transactions", "",        kDepositColumns, {"DepositLineRet"}};
constexpr ListKind kChecks{"Checks", "Check", "TxnID", "check", "transactions", "", kCheckColumns, {"ExpenseLineRet"}};
constexpr ListKind kJournalEntries{"JournalEntries",     "JournalEntry",    "TxnID",
                                   "journal entry",      "transactions",    "",
                                   kJournalEntryColumns, {"JournalLineRet"}};

std::span<const ListKind* const> AllKinds() noexcept { return kAll; }

}  // namespace paylodge::refhost
