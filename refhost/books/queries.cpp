#include "refhost/books/queries.hpp"

#include <algorithm>
#include <array>
#include <functional>

#include "refhost/books/names.hpp"
#include "refhost/books/record_reader.hpp"
#include "refhost/books/status.hpp"
#include "refhost/books/values.hpp"

namespace paylodge::refhost {
namespace {

constexpr std::array<std::string_view, 3> kActiveStatuses{"ActiveOnly", "InactiveOnly", "All"};
constexpr std::array<std::string_view, 3> kPaidStatuses{"All", "PaidOnly", "NotPaidOnly"};
constexpr std::array<std::string_view, 3> kMatchCriteria{"StartsWith", "Contains", "EndsWith"};

constexpr std::array kNameFilterFields{
    Choice("MatchCriterion", kMatchCriteria, Occurs::kOnce),
    Field{.name = "Name", .occurs = Occurs::kOnce},
};
constexpr std::array kNameRangeFields{Field{.name = "FromName"}, Field{.name = "ToName"}};
constexpr std::array kDateRangeFields{Field{.name = "FromTxnDate", .form = Form::kDate},
                                      Field{.name = "ToTxnDate", .form = Form::kDate}};
constexpr std::array kEntityFields{
    Field{.name = "ListID", .occurs = Occurs::kRepeated},
    Field{.name = "FullName", .occurs = Occurs::kRepeated},
    Field{.name = "ListIDWithChildren"},
    Field{.name = "FullNameWithChildren"},
};

constexpr Field kListId{.name = "ListID", .occurs = Occurs::kRepeated};
constexpr Field kFullName{.name = "FullName", .occurs = Occurs::kRepeated};
constexpr Field kTxnId{.name = "TxnID", .occurs = Occurs::kRepeated};
constexpr Field kRefNumber{.name = "RefNumber", .occurs = Occurs::kRepeated};
constexpr Field kMaxReturned{.name = "MaxReturned", .form = Form::kCount};
constexpr Field kActiveStatus = Choice("ActiveStatus", kActiveStatuses);
constexpr Field kFromModifiedDate{.name = "FromModifiedDate", .form = Form::kDateTime};
constexpr Field kToModifiedDate{.name = "ToModifiedDate", .form = Form::kDateTime};
constexpr Field kNameFilter = Aggregate("NameFilter", kNameFilterFields);
constexpr Field kNameRangeFilter = Aggregate("NameRangeFilter", kNameRangeFields);
constexpr Field kAccountType = Choice("AccountType", kAccountTypes, Occurs::kRepeated);
constexpr Field kItemType{.name = "ItemType", .occurs = Occurs::kRepeated};
constexpr Field kPaymentMethodType{.name = "PaymentMethodType", .occurs = Occurs::kRepeated};
constexpr Field kDateRangeFilter = Aggregate("TxnDateRangeFilter", kDateRangeFields);
constexpr Field kEntityFilter = Aggregate("EntityFilter", kEntityFields);
constexpr Field kPaidStatus = Choice("PaidStatus", kPaidStatuses);

// What each query may hold. Lists of names begin alike, and so do transactions.
template <size_t count>
[[nodiscard]] consteval auto ListFields(const std::array<Field, count>& more) {
    constexpr std::array kCommon{kListId,           kFullName,       kMaxReturned, kActiveStatus,
                                 kFromModifiedDate, kToModifiedDate, kNameFilter,  kNameRangeFilter};
    std::array<Field, kCommon.size() + count + 1> fields;
    std::ranges::copy(kCommon, fields.begin());
    std::ranges::copy(more, fields.begin() + kCommon.size());
    fields.back() = kIncludeRetElement;
    return fields;
}
constexpr auto kListFields = ListFields(std::array<Field, 0>{});
constexpr auto kAccountFields = ListFields(std::array{kAccountType});
constexpr auto kItemFields = ListFields(std::array{kItemType});
constexpr auto kPaymentMethodFields = ListFields(std::array{kPaymentMethodType});
constexpr std::array kTransactionFields{kTxnId,          kRefNumber,       kMaxReturned,  kFromModifiedDate,
                                        kToModifiedDate, kDateRangeFilter, kEntityFilter, kIncludeRetElement};
constexpr std::array kInvoiceFields{kTxnId,           kRefNumber,    kMaxReturned, kFromModifiedDate, kToModifiedDate,
                                    kDateRangeFilter, kEntityFilter, kPaidStatus,  kIncludeRetElement};

// What the elements of one name in a request ask for: rows that fit one of them.
class Filter {
  public:
    Filter(Selection& selection, const ListKind& kind) noexcept : selection_(selection), kind_(kind) {}

    void Add(std::string condition, std::vector<SqlValue> values = {}) {
        selection_.conditions.push_back(std::move(condition));
        std::ranges::move(values, std::back_inserter(selection_.values));
    }
    // The expression has one of the values.
    void AddIsAnyOf(const std::string& expression, std::vector<SqlValue> values) {
        std::string marks;
        for (size_t i = 0; i < values.size(); ++i) {
            marks += i == 0 ? "?" : ", ?";
        }
        Add(expression + " IN (" + marks + ')', std::move(values));
    }
    [[nodiscard]] const ListKind& Kind() const noexcept { return kind_; }

  private:
    Selection& selection_;
    const ListKind& kind_;
};

using Elements = std::vector<const Element*>;

[[nodiscard]] std::vector<SqlValue> Values(const Elements& elements, const auto& value_of) {
    std::vector<SqlValue> values;
    for (const Element* const element : elements) {
        values.emplace_back(value_of(*element));
    }
    return values;
}

[[nodiscard]] std::string TextOf(const Element& element) { return element.text; }

void ById(Filter& filter, const Elements& ids) {
    // No record has the number 0.
    filter.AddIsAnyOf("t.number",
                      Values(ids, [&](const Element& id) { return NumberFromId(filter.Kind(), id.text).value_or(0); }));
}

void ByFullName(Filter& filter, const Elements& names) {
    filter.AddIsAnyOf("t.folded_name", Values(names, [](const Element& name) { return Folded(name.text); }));
}

void ByRefNumber(Filter& filter, const Elements& numbers) {
    filter.AddIsAnyOf("t.ref_number", Values(numbers, TextOf));
}

void ByAccountType(Filter& filter, const Elements& types) {
    filter.AddIsAnyOf("t.type", Values(types, [](const Element& type) {
                          return std::string(CanonicalChoice(kAccountTypes, type.text));
                      }));
}

void ByType(Filter& filter, const Elements& types) {
    filter.AddIsAnyOf("folded(t.type)", Values(types, [](const Element& type) { return Folded(type.text); }));
}

void ByActiveStatus(Filter& filter, const Elements& statuses) {
    const std::string_view status = CanonicalChoice(kActiveStatuses, statuses.front()->text);
    if (status != "All") {
        filter.Add(status == "ActiveOnly" ? "t.is_active" : "NOT t.is_active");
    }
}

void ByPaidStatus(Filter& filter, const Elements& statuses) {
    const std::string_view status = CanonicalChoice(kPaidStatuses, statuses.front()->text);
    if (status != "All") {
        filter.Add(status == "PaidOnly" ? "t.remaining = 0" : "t.remaining > 0");
    }
}

// A limit without a time of day takes in the whole day, so only as much as the limit says is compared.
void ByModifiedFrom(Filter& filter, const Elements& limits) {
    const std::string& limit = limits.front()->text;
    filter.Add("substr(r.time_modified, 1, length(?)) >= ?", {limit, limit});
}

void ByModifiedTo(Filter& filter, const Elements& limits) {
    const std::string& limit = limits.front()->text;
    filter.Add("substr(r.time_modified, 1, length(?)) <= ?", {limit, limit});
}

void ByName(Filter& filter, const Elements& names) {
    const std::string_view criterion = CanonicalChoice(kMatchCriteria, ChildText(*names.front(), "MatchCriterion"));
    const std::string wanted = Folded(ChildText(*names.front(), "Name"));
    if (criterion == "StartsWith") {
        filter.Add("substr(folded(t.name), 1, length(?)) = ?", {wanted, wanted});
    } else if (criterion == "EndsWith") {
        filter.Add("substr(folded(t.name), -length(?)) = ?", {wanted, wanted});
    } else {
        filter.Add("instr(folded(t.name), ?) > 0", {wanted});
    }
}

void ByNameRange(Filter& filter, const Elements& ranges) {
    filter.Add("folded(t.name) >= ?", {Folded(ChildText(*ranges.front(), "FromName"))});
    if (const std::string last = Folded(ChildText(*ranges.front(), "ToName")); !last.empty()) {
        filter.Add("folded(t.name) <= ?", {last});
    }
}

void ByDate(Filter& filter, const Elements& ranges) {
    if (const std::string_view first = ChildText(*ranges.front(), "FromTxnDate"); !first.empty()) {
        filter.Add("t.txn_date >= ?", {std::string(first)});
    }
    if (const std::string_view last = ChildText(*ranges.front(), "ToTxnDate"); !last.empty()) {
        filter.Add("t.txn_date <= ?", {std::string(last)});
    }
}

// How one way of naming a customer or payee becomes a condition with one value. The jobs of a customer stand below it:
// their names begin with the customer's and a colon, which a semicolon follows in the order of characters. A name that
// ends in a semicolon is not one of them.
struct EntityFilter {
    std::string_view element;
    std::string_view condition;
    SqlValue (*value)(const Element& entity);
};
[[nodiscard]] SqlValue CustomerNumber(const Element& entity) {
    return NumberFromId(kCustomers, entity.text).value_or(0);
}
[[nodiscard]] SqlValue CustomerName(const Element& entity) { return Folded(entity.text); }
constexpr std::array kEntityFilters{
    EntityFilter{"ListID", "t.customer = ?", CustomerNumber},
    EntityFilter{"FullName", "t.customer = (SELECT number FROM customers WHERE folded_name = ?)", CustomerName},
    EntityFilter{
        "ListIDWithChildren",
        "t.customer IN (SELECT c.number FROM customers AS c JOIN customers AS top ON c.number = top.number OR"
        " (c.folded_name >= top.folded_name || ':' AND c.folded_name < top.folded_name || ';') WHERE top.number = ?)",
        CustomerNumber},
    EntityFilter{"FullNameWithChildren",
                 "t.customer IN (SELECT c.number FROM customers AS c JOIN customers AS top ON c.number = top.number OR"
                 " (c.folded_name >= top.folded_name || ':' AND c.folded_name < top.folded_name || ';') WHERE "
                 "top.folded_name = ?)",
                 CustomerName},
};

void ByEntity(Filter& filter, const Elements& filters) {
    std::string condition;
    std::vector<SqlValue> values;
    for (const Element& entity : filters.front()->children) {
        const EntityFilter& row = *std::ranges::find(kEntityFilters, entity.name, &EntityFilter::element);
        condition.append(condition.empty() ? "" : " OR ").append(row.condition);
        values.push_back(row.value(entity));
    }
    // An empty filter names nobody.
    filter.Add(condition.empty() ? "FALSE" : condition, std::move(values));
}

// A record passes when, for each name in this table that the request holds, it fits one element of that name.
struct FilterKind {
    std::string_view name;
    void (*add)(Filter& filter, const Elements& elements);
};
constexpr std::array kFilters{
    FilterKind{kListId.name, ById},
    FilterKind{kTxnId.name, ById},
    FilterKind{kFullName.name, ByFullName},
    FilterKind{kRefNumber.name, ByRefNumber},
    FilterKind{kAccountType.name, ByAccountType},
    FilterKind{kItemType.name, ByType},
    FilterKind{kPaymentMethodType.name, ByType},
    FilterKind{kActiveStatus.name, ByActiveStatus},
    FilterKind{kPaidStatus.name, ByPaidStatus},
    FilterKind{kFromModifiedDate.name, ByModifiedFrom},
    FilterKind{kToModifiedDate.name, ByModifiedTo},
    FilterKind{kNameFilter.name, ByName},
    FilterKind{kNameRangeFilter.name, ByNameRange},
    FilterKind{kDateRangeFilter.name, ByDate},
    FilterKind{kEntityFilter.name, ByEntity},
};

[[nodiscard]] Elements ChildrenOf(const Element& request, std::string_view name) {
    Elements children;
    for (const Element& child : request.children) {
        if (child.name == name) {
            children.push_back(&child);
        }
    }
    return children;
}

// Records are asked for by these; one that does not exist is worth a word.
[[nodiscard]] bool NamesARecord(const Element& field) {
    return field.name == kListId.name || field.name == kTxnId.name || field.name == kFullName.name;
}

[[nodiscard]] Selection MakeSelection(const ListKind& kind, const Element& request) {
    Selection selection;
    Filter filter(selection, kind);
    for (const FilterKind& row : kFilters) {
        if (const Elements elements = ChildrenOf(request, row.name); !elements.empty()) {
            row.add(filter, elements);
        }
    }
    // A plain listing is one of what is in use; a record that is asked for by name or id is found in any state.
    if (!kind.IsTransaction() && FindChild(request, kActiveStatus.name) == nullptr &&
        std::ranges::none_of(request.children, NamesARecord)) {
        filter.Add("t.is_active");
    }
    if (const auto most = ParseCount(ChildText(request, kMaxReturned.name))) {
        selection.limit = *most;
    }
    return selection;
}

[[nodiscard]] std::string DescribeNotFound(const ListKind& kind, const RequestContext& context) {
    for (const Element& field : context.request.children) {
        if (NamesARecord(field)) {
            const auto number = field.name == kFullName.name ? context.company.NumberOfName(kind, field.text)
                                                             : context.company.NumberOfId(kind, field.text);
            if (!number) {
                return "There is no " + std::string(kind.noun) + " with the " + field.name + ' ' + Quoted(field.text) +
                       '.';
            }
        }
    }
    return {};
}

// The records of the list that pass every filter of the request.
[[nodiscard]] Answer AnswerQuery(const ListKind& kind, const RequestContext& context) {
    Answer answer;
    for (const Element& record : ReadRecords(context.company, kind, MakeSelection(kind, context.request))) {
        answer.records.push_back(MakeReturned(record, context.request));
    }
    answer.not_found = DescribeNotFound(kind, context);
    return answer;
}

template <const ListKind& kind>
[[nodiscard]] Answer Query(const RequestContext& context) {
    return AnswerQuery(kind, context);
}

constexpr std::array kQueries{
    RequestKind{"AccountQueryRq", kAccountFields, Query<kAccounts>},
    RequestKind{"CustomerQueryRq", kListFields, Query<kCustomers>},
    RequestKind{"ItemQueryRq", kItemFields, Query<kItems>},
    RequestKind{"PaymentMethodQueryRq", kPaymentMethodFields, Query<kPaymentMethods>},
    RequestKind{"SalesTaxCodeQueryRq", kListFields, Query<kSalesTaxCodes>},
    RequestKind{"InvoiceQueryRq", kInvoiceFields, Query<kInvoices>},
    RequestKind{"ReceivePaymentQueryRq", kTransactionFields, Query<kReceivedPayments>},
    RequestKind{"SalesReceiptQueryRq", kTransactionFields, Query<kSalesReceipts>},
    RequestKind{"CreditMemoQueryRq", kTransactionFields, Query<kCreditMemos>},
    RequestKind{"DepositQueryRq", kTransactionFields, Query<kDeposits>},
    RequestKind{"CheckQueryRq", kTransactionFields, Query<kChecks>},
    RequestKind{"JournalEntryQueryRq", kTransactionFields, Query<kJournalEntries>},
};

}  // namespace

std::span<const RequestKind> Queries() noexcept { return kQueries; }

}  // namespace paylodge::refhost
