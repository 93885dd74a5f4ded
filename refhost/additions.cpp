#include "refhost/additions.hpp"

#include <algorithm>
#include <optional>

#include "refhost/status.hpp"
#include "refhost/values.hpp"

namespace paylodge::refhost {
namespace {

constexpr Field kIncludeRetElement{.name = "IncludeRetElement", .occurs = Occurs::kRepeated};
constexpr size_t kLongestNumber = 30;

// The record that a reference of the request names by id or by name, or null when it names none. Raises RefusedRequest
// when there is no such record.
[[nodiscard]] const Element* Resolve(const Company& company, const ListKind& kind, const Element& request,
                                     std::string_view name) {
    const Element* const reference = FindChild(request, name);
    if (reference == nullptr) {
        return nullptr;
    }
    const std::string_view id = ChildText(*reference, "ListID");
    const std::string_view full_name = ChildText(*reference, "FullName");
    if (id.empty() && full_name.empty()) {
        return nullptr;
    }
    const Element* const record = id.empty() ? company.FindByName(kind, full_name) : company.FindById(kind, id);
    if (record == nullptr) {
        throw RefusedRequest(Code::kUnknownReference, std::string(name) + " names the " + std::string(kind.noun) + ' ' +
                                                          Quoted(id.empty() ? full_name : id) +
                                                          ", which does not exist.");
    }
    return record;
}

[[nodiscard]] Element MakeReference(std::string_view name, const Element& record) {
    Element reference = MakeElement(name);
    AddText(reference, "ListID", ChildText(record, "ListID"));
    AddText(reference, "FullName", FullName(record));
    return reference;
}

void AddReference(Element& record, std::string_view name, const Element* target) {
    if (target != nullptr) {
        record.children.push_back(MakeReference(name, *target));
    }
}

[[nodiscard]] Answer Added(const Element& record, const Element& request) {
    return {.records = {MakeReturned(record, request)}, .not_found = {}};
}

// Accounts

constexpr std::array kAccountAddFields{
    Field{.name = "Name", .occurs = Occurs::kOnce, .longest = kLongestName},
    Field{.name = "IsActive", .form = Form::kBoolean},
    Reference("ParentRef"),
    Choice("AccountType", kAccountTypes, Occurs::kOnce),
    Field{.name = "AccountNumber", .longest = kLongestNumber},
    Field{.name = "BankNumber", .longest = kLongestNumber},
    Field{.name = "Desc"},
};
constexpr std::array kAccountAddRequest{Aggregate("AccountAdd", kAccountAddFields, Occurs::kOnce), kIncludeRetElement};

// The name with its parents' in front. Raises RefusedRequest when the name cannot be used.
[[nodiscard]] std::string NewFullName(const Company& company, const ListKind& kind, std::string_view name,
                                      const Element* parent) {
    if (name.find(':') != std::string_view::npos) {
        throw RefusedRequest(Code::kInvalidValue, "Name has a colon, which stands between a parent and its part.");
    }
    std::string full_name = parent == nullptr ? std::string() : std::string(FullName(*parent)) + ':';
    full_name += name;
    if (company.FindByName(kind, full_name) != nullptr) {
        throw RefusedRequest(Code::kNameExists,
                             "Name: the " + std::string(kind.noun) + ' ' + Quoted(full_name) + " exists already.");
    }
    return full_name;
}

[[nodiscard]] Answer AddAccount(const RequestContext& context) {
    const Element& add = *FindChild(context.request, "AccountAdd");
    const std::string_view type = CanonicalChoice(kAccountTypes, ChildText(add, "AccountType"));
    const std::string_view name = Trimmed(ChildText(add, "Name"));
    const Element* const parent = Resolve(context.company, kAccounts, add, "ParentRef");
    if (parent != nullptr && ChildText(*parent, "AccountType") != type) {
        throw RefusedRequest(Code::kInvalidValue, "AccountType differs from the one of the account in ParentRef.");
    }
    const std::string full_name = NewFullName(context.company, kAccounts, name, parent);

    Element account = context.company.NewRecord(kAccounts, context.now);
    AddText(account, "Name", name);
    AddText(account, "FullName", full_name);
    AddText(account, "IsActive", ChildText(add, "IsActive") == "false" ? "false" : "true");
    AddReference(account, "ParentRef", parent);
    AddText(account, "Sublevel", std::to_string(std::ranges::count(full_name, ':')));
    AddText(account, "AccountType", type);
    AddText(account, "AccountNumber", ChildText(add, "AccountNumber"));
    AddText(account, "BankNumber", ChildText(add, "BankNumber"));
    AddText(account, "Desc", ChildText(add, "Desc"));
    AddText(account, "Balance", "0.00");
    return Added(context.company.Add(kAccounts, std::move(account)), context.request);
}

// Received payments

constexpr std::array kCardInputFields{
    Field{.name = "CreditCardNumber", .longest = kLongestNumber},
    Field{.name = "ExpirationMonth", .longest = kLongestNumber},
    Field{.name = "ExpirationYear", .longest = kLongestNumber},
    Field{.name = "NameOnCard"},
};
constexpr std::array kCardResultFields{
    Field{.name = "ResultCode"},           Field{.name = "ResultMessage"},
    Field{.name = "CreditCardTransID"},    Field{.name = "MerchantAccountNumber"},
    Field{.name = "AuthorizationCode"},    Field{.name = "ReconBatchID"},
    Field{.name = "PaymentGroupingCode"},  Field{.name = "PaymentStatus"},
    Field{.name = "TxnAuthorizationTime"}, Field{.name = "TxnAuthorizationStamp"},
    Field{.name = "ClientTransID"},
};
constexpr std::array kCardFields{Aggregate("CreditCardTxnInputInfo", kCardInputFields),
                                 Aggregate("CreditCardTxnResultInfo", kCardResultFields)};
constexpr std::array kReceivePaymentFields{
    Reference("CustomerRef", Occurs::kOnce),
    Field{.name = "TxnDate", .form = Form::kDate},
    Field{.name = "RefNumber", .longest = kLongestNumber},
    Field{.name = "TotalAmount", .form = Form::kAmount, .occurs = Occurs::kOnce},
    Reference("PaymentMethodRef"),
    Field{.name = "Memo"},
    Reference("DepositToAccountRef"),
    Aggregate("CreditCardTxnInfo", kCardFields),
    Field{.name = "IsAutoApply", .form = Form::kBoolean},
};
constexpr std::array kReceivePaymentAddRequest{Aggregate("ReceivePaymentAdd", kReceivePaymentFields, Occurs::kOnce),
                                               kIncludeRetElement};

constexpr std::string_view kUndepositedFunds = "Undeposited Funds";

// Where a received payment changes the books.
struct PaymentTarget {
    const Element& customer;
    const Element& receivables;
    const Element& deposit_account;
};

[[nodiscard]] const Element& ReceivablesAccount(const Company& company) {
    const auto accounts = company.Records(kAccounts);
    const auto found = std::ranges::find_if(
        accounts, [](const Element& account) { return ChildText(account, "AccountType") == "AccountsReceivable"; });
    if (found == accounts.end()) {
        throw RefusedRequest(Code::kUnknownReference,
                             "The company file has no account of the type AccountsReceivable.");
    }
    return *found;
}

[[nodiscard]] const Element& DepositAccount(const Company& company, const Element& add) {
    if (const Element* const account = Resolve(company, kAccounts, add, "DepositToAccountRef")) {
        return *account;
    }
    const Element* const account = company.FindByName(kAccounts, kUndepositedFunds);
    if (account == nullptr) {
        throw RefusedRequest(Code::kUnknownReference, "DepositToAccountRef is missing, and there is no account " +
                                                          Quoted(kUndepositedFunds) + '.');
    }
    return *account;
}

[[nodiscard]] PaymentTarget FindPaymentTarget(const Company& company, const Element& add) {
    const Element* const customer = Resolve(company, kCustomers, add, "CustomerRef");
    if (customer == nullptr) {
        throw RefusedRequest(Code::kMissingField, "ReceivePaymentAdd/CustomerRef/FullName is missing.");
    }
    return {*customer, ReceivablesAccount(company), DepositAccount(company, add)};
}

// Of a card number only the last four digits are kept.
void MaskCardNumber(Element& card) {
    Element* const input = FindChild(card, "CreditCardTxnInputInfo");
    Element* const number = input == nullptr ? nullptr : FindChild(*input, "CreditCardNumber");
    if (number == nullptr) {
        return;
    }
    constexpr size_t kShown = 4;
    const size_t hidden = number->text.size() > kShown ? number->text.size() - kShown : 0;
    std::fill_n(number->text.begin(), hidden, 'x');
}

// The open invoices of the customer, the oldest first.
[[nodiscard]] std::vector<const Element*> OpenInvoices(const Company& company, std::string_view customer_id) {
    std::vector<const Element*> invoices;
    for (const Element& invoice : company.Records(kInvoices)) {
        const Element* const customer = FindChild(invoice, "CustomerRef");
        if (customer != nullptr && ChildText(*customer, "ListID") == customer_id &&
            ChildText(invoice, "IsPaid") != "true") {
            invoices.push_back(&invoice);
        }
    }
    std::ranges::stable_sort(invoices, {}, [](const Element* invoice) { return ChildText(*invoice, "TxnDate"); });
    return invoices;
}

// Lowers one invoice by as much of the amount as it takes, and says so in the payment. Returns what is left.
[[nodiscard]] std::int64_t ApplyToInvoice(const RequestContext& context, const Element& open, std::int64_t cents,
                                          Element& payment) {
    const std::int64_t balance = ParseCents(ChildText(open, "BalanceRemaining")).value_or(0);
    const std::int64_t applied = std::min(balance, cents);
    if (applied <= 0) {
        return cents;
    }
    Element& invoice = context.company.Change(kInvoices, ChildText(open, kInvoices.id), context.now);
    AddToAmount(invoice, "AppliedAmount", -applied);
    AddToAmount(invoice, "BalanceRemaining", -applied);
    SetChildText(invoice, "IsPaid", applied == balance ? "true" : "false");
    Element& line = payment.children.emplace_back(MakeElement("AppliedToTxnRet"));
    AddText(line, "TxnID", ChildText(invoice, "TxnID"));
    AddText(line, "RefNumber", ChildText(invoice, "RefNumber"));
    AddText(line, "BalanceRemaining", ChildText(invoice, "BalanceRemaining"));
    AddText(line, "Amount", FormatCents(applied));
    return cents - applied;
}

// Pays the customer's open invoices; returns what none of them took.
[[nodiscard]] std::int64_t ApplyToInvoices(const RequestContext& context, std::string_view customer_id,
                                           std::int64_t cents, Element& payment) {
    for (const Element* const invoice : OpenInvoices(context.company, customer_id)) {
        cents = ApplyToInvoice(context, *invoice, cents, payment);
    }
    return cents;
}

void ChangeBalances(const RequestContext& context, const PaymentTarget& target, std::int64_t cents) {
    const auto add = [&](const ListKind& kind, const Element& record, std::int64_t change) {
        AddToAmount(context.company.Change(kind, ChildText(record, kind.id), context.now), "Balance", change);
    };
    add(kCustomers, target.customer, -cents);
    add(kAccounts, target.receivables, -cents);
    add(kAccounts, target.deposit_account, cents);
}

[[nodiscard]] std::int64_t PaidAmount(const Element& add) {
    const std::int64_t cents = *ParseCents(ChildText(add, "TotalAmount"));
    if (cents <= 0) {
        throw RefusedRequest(Code::kInvalidValue, "ReceivePaymentAdd/TotalAmount is not above 0.");
    }
    return cents;
}

[[nodiscard]] Answer AddReceivedPayment(const RequestContext& context) {
    const Element& add = *FindChild(context.request, "ReceivePaymentAdd");
    const std::int64_t cents = PaidAmount(add);
    const PaymentTarget target = FindPaymentTarget(context.company, add);
    const Element* const method = Resolve(context.company, kPaymentMethods, add, "PaymentMethodRef");

    Element payment = context.company.NewRecord(kReceivedPayments, context.now);
    AddReference(payment, "CustomerRef", &target.customer);
    AddReference(payment, "ARAccountRef", &target.receivables);
    const std::string_view date = ChildText(add, "TxnDate");
    AddText(payment, "TxnDate", date.empty() ? context.now.substr(0, 10) : date);
    AddText(payment, "RefNumber", ChildText(add, "RefNumber"));
    AddText(payment, "TotalAmount", FormatCents(cents));
    AddReference(payment, "PaymentMethodRef", method);
    AddText(payment, "Memo", ChildText(add, "Memo"));
    AddReference(payment, "DepositToAccountRef", &target.deposit_account);
    if (const Element* const card = FindChild(add, "CreditCardTxnInfo")) {
        MaskCardNumber(payment.children.emplace_back(*card));
    }
    std::int64_t unused = cents;
    if (ChildText(add, "IsAutoApply") == "true") {
        unused = ApplyToInvoices(context, ChildText(target.customer, "ListID"), cents, payment);
    }
    AddText(payment, "UnusedPayment", FormatCents(unused));
    ChangeBalances(context, target, cents);
    return Added(context.company.Add(kReceivedPayments, std::move(payment)), context.request);
}

constexpr std::array kAdditions{
    RequestKind{"AccountAddRq", kAccountAddRequest, AddAccount},
    RequestKind{"ReceivePaymentAddRq", kReceivePaymentAddRequest, AddReceivedPayment},
};

}  // namespace

std::span<const RequestKind> Additions() noexcept { return kAdditions; }

}  // namespace paylodge::refhost
