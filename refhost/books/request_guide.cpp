#include "refhost/books/request_guide.hpp"

#include <algorithm>
#include <array>

#include "refhost/books/record_reader.hpp"
#include "refhost/books/request.hpp"
#include "refhost/books/values.hpp"

namespace paylodge::refhost {
namespace {

struct StatusNote {
    Code code;
    std::string_view meaning;
};
constexpr std::array kStatusNotes{
    StatusNote{Code::kOk, "done"},
    StatusNote{Code::kMalformedDocument,
               "the document is not well-formed XML; the message has line, column and what is expected there"},
    StatusNote{Code::kUnknownVersion, "the document is of an unknown version"},
    StatusNote{Code::kUnknownEnvelope, "the elements around the requests are not those of a request document"},
    StatusNote{Code::kUnknownOnError, "`onError` is neither `continueOnError` nor `stopOnError`"},
    StatusNote{Code::kUnknownRequest, "there is no such request"},
    StatusNote{Code::kNotProcessed, "an earlier request failed, and `onError` is `stopOnError`"},
    StatusNote{Code::kMissingField, "a field that is required is missing or empty"},
    StatusNote{Code::kUnknownField, "an element or attribute is unknown here"},
    StatusNote{Code::kMisplacedField, "the fields are not in the order of the tables below"},
    StatusNote{Code::kRepeatedField, "a field is given twice that may stand once"},
    StatusNote{Code::kInvalidValue, "a value has not the form of its field"},
    StatusNote{Code::kBeyondLimit, "an amount, a total or a balance is beyond the limits"},
    StatusNote{Code::kUnknownReference, "a reference names a record that does not exist"},
    StatusNote{Code::kUnfitAccount, "an account is of a type that cannot be used here"},
    StatusNote{Code::kNotFound,
               "(a warning) a query names a record that does not exist; the others are in the response"},
    StatusNote{Code::kNameExists, "a record with this name exists already"},
    StatusNote{Code::kPaymentItemExists, "an item with this name exists already"},
    StatusNote{Code::kStaleEditSequence, "the record was changed since it was queried"},
    StatusNote{Code::kInactive, "a reference names a record that is inactive, or an item whose account is"},
    StatusNote{Code::kBrokenRule, "the books forbid it"},
    StatusNote{Code::kNoCompanyFile, "no company file is open, or it cannot be opened"},
    StatusNote{Code::kNotSaved, "the change cannot be written to the company file"},
    StatusNote{Code::kReadOnly, "the company file is write-protected"},
    StatusNote{Code::kDiskFull, "the disk is full"},
    StatusNote{Code::kDamaged, "the company file is damaged"},
};

constexpr std::array kQueryStatuses{Code::kNotFound};
constexpr std::array kAddStatuses{Code::kNameExists, Code::kUnknownReference, Code::kUnfitAccount, Code::kInactive};
constexpr std::array kItemStatuses{Code::kPaymentItemExists, Code::kUnknownReference, Code::kInactive};
constexpr std::array kModStatuses{Code::kUnknownReference, Code::kStaleEditSequence};
constexpr std::array kEntryStatuses{Code::kBeyondLimit, Code::kUnknownReference, Code::kUnfitAccount, Code::kInactive};
constexpr std::array kFormStatuses{Code::kUnknownReference};

constexpr std::string_view kListNote =
    "Without `ListID`, `FullName` and `ActiveStatus` it returns the active ones; a record that is asked for by name or "
    "id "
    "is found in any state.";

constexpr std::array kNotes{
    RequestNotes{
        "AccountQueryRq", "Lists accounts.", "",
        "`AccountRet` for each, with its balance on the normal side of its type.", kQueryStatuses,
        "<AccountQueryRq requestID=\"1\"><ActiveStatus>ActiveOnly</ActiveStatus><AccountType>Bank</AccountType>"
        "<IncludeRetElement>FullName</IncludeRetElement><IncludeRetElement>Balance</IncludeRetElement>"
        "</AccountQueryRq>"},
    RequestNotes{"CustomerQueryRq", "Lists customers and their jobs.", "",
                 "`CustomerRet` for each, with what the customer owes.", kQueryStatuses,
                 "<CustomerQueryRq requestID=\"1\"><NameFilter><MatchCriterion>StartsWith</MatchCriterion>"
                 "<Name>smith</Name></NameFilter></CustomerQueryRq>"},
    RequestNotes{"ItemQueryRq", "Lists items.", "", "`ItemRet` for each.", kQueryStatuses,
                 "<ItemQueryRq requestID=\"1\"><MaxReturned>2</MaxReturned><ItemType>Service</ItemType></ItemQueryRq>"},
    RequestNotes{"PaymentMethodQueryRq", "Lists payment methods.", "", "`PaymentMethodRet` for each.", kQueryStatuses,
                 "<PaymentMethodQueryRq requestID=\"1\"><NameRangeFilter><FromName>A</FromName><ToName>Z</ToName>"
                 "</NameRangeFilter></PaymentMethodQueryRq>"},
    RequestNotes{"SalesTaxCodeQueryRq", "Lists sales tax codes.", "", "`SalesTaxCodeRet` for each.", kQueryStatuses,
                 "<SalesTaxCodeQueryRq requestID=\"1\"><FullName>Tax</FullName></SalesTaxCodeQueryRq>"},
    RequestNotes{"InvoiceQueryRq", "Lists invoices.", "",
                 "`InvoiceRet` for each, with what was applied to it and what is still to be paid.", kQueryStatuses,
                 "<InvoiceQueryRq requestID=\"1\"><TxnDateRangeFilter><FromTxnDate>2025-02-01</FromTxnDate>"
                 "</TxnDateRangeFilter><EntityFilter><FullNameWithChildren>Dunmore Hotel</FullNameWithChildren>"
                 "</EntityFilter><PaidStatus>NotPaidOnly</PaidStatus></InvoiceQueryRq>"},
    RequestNotes{"ReceivePaymentQueryRq", "Lists received payments.", "",
                 "`ReceivePaymentRet` for each, with an `AppliedToTxnRet` for each invoice that it paid.",
                 kQueryStatuses,
                 "<ReceivePaymentQueryRq requestID=\"1\"><EntityFilter><FullName>Smith Co</FullName></EntityFilter>"
                 "</ReceivePaymentQueryRq>"},
    RequestNotes{"SalesReceiptQueryRq", "Lists sales receipts.", "", "`SalesReceiptRet` for each, with its lines.",
                 kQueryStatuses,
                 "<SalesReceiptQueryRq requestID=\"1\"><RefNumber>D-1</RefNumber></SalesReceiptQueryRq>"},
    RequestNotes{
        "CreditMemoQueryRq", "Lists credit memos.", "", "`CreditMemoRet` for each, with its lines.", kQueryStatuses,
        "<CreditMemoQueryRq requestID=\"1\"><FromModifiedDate>2026-01-01</FromModifiedDate></CreditMemoQueryRq>"},
    RequestNotes{"DepositQueryRq", "Lists deposits.", "", "`DepositRet` for each, with its lines.", kQueryStatuses,
                 "<DepositQueryRq requestID=\"1\"><MaxReturned>10</MaxReturned></DepositQueryRq>"},
    RequestNotes{
        "CheckQueryRq", "Lists checks; `EntityFilter` means the payee.", "", "`CheckRet` for each, with its lines.",
        kQueryStatuses,
        "<CheckQueryRq requestID=\"1\"><EntityFilter><FullName>Otto Brandt</FullName></EntityFilter></CheckQueryRq>"},
    RequestNotes{"JournalEntryQueryRq", "Lists journal entries, such as the balances brought forward.", "",
                 "`JournalEntryRet` for each, with its lines.", kQueryStatuses,
                 "<JournalEntryQueryRq requestID=\"1\"><RefNumber>OPENING</RefNumber><IncludeRetElement>TotalAmount"
                 "</IncludeRetElement></JournalEntryQueryRq>"},
    RequestNotes{"AccountAddRq", "Adds an account.",
                 "A new account without a balance. An account below another has that one's type.",
                 "The new `AccountRet`.", kAddStatuses,
                 "<AccountAddRq requestID=\"1\"><AccountAdd><Name>Card Clearing</Name><AccountType>OtherCurrentAsset"
                 "</AccountType><BankNumber>4711</BankNumber></AccountAdd></AccountAddRq>"},
    RequestNotes{
        "AccountModRq", "Changes an account.",
        "The fields that are given, never the balance. `EditSequence` is the one that the account had when it was "
        "queried.",
        "The changed `AccountRet`.", kModStatuses,
        "<AccountModRq requestID=\"1\"><AccountMod><ListID>L-4</ListID><EditSequence>1</EditSequence>"
        "<IsActive>false</IsActive></AccountMod></AccountModRq>"},
    RequestNotes{
        "CustomerAddRq", "Adds a customer, or a job below one.", "A new customer who owes nothing.",
        "The new `CustomerRet`.", kAddStatuses,
        "<CustomerAddRq requestID=\"1\"><CustomerAdd><Name>Riverbank Caf\xC3\xA9</Name><Contact>Lea Brook</Contact>"
        "</CustomerAdd></CustomerAddRq>"},
    RequestNotes{
        "ItemPaymentAddRq", "Adds a payment item.",
        "A new item. It has no account: what is sold or taken back with it is posted to the first active account of "
        "the type Income.",
        "The new `ItemRet`.", kItemStatuses,
        "<ItemPaymentAddRq requestID=\"1\"><ItemPaymentAdd><Name>Net Refund - Visa/MasterCard</Name>"
        "<PaymentMethodRef><FullName>Visa</FullName></PaymentMethodRef></ItemPaymentAdd></ItemPaymentAddRq>"},
    RequestNotes{
        "ReceivePaymentAddRq", "Records a payment of a customer.",
        "Debits the deposit account (without one, Undeposited Funds), credits the receivables in the customer's name. "
        "With `IsAutoApply` true it pays the customer's open invoices, the oldest first. Of a card number only the "
        "last four digits are kept.",
        "The new `ReceivePaymentRet`; `UnusedPayment` is what no invoice took.", kEntryStatuses,
        "<ReceivePaymentAddRq requestID=\"1\"><ReceivePaymentAdd><CustomerRef><FullName>Eastgate Library</FullName>"
        "</CustomerRef><RefNumber>P-100</RefNumber><TotalAmount>159.90</TotalAmount><PaymentMethodRef><FullName>Visa"
        "</FullName></PaymentMethodRef><IsAutoApply>true</IsAutoApply></ReceivePaymentAdd></ReceivePaymentAddRq>"},
    RequestNotes{
        "SalesReceiptAddRq", "Records a sale that was paid at once.",
        "Debits the deposit account (without one, Undeposited Funds), credits the account of each item.",
        "The new `SalesReceiptRet` with its lines.", kEntryStatuses,
        "<SalesReceiptAddRq requestID=\"1\"><SalesReceiptAdd><RefNumber>D-1</RefNumber><SalesReceiptLineAdd><ItemRef>"
        "<FullName>Lawn care</FullName></ItemRef><Desc>Front lawn</Desc><Amount>38.00</Amount></SalesReceiptLineAdd>"
        "</SalesReceiptAdd></SalesReceiptAddRq>"},
    RequestNotes{"CreditMemoAddRq", "Takes back what was sold to a customer.",
                 "Debits the account of each item, credits the receivables in the customer's name.",
                 "The new `CreditMemoRet` with its lines.", kEntryStatuses,
                 "<CreditMemoAddRq requestID=\"1\"><CreditMemoAdd><CustomerRef><FullName>Smith</FullName></CustomerRef>"
                 "<Memo>Visa refund</Memo><CreditMemoLineAdd><ItemRef><FullName>Hand trowel</FullName></ItemRef>"
                 "<Amount>14.95</Amount></CreditMemoLineAdd></CreditMemoAdd></CreditMemoAddRq>"},
    RequestNotes{
        "DepositAddRq", "Moves money from the accounts of the lines to another account.",
        "Debits the account of the deposit, credits the account of each line. An amount below 0, such as a fee that "
        "was kept back, debits it. A line on a receivables account names the customer in `EntityRef`.",
        "The new `DepositRet` with its lines.", kEntryStatuses,
        "<DepositAddRq requestID=\"1\"><DepositAdd><DepositToAccountRef><FullName>Riverside Checking</FullName>"
        "</DepositToAccountRef><Memo>Settlement</Memo><DepositLineAdd><AccountRef><FullName>Undeposited Funds"
        "</FullName></AccountRef><Amount>100.00</Amount></DepositLineAdd><DepositLineAdd><AccountRef><FullName>Card "
        "Processing Fees</FullName></AccountRef><Memo>Fee</Memo><Amount>-2.50</Amount></DepositLineAdd></DepositAdd>"
        "</DepositAddRq>"},
    RequestNotes{
        "CheckAddRq", "Records a check or another payment out of an account.",
        "Credits the account of the check, debits the account of each line.", "The new `CheckRet` with its lines.",
        kEntryStatuses,
        "<CheckAddRq requestID=\"1\"><CheckAdd><AccountRef><FullName>Riverside Checking</FullName></AccountRef>"
        "<RefNumber>2001</RefNumber><ExpenseLineAdd><AccountRef><FullName>Fuel</FullName></AccountRef>"
        "<Amount>61.20</Amount></ExpenseLineAdd></CheckAdd></CheckAddRq>"},
    RequestNotes{
        "TxnDisplayModRq",
        "Shows a transaction in its form. The reference host has no windows: the request itself is the record of it.",
        "", "A `TxnDisplayModRet` with the two fields of the request.", kFormStatuses,
        "<TxnDisplayModRq requestID=\"1\"><TxnDisplayModType>Invoice</TxnDisplayModType><TxnID>T-111</TxnID>"
        "</TxnDisplayModRq>"},
};

[[nodiscard]] std::string Number(Code code) { return std::to_string(static_cast<int>(code)); }

[[nodiscard]] std::string Joined(std::span<const std::string_view> words) {
    std::string text;
    for (const std::string_view word : words) {
        text.append(text.empty() ? "`" : ", `").append(word).append("`");
    }
    return text;
}

[[nodiscard]] std::string FormOf(const Field& field) {
    switch (field.form) {
        case Form::kText:
            return "text of at most " + std::to_string(field.longest) + " characters";
        case Form::kName:
            return "text of at most " + std::to_string(field.longest) + " characters in one line";
        case Form::kBoolean:
            return "`true` or `false`";
        case Form::kAmount:
            return "amount";
        case Form::kDate:
            return "date";
        case Form::kDateTime:
            return "date, or date and time";
        case Form::kCount:
            return "whole number above 0";
        case Form::kChoice:
            return "one of " + Joined(field.choices);
        case Form::kAggregate:
            return field.fields.data() == kReferenceFields.data() ? "reference" : "fields of its own";
    }
    return {};
}

[[nodiscard]] std::string_view OccursText(Occurs occurs) {
    return occurs == Occurs::kOnce ? "required" : occurs == Occurs::kRepeated ? "any number of times" : "";
}

void AddFields(std::string& page, std::span<const Field> fields, const std::string& path) {
    for (const Field& field : fields) {
        const std::string name = path + std::string(field.name);
        page += "| `" + name + "` | " + FormOf(field) + " | " + std::string(OccursText(field.occurs)) + " |\n";
        if (field.fields.data() != kReferenceFields.data()) {
            AddFields(page, field.fields, name + '/');
        }
    }
}

void AddRequest(std::string& page, const RequestKind& kind) {
    const RequestNotes& notes = *std::ranges::find(kNotes, kind.name, &RequestNotes::request);
    page += "\n## " + std::string(kind.name) + "\n\n" + std::string(notes.summary);
    const bool lists_names = std::ranges::find(kind.fields, "ActiveStatus", &Field::name) != kind.fields.end();
    page += lists_names ? ' ' + std::string(kListNote) + "\n" : "\n";
    page += "\n| Field | Kind | |\n|---|---|---|\n";
    AddFields(page, kind.fields, "");
    page += "\n**Changes:** " + std::string(notes.changes.empty() ? "nothing." : notes.changes);
    page += "\n**Returns:** " + std::string(notes.returns);
    page += "\n**Statuses of its own:** ";
    for (const Code& code : notes.statuses) {
        page += (&code == notes.statuses.data() ? "" : ", ") + Number(code);
    }
    page += "\n\n```xml\n" + std::string(notes.example) + "\n```\n";
}

constexpr std::string_view kHead = R"(# Requests

What the request processor of the reference host understands. A page sends these with `ProcessLHRequest` and `SavePaymentTxn`,
several in one body if it likes; the component sends some of them by itself. This page is written from the tables that the
processor itself uses, and each example is run by a test against the sample company (`refhost/books/request_guide.cpp`).

- Fields stand in the order of their table. A field whose path has a slash stands within the one before the slash.
- A **reference** holds `ListID` or `FullName`; with both, the id counts. Names count without regard to letter case.
- An **amount** is `12`, `12.5` or `-12.50`, up to )";

constexpr std::string_view kMore = R"(; no balance goes beyond )";

constexpr std::string_view kRest = R"(.
- A **date** is `YYYY-MM-DD`, a time `YYYY-MM-DDTHH:MM:SS`; a limit without a time of day takes in the whole day. Without
  `TxnDate` a transaction is of today.
- Filters of different names all have to fit; of one name that stands several times, one has to.
- `IncludeRetElement` names an element that the records of the response are to have; without any, they have all of theirs.
- Every transaction posts to all accounts that it concerns, debits and credits summing to zero; balances are shown on the
  normal side of the account's type.
- A request changes the books as a whole or not at all. The changes of a document are written once, behind its last request;
  when that fails, all of its requests have the status that says why.

## Statuses

| Code | Meaning |
|---|---|
)";

}  // namespace

std::span<const RequestNotes> Notes() noexcept { return kNotes; }

std::string RequestGuide() {
    std::string page = std::string(kHead) + FormatCents(kLargestAmount) + std::string(kMore) +
                       FormatCents(kLargestBalance) + std::string(kRest);
    for (const StatusNote& note : kStatusNotes) {
        page += "| " + Number(note.code) + " | " + std::string(note.meaning) + " |\n";
    }
    for (const RequestKind* const kind : RequestKinds()) {
        AddRequest(page, *kind);
    }
    return page;
}

}  // namespace paylodge::refhost
