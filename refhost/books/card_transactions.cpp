// What a card terminal's day is recorded as: sales receipts, credit memos, deposits and checks.

#include <array>

#include "refhost/books/changes.hpp"
#include "refhost/books/status.hpp"
#include "refhost/books/transaction_kinds.hpp"
#include "refhost/books/values.hpp"

namespace paylodge::refhost {
namespace {

// A line of the request, with the record that it refers to and its amount.
struct Line {
    const Element* target;
    std::int64_t cents;
};

// The lines of a transaction, checked. Raises RefusedRequest for a transaction without lines and for a line whose
// reference names nothing.
[[nodiscard]] std::vector<Line> ReadLines(const Company& company, const Element& add, std::string_view line_name,
                                          const ListKind& kind, std::string_view reference) {
    std::vector<Line> lines;
    for (const Element& child : add.children) {
        if (child.name == line_name) {
            lines.push_back(
                {&ResolveRequired(company, kind, child, reference), *ParseCents(ChildText(child, "Amount"))});
        }
    }
    if (lines.empty()) {
        throw RefusedRequest(Code::kMissingField, add.name + '/' + std::string(line_name) + " is missing.");
    }
    return lines;
}

[[nodiscard]] std::int64_t TotalOf(const std::vector<Line>& lines) noexcept {
    std::int64_t total = 0;
    for (const Line& line : lines) {
        total += line.cents;
    }
    return total;
}

// The lines as a record shows them.
void AddLines(Element& record, std::string_view name, std::string_view reference, const std::vector<Line>& lines) {
    for (const Line& line : lines) {
        Element& returned = record.children.emplace_back(MakeElement(name));
        AddReference(returned, reference, line.target);
        AddText(returned, "Amount", FormatCents(line.cents));
    }
}

// What every transaction says of itself, in this order.
[[nodiscard]] Element NewTransaction(const RequestContext& context, const ListKind& kind, const Element& add) {
    Element record = context.company.NewRecord(kind, context.now);
    AddTransactionDate(record, add, context.now);
    AddText(record, "RefNumber", ChildText(add, "RefNumber"));
    AddText(record, "Memo", ChildText(add, "Memo"));
    return record;
}

}  // namespace

// Money comes in: to the deposit account, or to the undeposited funds.
Answer AddSalesReceipt(const RequestContext& context) {
    const Element& add = *FindChild(context.request, "SalesReceiptAdd");
    const Element* const customer = Resolve(context.company, kCustomers, add, "CustomerRef");
    const Element* const method = Resolve(context.company, kPaymentMethods, add, "PaymentMethodRef");
    const Element& account = ResolveDepositAccount(context.company, add, "DepositToAccountRef");
    const auto lines = ReadLines(context.company, add, "SalesReceiptLineAdd", kItems, "ItemRef");

    Element receipt = NewTransaction(context, kSalesReceipts, add);
    AddReference(receipt, "CustomerRef", customer);
    AddReference(receipt, "PaymentMethodRef", method);
    AddReference(receipt, "DepositToAccountRef", &account);
    AddText(receipt, "TotalAmount", FormatCents(TotalOf(lines)));
    AddCardInfo(receipt, add);
    AddLines(receipt, "SalesReceiptLineRet", "ItemRef", lines);
    ChangeBalance(context, kAccounts, account, TotalOf(lines));
    return AnswerWith(context.company.Add(kSalesReceipts, std::move(receipt)), context.request);
}

// The customer owes less.
Answer AddCreditMemo(const RequestContext& context) {
    const Element& add = *FindChild(context.request, "CreditMemoAdd");
    const Element& customer = ResolveRequired(context.company, kCustomers, add, "CustomerRef");
    const Element& receivables = ReceivablesAccount(context.company);
    const auto lines = ReadLines(context.company, add, "CreditMemoLineAdd", kItems, "ItemRef");

    Element memo = NewTransaction(context, kCreditMemos, add);
    AddReference(memo, "CustomerRef", &customer);
    AddReference(memo, "ARAccountRef", &receivables);
    AddText(memo, "TotalAmount", FormatCents(TotalOf(lines)));
    AddCardInfo(memo, add);
    AddLines(memo, "CreditMemoLineRet", "ItemRef", lines);
    ChangeBalance(context, kCustomers, customer, -TotalOf(lines));
    ChangeBalance(context, kAccounts, receivables, -TotalOf(lines));
    return AnswerWith(context.company.Add(kCreditMemos, std::move(memo)), context.request);
}

// Money moves from the accounts of the lines to the account of the deposit.
Answer AddDeposit(const RequestContext& context) {
    const Element& add = *FindChild(context.request, "DepositAdd");
    const Element& account = ResolveRequired(context.company, kAccounts, add, "DepositToAccountRef");
    const auto lines = ReadLines(context.company, add, "DepositLineAdd", kAccounts, "AccountRef");

    Element deposit = NewTransaction(context, kDeposits, add);
    AddReference(deposit, "DepositToAccountRef", &account);
    AddText(deposit, "DepositTotal", FormatCents(TotalOf(lines)));
    AddLines(deposit, "DepositLineRet", "AccountRef", lines);
    for (const Line& line : lines) {
        ChangeBalance(context, kAccounts, *line.target, -line.cents);
    }
    ChangeBalance(context, kAccounts, account, TotalOf(lines));
    return AnswerWith(context.company.Add(kDeposits, std::move(deposit)), context.request);
}

// Money goes out of the account of the check and into those of the lines.
Answer AddCheck(const RequestContext& context) {
    const Element& add = *FindChild(context.request, "CheckAdd");
    const Element& account = ResolveRequired(context.company, kAccounts, add, "AccountRef");
    const Element* const payee = Resolve(context.company, kCustomers, add, "PayeeEntityRef");
    const auto lines = ReadLines(context.company, add, "ExpenseLineAdd", kAccounts, "AccountRef");

    Element check = NewTransaction(context, kChecks, add);
    AddReference(check, "AccountRef", &account);
    AddReference(check, "PayeeEntityRef", payee);
    AddText(check, "TotalAmount", FormatCents(TotalOf(lines)));
    AddLines(check, "ExpenseLineRet", "AccountRef", lines);
    ChangeBalance(context, kAccounts, account, -TotalOf(lines));
    for (const Line& line : lines) {
        ChangeBalance(context, kAccounts, *line.target, line.cents);
    }
    return AnswerWith(context.company.Add(kChecks, std::move(check)), context.request);
}

}  // namespace paylodge::refhost
