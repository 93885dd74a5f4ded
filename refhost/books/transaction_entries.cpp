#include "refhost/books/transaction_entries.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>

#include "refhost/books/record_reader.hpp"
#include "refhost/books/references.hpp"
#include "refhost/books/status.hpp"
#include "refhost/books/values.hpp"

namespace paylodge::refhost {
namespace {

// What a deposit may go to: everything of value, and debts, which it lowers.
constexpr std::array<std::string_view, 8> kDepositTypes{"Bank",
                                                        "CreditCard",
                                                        "Equity",
                                                        "FixedAsset",
                                                        "LongTermLiability",
                                                        "OtherAsset",
                                                        "OtherCurrentAsset",
                                                        "OtherCurrentLiability"};
// What checks are drawn on.
constexpr std::array<std::string_view, 3> kCheckTypes{"Bank", "CreditCard", "OtherCurrentAsset"};
// Every account that is posted to.
constexpr AccountTypes kEveryType{};

// Of a card number only the last four digits are kept.
[[nodiscard]] std::string Masked(std::string number) {
    constexpr size_t kShown = 4;
    std::fill_n(number.begin(), number.size() > kShown ? number.size() - kShown : 0, 'x');
    return number;
}

[[nodiscard]] std::vector<CardField> ReadCard(const Element& add) {
    std::vector<CardField> fields;
    const Element* const info = FindChild(add, kCardElement);
    if (info == nullptr) {
        return fields;
    }
    for (const Element& part : info->children) {
        for (const Element& field : part.children) {
            if (!field.text.empty()) {
                fields.push_back({field.name, field.name == "CreditCardNumber" ? Masked(field.text) : field.text});
            }
        }
    }
    return fields;
}

// What the fields that all transactions share say.
[[nodiscard]] Entry NewEntry(const RequestContext& context, const ListKind& kind, const Element& add) {
    Entry entry;
    entry.kind = &kind;
    const std::string_view date = ChildText(add, "TxnDate");
    entry.date = date.empty() ? context.now.substr(0, 10) : date;
    entry.ref_number = ChildText(add, "RefNumber");
    entry.memo = ChildText(add, "Memo");
    entry.card = ReadCard(add);
    return entry;
}

// A required amount, which the check of the request has found to be one: nothing is ever entered as zero instead.
[[nodiscard]] std::int64_t RequiredCents(const Element& element, std::string_view name) {
    const auto cents = ParseCents(ChildText(element, name));
    if (!cents) {
        throw RefusedRequest(Code::kInvalidValue, std::string(name) + " is no amount.");
    }
    return *cents;
}

[[nodiscard]] EnteredLine ReadLine(const Element& element) {
    return {.description = std::string(ChildText(element, "Desc")),
            .memo = std::string(ChildText(element, "Memo")),
            .cents = RequiredCents(element, "Amount")};
}

// A line that sells or takes back an item, with its posting to the item's account on the given side.
void AddItemLine(Company& company, Entry& entry, const Element& element, int side) {
    EnteredLine line = ReadLine(element);
    line.item = ReferRequired(company, kItems, element, "ItemRef").number;
    entry.postings.push_back(
        {.account = AccountOfItem(company, *line.item), .customer = {}, .cents = side * line.cents});
    entry.lines.push_back(std::move(line));
}

// A line that posts to an account on the given side.
void AddAccountLine(Company& company, Entry& entry, const Element& element, int side) {
    EnteredLine line = ReadLine(element);
    const Referred account = ReferAccount(company, element, "AccountRef", kEveryType);
    line.account = account.number;
    line.customer = NumberOf(Refer(company, kCustomers, element, "EntityRef"));
    const bool is_receivable = account.type == "AccountsReceivable";
    if (is_receivable && !line.customer) {
        throw RefusedRequest(Code::kUnfitAccount, "AccountRef names the account " + Quoted(account.full_name) +
                                                      " of the type AccountsReceivable, which needs a customer: "
                                                      "EntityRef is missing.");
    }
    entry.postings.push_back({.account = account.number,
                              .customer = is_receivable ? line.customer : std::nullopt,
                              .cents = side * line.cents});
    entry.lines.push_back(std::move(line));
}

using AddLine = void (*)(Company& company, Entry& entry, const Element& element, int side);

// Enters the lines and sets the total. Throws RefusedRequest for a transaction without lines.
void ReadLines(const RequestContext& context, Entry& entry, const Element& add, std::string_view line_name,
               AddLine add_line, int side) {
    for (const Element& child : add.children) {
        if (child.name == line_name) {
            add_line(context.company, entry, child, side);
            entry.total += entry.lines.back().cents;
            if (std::abs(entry.total) > kLargestAmount) {
                throw RefusedRequest(Code::kBeyondLimit, "The total of " + add.name + " is beyond the limit of " +
                                                             FormatCents(kLargestAmount) + '.');
            }
        }
    }
    if (entry.lines.empty()) {
        throw RefusedRequest(Code::kMissingField, add.name + '/' + std::string(line_name) + " is missing.");
    }
}

void CheckTotal(const Entry& entry, const Element& add, bool may_be_nothing) {
    if (entry.total < 0 || (entry.total == 0 && !may_be_nothing)) {
        throw RefusedRequest(Code::kInvalidValue,
                             "The total of " + add.name + " is " + FormatCents(entry.total) +
                                 (may_be_nothing ? ", which is below 0." : "; it has to be above 0."));
    }
}

[[nodiscard]] Answer AnswerWithRecord(const RequestContext& context, const ListKind& kind, RecordNumber number) {
    return AnswerWith(context.company.Record(kind, number), context.request);
}

[[nodiscard]] Answer EnterAndAnswer(const RequestContext& context, const Entry& entry) {
    return AnswerWithRecord(context, *entry.kind, Enter(context.company, entry, context.now));
}

// Pays the customer's open invoices, the oldest first, with as much of the payment as they take.
void PayOpenInvoices(const RequestContext& context, RecordNumber payment, RecordNumber customer, std::int64_t cents) {
    struct OpenInvoice {
        RecordNumber number;
        std::int64_t remaining;
    };
    std::vector<OpenInvoice> invoices;
    {
        Statement row = context.company.Data().Prepare(
            "SELECT number, remaining FROM transactions WHERE kind = 'Invoice' AND customer = ? AND remaining > 0"
            " ORDER BY txn_date, number",
            customer);
        while (row.Step()) {
            invoices.push_back({row.Integer(0), row.Integer(1)});
        }
    }
    for (const OpenInvoice& invoice : invoices) {
        const std::int64_t applied = std::min(invoice.remaining, cents);
        if (applied > 0) {
            ApplyPayment(context.company, payment, invoice.number, applied);
            context.company.Touch(invoice.number, context.now);
            cents -= applied;
        }
    }
}

}  // namespace

// Money comes in, and the customer owes less.
Answer AddReceivedPayment(const RequestContext& context) {
    const Element& add = *FindChild(context.request, "ReceivePaymentAdd");
    Entry entry = NewEntry(context, kReceivedPayments, add);
    entry.total = RequiredCents(add, "TotalAmount");
    if (entry.total <= 0) {
        throw RefusedRequest(Code::kInvalidValue, "ReceivePaymentAdd/TotalAmount is not above 0.");
    }
    entry.customer = ReferRequired(context.company, kCustomers, add, "CustomerRef").number;
    entry.receivables = FirstAccountOfType(context.company, "AccountsReceivable");
    entry.account = ReferDepositAccount(context.company, add, "DepositToAccountRef").number;
    entry.payment_method = NumberOf(Refer(context.company, kPaymentMethods, add, "PaymentMethodRef"));
    entry.postings = {{.account = *entry.account, .customer = {}, .cents = entry.total},
                      {.account = *entry.receivables, .customer = entry.customer, .cents = -entry.total}};
    const RecordNumber payment = Enter(context.company, entry, context.now);
    if (ChildText(add, "IsAutoApply") == "true") {
        PayOpenInvoices(context, payment, *entry.customer, entry.total);
    }
    return AnswerWithRecord(context, kReceivedPayments, payment);
}

// Money comes in for what was sold.
Answer AddSalesReceipt(const RequestContext& context) {
    const Element& add = *FindChild(context.request, "SalesReceiptAdd");
    Entry entry = NewEntry(context, kSalesReceipts, add);
    entry.customer = NumberOf(Refer(context.company, kCustomers, add, "CustomerRef"));
    entry.payment_method = NumberOf(Refer(context.company, kPaymentMethods, add, "PaymentMethodRef"));
    entry.account = ReferDepositAccount(context.company, add, "DepositToAccountRef").number;
    ReadLines(context, entry, add, "SalesReceiptLineAdd", AddItemLine, -1);
    CheckTotal(entry, add, true);
    entry.postings.insert(entry.postings.begin(), {.account = *entry.account, .customer = {}, .cents = entry.total});
    return EnterAndAnswer(context, entry);
}

// What was sold is taken back, and the customer owes less.
Answer AddCreditMemo(const RequestContext& context) {
    const Element& add = *FindChild(context.request, "CreditMemoAdd");
    Entry entry = NewEntry(context, kCreditMemos, add);
    entry.customer = ReferRequired(context.company, kCustomers, add, "CustomerRef").number;
    entry.receivables = FirstAccountOfType(context.company, "AccountsReceivable");
    ReadLines(context, entry, add, "CreditMemoLineAdd", AddItemLine, 1);
    CheckTotal(entry, add, true);
    entry.postings.insert(entry.postings.begin(),
                          {.account = *entry.receivables, .customer = entry.customer, .cents = -entry.total});
    return EnterAndAnswer(context, entry);
}

// Money moves from the accounts of the lines to the account of the deposit.
Answer AddDeposit(const RequestContext& context) {
    const Element& add = *FindChild(context.request, "DepositAdd");
    Entry entry = NewEntry(context, kDeposits, add);
    entry.account = ReferAccount(context.company, add, "DepositToAccountRef", kDepositTypes).number;
    ReadLines(context, entry, add, "DepositLineAdd", AddAccountLine, -1);
    CheckTotal(entry, add, false);
    entry.postings.insert(entry.postings.begin(), {.account = *entry.account, .customer = {}, .cents = entry.total});
    return EnterAndAnswer(context, entry);
}

// Money goes out of the account of the check and into those of the lines.
Answer AddCheck(const RequestContext& context) {
    const Element& add = *FindChild(context.request, "CheckAdd");
    Entry entry = NewEntry(context, kChecks, add);
    entry.account = ReferAccount(context.company, add, "AccountRef", kCheckTypes).number;
    entry.customer = NumberOf(Refer(context.company, kCustomers, add, "PayeeEntityRef"));
    ReadLines(context, entry, add, "ExpenseLineAdd", AddAccountLine, 1);
    CheckTotal(entry, add, false);
    entry.postings.insert(entry.postings.begin(), {.account = *entry.account, .customer = {}, .cents = -entry.total});
    return EnterAndAnswer(context, entry);
}

}  // namespace paylodge::refhost
