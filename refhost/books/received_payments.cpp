// Received payments.

#include <algorithm>
#include <array>

#include "refhost/books/changes.hpp"
#include "refhost/books/status.hpp"
#include "refhost/books/transaction_kinds.hpp"
#include "refhost/books/values.hpp"

namespace paylodge::refhost {
namespace {

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

[[nodiscard]] std::int64_t PaidAmount(const Element& add) {
    const std::int64_t cents = *ParseCents(ChildText(add, "TotalAmount"));
    if (cents <= 0) {
        throw RefusedRequest(Code::kInvalidValue, "ReceivePaymentAdd/TotalAmount is not above 0.");
    }
    return cents;
}

}  // namespace

Answer AddReceivedPayment(const RequestContext& context) {
    const Element& add = *FindChild(context.request, "ReceivePaymentAdd");
    const std::int64_t cents = PaidAmount(add);
    const Company& company = context.company;
    const Element& customer = ResolveRequired(company, kCustomers, add, "CustomerRef");
    const Element& receivables = ReceivablesAccount(company);
    const Element& deposit_account = ResolveDepositAccount(company, add, "DepositToAccountRef");
    const Element* const method = Resolve(company, kPaymentMethods, add, "PaymentMethodRef");

    Element payment = context.company.NewRecord(kReceivedPayments, context.now);
    AddReference(payment, "CustomerRef", &customer);
    AddReference(payment, "ARAccountRef", &receivables);
    AddTransactionDate(payment, add, context.now);
    AddText(payment, "RefNumber", ChildText(add, "RefNumber"));
    AddText(payment, "TotalAmount", FormatCents(cents));
    AddReference(payment, "PaymentMethodRef", method);
    AddText(payment, "Memo", ChildText(add, "Memo"));
    AddReference(payment, "DepositToAccountRef", &deposit_account);
    AddCardInfo(payment, add);
    std::int64_t unused = cents;
    if (ChildText(add, "IsAutoApply") == "true") {
        unused = ApplyToInvoices(context, ChildText(customer, "ListID"), cents, payment);
    }
    AddText(payment, "UnusedPayment", FormatCents(unused));
    ChangeBalance(context, kCustomers, customer, -cents);
    ChangeBalance(context, kAccounts, receivables, -cents);
    ChangeBalance(context, kAccounts, deposit_account, cents);
    return AnswerWith(context.company.Add(kReceivedPayments, std::move(payment)), context.request);
}

}  // namespace paylodge::refhost
