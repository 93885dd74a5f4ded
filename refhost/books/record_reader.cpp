#include "refhost/books/record_reader.hpp"

#include <algorithm>
#include <array>

#include "refhost/books/values.hpp"

namespace paylodge::refhost {
namespace {

constexpr std::array<std::string_view, 4> kCardInput{"CreditCardNumber", "ExpirationMonth", "ExpirationYear",
                                                     "NameOnCard"};
constexpr std::array<std::string_view, 11> kCardResult{
    "ResultCode",           "ResultMessage",         "CreditCardTransID",   "MerchantAccountNumber",
    "AuthorizationCode",    "ReconBatchID",          "PaymentGroupingCode", "PaymentStatus",
    "TxnAuthorizationTime", "TxnAuthorizationStamp", "ClientTransID"};
constexpr std::array kCardParts{CardPart{"CreditCardTxnInputInfo", kCardInput},
                                CardPart{"CreditCardTxnResultInfo", kCardResult}};

// What stands in front of a record's own columns.
constexpr int kCommonColumns = 4;

[[nodiscard]] std::string NameOf(const ListKind& target, std::string_view number) {
    return "(SELECT " + std::string(target.name_column) + " FROM " + std::string(target.table) +
           " WHERE number = " + std::string(number) + ')';
}

[[nodiscard]] std::string SelectOf(const ListKind& kind) {
    std::string sql = "SELECT t.number, r.time_created, r.time_modified, r.edit_sequence";
    for (const Column& column : kind.columns) {
        sql.append(", ").append(column.value);
        if (column.shape == Shape::kReference) {
            sql.append(", ").append(NameOf(*column.target, column.value));
        }
    }
    sql.append(" FROM ").append(kind.table).append(" AS t JOIN records AS r ON r.number = t.number");
    return sql;
}

[[nodiscard]] std::string WhereOf(const ListKind& kind, const Selection& selection) {
    std::string sql;
    const auto add = [&sql](std::string_view condition) {
        sql.append(sql.empty() ? " WHERE (" : " AND (").append(condition).append(")");
    };
    if (kind.IsTransaction()) {
        add("t.kind = '" + std::string(kind.record) + '\'');
    }
    std::ranges::for_each(selection.conditions, add);
    return sql;
}

[[nodiscard]] std::string TextOf(const Statement& row, int column, Shape shape) {
    switch (shape) {
        case Shape::kAmount:
            return FormatCents(row.Integer(column));
        case Shape::kBoolean:
            return row.Integer(column) != 0 ? "true" : "false";
        default:
            return std::string(row.Text(column));
    }
}

// Adds the row's columns from `position` on.
void AddColumns(Element& record, const ListKind& kind, const Statement& row, int position) {
    for (const Column& column : kind.columns) {
        const bool is_reference = column.shape == Shape::kReference;
        if (!row.IsNull(position)) {
            if (is_reference) {
                record.children.push_back(
                    ReferenceElement(column.element, *column.target, row.Integer(position), row.Text(position + 1)));
            } else {
                AddText(record, column.element, TextOf(row, position, column.shape));
            }
        }
        position += is_reference ? 2 : 1;
    }
}

// Adds a reference whose number and name stand in two columns, unless they are null.
void AddReference(Element& element, std::string_view name, const ListKind& target, const Statement& row, int column) {
    if (!row.IsNull(column)) {
        element.children.push_back(ReferenceElement(name, target, row.Integer(column), row.Text(column + 1)));
    }
}

void AddLines(Element& record, Company& company, const LineKind& kind, std::int64_t number) {
    Statement line = company.Data().Prepare(
        "SELECT item, (SELECT full_name FROM items WHERE number = item),"
        " account, (SELECT full_name FROM accounts WHERE number = account),"
        " customer, (SELECT full_name FROM customers WHERE number = customer), description, memo, amount"
        " FROM lines WHERE txn = ? ORDER BY position",
        number);
    while (line.Step()) {
        Element& element = record.children.emplace_back(MakeElement(kind.element));
        AddReference(element, "ItemRef", kItems, line, 0);
        AddReference(element, "AccountRef", kAccounts, line, 2);
        AddReference(element, "EntityRef", kCustomers, line, 4);
        AddText(element, "Desc", line.Text(6));
        AddText(element, "Memo", line.Text(7));
        AddText(element, "Amount", FormatCents(line.Integer(8)));
    }
}

void AddAppliedPayments(Element& record, Company& company, std::int64_t number) {
    Statement applied = company.Data().Prepare(
        "SELECT invoice, ref_number, remaining, amount FROM applied_payments JOIN transactions ON number = invoice"
        " WHERE payment = ? ORDER BY txn_date, invoice",
        number);
    while (applied.Step()) {
        Element& element = record.children.emplace_back(MakeElement("AppliedToTxnRet"));
        AddText(element, "TxnID", MakeId(kInvoices, applied.Integer(0)));
        AddText(element, "RefNumber", applied.Text(1));
        AddText(element, "BalanceRemaining", FormatCents(applied.Integer(2)));
        AddText(element, "Amount", FormatCents(applied.Integer(3)));
    }
}

void AddCardInfo(Element& record, Company& company, std::int64_t number) {
    Element all = MakeElement("all");
    Statement field = company.Data().Prepare("SELECT name, value FROM card_fields WHERE txn = ?", number);
    while (field.Step()) {
        all.children.push_back(MakeElement(field.Text(0), field.Text(1)));
    }
    if (all.children.empty()) {
        return;
    }
    Element& info = record.children.emplace_back(MakeElement(kCardElement));
    for (const CardPart& part : kCardParts) {
        Element element = MakeElement(part.element);
        for (const std::string_view name : part.fields) {
            AddText(element, name, ChildText(all, name));
        }
        if (!element.children.empty()) {
            info.children.push_back(std::move(element));
        }
    }
}

void AddDetails(Element& record, Company& company, const ListKind& kind, std::int64_t number) {
    AddCardInfo(record, company, number);
    if (!kind.lines.element.empty()) {
        AddLines(record, company, kind.lines, number);
    } else {
        AddAppliedPayments(record, company, number);
    }
}

[[nodiscard]] Element ReadRecord(Company& company, const ListKind& kind, const Statement& row) {
    Element record = MakeElement(kind.record);
    AddText(record, kind.id, MakeId(kind, row.Integer(0)));
    AddText(record, "TimeCreated", row.Text(1));
    AddText(record, "TimeModified", row.Text(2));
    AddText(record, "EditSequence", row.Text(3));
    AddColumns(record, kind, row, kCommonColumns);
    if (kind.IsTransaction()) {
        AddDetails(record, company, kind, row.Integer(0));
    }
    return record;
}

}  // namespace

std::vector<Element> ReadRecords(Company& company, const ListKind& kind, const Selection& selection) {
    Statement row = company.Data().Prepare(SelectOf(kind) + WhereOf(kind, selection) + " ORDER BY t.number LIMIT ?");
    for (const SqlValue& value : selection.values) {
        std::visit([&row](const auto& bound) { row.Bind(bound); }, value);
    }
    row.Bind(selection.limit);
    std::vector<Element> records;
    while (row.Step()) {
        records.push_back(ReadRecord(company, kind, row));
    }
    return records;
}

Element ReferenceElement(std::string_view name, const ListKind& target, std::int64_t number,
                         std::string_view full_name) {
    Element reference = MakeElement(name);
    AddText(reference, "ListID", MakeId(target, number));
    AddText(reference, "FullName", full_name);
    return reference;
}

std::span<const CardPart> CardParts() noexcept { return kCardParts; }

}  // namespace paylodge::refhost
