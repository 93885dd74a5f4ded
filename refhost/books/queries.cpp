#include "refhost/books/queries.hpp"

#include <algorithm>
#include <functional>
#include <limits>

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
constexpr Field kEntityFilter = Aggregate("EntityFilter", kEntityFields);
constexpr Field kPaidStatus = Choice("PaidStatus", kPaidStatuses);
constexpr Field kIncludeRetElement{.name = "IncludeRetElement", .occurs = Occurs::kRepeated};

constexpr std::array kListFields{kListId,         kFullName,   kMaxReturned,     kActiveStatus,     kFromModifiedDate,
                                 kToModifiedDate, kNameFilter, kNameRangeFilter, kIncludeRetElement};
constexpr std::array kAccountFields{kListId,         kFullName,   kMaxReturned,     kActiveStatus, kFromModifiedDate,
                                    kToModifiedDate, kNameFilter, kNameRangeFilter, kAccountType,  kIncludeRetElement};
constexpr std::array kTransactionFields{kTxnId,          kRefNumber,    kMaxReturned,      kFromModifiedDate,
                                        kToModifiedDate, kEntityFilter, kIncludeRetElement};
constexpr std::array kInvoiceFields{kTxnId,          kRefNumber,    kMaxReturned, kFromModifiedDate,
                                    kToModifiedDate, kEntityFilter, kPaidStatus,  kIncludeRetElement};

using Predicate = std::function<bool(const Element& record)>;

[[nodiscard]] Predicate HasText(std::string_view name, std::string_view text) {
    return [=](const Element& record) { return ChildText(record, name) == text; };
}

[[nodiscard]] Predicate HasListId(const Element& filter, const Company&) { return HasText("ListID", filter.text); }

[[nodiscard]] Predicate HasTxnId(const Element& filter, const Company&) { return HasText("TxnID", filter.text); }

[[nodiscard]] Predicate HasRefNumber(const Element& filter, const Company&) {
    return HasText("RefNumber", filter.text);
}

[[nodiscard]] Predicate HasFullName(const Element& filter, const Company&) {
    return [&filter](const Element& record) { return IsSameName(FullName(record), filter.text); };
}

[[nodiscard]] Predicate HasAccountType(const Element& filter, const Company&) {
    return HasText("AccountType", CanonicalChoice(kAccountTypes, filter.text));
}

[[nodiscard]] bool IsActive(const Element& record) { return ChildText(record, "IsActive") != "false"; }

[[nodiscard]] Predicate HasActiveStatus(const Element& filter, const Company&) {
    const std::string_view status = CanonicalChoice(kActiveStatuses, filter.text);
    return [status](const Element& record) { return status == "All" || IsActive(record) == (status == "ActiveOnly"); };
}

[[nodiscard]] Predicate HasPaidStatus(const Element& filter, const Company&) {
    const std::string_view status = CanonicalChoice(kPaidStatuses, filter.text);
    return [status](const Element& record) {
        return status == "All" || (ChildText(record, "IsPaid") == "true") == (status == "PaidOnly");
    };
}

// A limit without a time of day takes in the whole day, so only as much as the limit says is compared.
[[nodiscard]] std::string_view ModifiedTime(const Element& record, const Element& limit) {
    return ChildText(record, "TimeModified").substr(0, limit.text.size());
}

[[nodiscard]] Predicate IsModifiedFrom(const Element& filter, const Company&) {
    return [&filter](const Element& record) { return ModifiedTime(record, filter) >= filter.text; };
}

[[nodiscard]] Predicate IsModifiedUpTo(const Element& filter, const Company&) {
    return [&filter](const Element& record) { return ModifiedTime(record, filter) <= filter.text; };
}

[[nodiscard]] Predicate MatchesName(const Element& filter, const Company&) {
    const std::string_view criterion = CanonicalChoice(kMatchCriteria, ChildText(filter, "MatchCriterion"));
    return [criterion, wanted = Folded(ChildText(filter, "Name"))](const Element& record) {
        const std::string name = Folded(ChildText(record, "Name"));
        return criterion == "StartsWith" ? name.starts_with(wanted)
               : criterion == "EndsWith" ? name.ends_with(wanted)
                                         : name.find(wanted) != std::string::npos;
    };
}

[[nodiscard]] Predicate IsInNameRange(const Element& filter, const Company&) {
    return [from = Folded(ChildText(filter, "FromName")),
            to = Folded(ChildText(filter, "ToName"))](const Element& record) {
        const std::string name = Folded(ChildText(record, "Name"));
        return name >= from && (to.empty() || name <= to);
    };
}

[[nodiscard]] Predicate IsOfCustomer(std::string_view name, std::string_view text) {
    return [=](const Element& record) {
        const Element* const customer = FindChild(record, "CustomerRef");
        return customer != nullptr && IsSameName(ChildText(*customer, name), text);
    };
}

// The customer and the jobs below it.
[[nodiscard]] Predicate IsOfFamily(std::string_view full_name) {
    return [prefix = Folded(full_name) + ':'](const Element& record) {
        const Element* const customer = FindChild(record, "CustomerRef");
        return customer != nullptr && (Folded(ChildText(*customer, "FullName")) + ':').starts_with(prefix);
    };
}

[[nodiscard]] Predicate PrepareEntity(const Element& filter, const Company& company) {
    if (filter.name == "ListIDWithChildren") {
        const Element* const customer = company.FindById(kCustomers, filter.text);
        return customer == nullptr ? Predicate([](const Element&) { return false; }) : IsOfFamily(FullName(*customer));
    }
    return filter.name == "FullNameWithChildren" ? IsOfFamily(filter.text) : IsOfCustomer(filter.name, filter.text);
}

[[nodiscard]] Predicate IsAnyOf(std::vector<Predicate> predicates) {
    return [predicates = std::move(predicates)](const Element& record) {
        return std::ranges::any_of(predicates, [&](const Predicate& matches) { return matches(record); });
    };
}

[[nodiscard]] Predicate IsOfEntity(const Element& filter, const Company& company) {
    std::vector<Predicate> entities;
    for (const Element& entity : filter.children) {
        entities.push_back(PrepareEntity(entity, company));
    }
    return IsAnyOf(std::move(entities));
}

// A record passes when, for each name in this table that the request holds, it matches one element of that name.
struct Filter {
    std::string_view name;
    Predicate (*prepare)(const Element& filter, const Company& company);
};
constexpr std::array kFilters{
    Filter{kListId.name, HasListId},
    Filter{kFullName.name, HasFullName},
    Filter{kTxnId.name, HasTxnId},
    Filter{kRefNumber.name, HasRefNumber},
    Filter{kAccountType.name, HasAccountType},
    Filter{kActiveStatus.name, HasActiveStatus},
    Filter{kPaidStatus.name, HasPaidStatus},
    Filter{kFromModifiedDate.name, IsModifiedFrom},
    Filter{kToModifiedDate.name, IsModifiedUpTo},
    Filter{kNameFilter.name, MatchesName},
    Filter{kNameRangeFilter.name, IsInNameRange},
    Filter{kEntityFilter.name, IsOfEntity},
};

// Records are asked for by these; one that does not exist is worth a word.
constexpr std::array kSelectors{Filter{kListId.name, HasListId}, Filter{kFullName.name, HasFullName},
                                Filter{kTxnId.name, HasTxnId}};

[[nodiscard]] bool NamesRecords(const Element& request) {
    return std::ranges::any_of(kSelectors,
                               [&](const Filter& selector) { return FindChild(request, selector.name) != nullptr; });
}

[[nodiscard]] std::vector<Predicate> PrepareFilters(const RequestContext& context) {
    std::vector<Predicate> filters;
    for (const Filter& row : kFilters) {
        std::vector<Predicate> alternatives;
        for (const Element& child : context.request.children) {
            if (child.name == row.name) {
                alternatives.push_back(row.prepare(child, context.company));
            }
        }
        if (!alternatives.empty()) {
            filters.push_back(IsAnyOf(std::move(alternatives)));
        }
    }
    // A plain listing is one of what is in use; a record that is asked for by name or id is found in any state.
    if (FindChild(context.request, kActiveStatus.name) == nullptr && !NamesRecords(context.request)) {
        filters.emplace_back(IsActive);
    }
    return filters;
}

[[nodiscard]] std::string DescribeNotFound(const ListKind& kind, const RequestContext& context) {
    for (const Filter& selector : kSelectors) {
        for (const Element& child : context.request.children) {
            if (child.name == selector.name &&
                std::ranges::none_of(context.company.Records(kind), selector.prepare(child, context.company))) {
                return "There is no " + std::string(kind.noun) + " with the " + child.name + ' ' + Quoted(child.text) +
                       '.';
            }
        }
    }
    return {};
}

// The records of the list that pass every filter of the request.
[[nodiscard]] Answer AnswerQuery(const ListKind& kind, const RequestContext& context) {
    const std::vector<Predicate> filters = PrepareFilters(context);
    const size_t most =
        ParseCount(ChildText(context.request, kMaxReturned.name)).value_or(std::numeric_limits<std::uint32_t>::max());
    Answer answer;
    for (const Element& record : context.company.Records(kind)) {
        if (answer.records.size() == most) {
            break;
        }
        if (std::ranges::all_of(filters, [&](const Predicate& passes) { return passes(record); })) {
            answer.records.push_back(MakeReturned(record, context.request));
        }
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
    RequestKind{"ItemQueryRq", kListFields, Query<kItems>},
    RequestKind{"PaymentMethodQueryRq", kListFields, Query<kPaymentMethods>},
    RequestKind{"SalesTaxCodeQueryRq", kListFields, Query<kSalesTaxCodes>},
    RequestKind{"InvoiceQueryRq", kInvoiceFields, Query<kInvoices>},
    RequestKind{"ReceivePaymentQueryRq", kTransactionFields, Query<kReceivedPayments>},
    RequestKind{"SalesReceiptQueryRq", kTransactionFields, Query<kSalesReceipts>},
    RequestKind{"CreditMemoQueryRq", kTransactionFields, Query<kCreditMemos>},
    RequestKind{"DepositQueryRq", kTransactionFields, Query<kDeposits>},
    RequestKind{"CheckQueryRq", kTransactionFields, Query<kChecks>},
};

}  // namespace

std::span<const RequestKind> Queries() noexcept { return kQueries; }

}  // namespace paylodge::refhost
