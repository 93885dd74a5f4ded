#include "refhost/books/list_entries.hpp"

#include <algorithm>
#include <array>

#include "refhost/books/changes.hpp"
#include "refhost/books/status.hpp"
#include "refhost/books/values.hpp"

namespace paylodge::refhost {
namespace {

constexpr Field kName{.name = "Name", .occurs = Occurs::kOnce, .longest = kLongestName};
constexpr Field kIsActive{.name = "IsActive", .form = Form::kBoolean};

void AddIsActive(Element& record, const Element& add) {
    AddText(record, "IsActive", ChildText(add, "IsActive") == "false" ? "false" : "true");
}

// Accounts

constexpr std::array kAccountAddFields{
    kName,
    kIsActive,
    Reference("ParentRef"),
    Choice("AccountType", kAccountTypes, Occurs::kOnce),
    Field{.name = "AccountNumber", .longest = kLongestNumber},
    Field{.name = "BankNumber", .longest = kLongestNumber},
    Field{.name = "Desc"},
};
constexpr std::array kAccountAddRequest{Aggregate("AccountAdd", kAccountAddFields, Occurs::kOnce), kIncludeRetElement};

// The name with its parents' in front. Raises RefusedRequest when the name cannot be used.
[[nodiscard]] std::string NewFullName(const Company& company, const ListKind& kind, std::string_view name,
                                      const Element* parent, Code exists = Code::kNameExists) {
    if (name.find(':') != std::string_view::npos) {
        throw RefusedRequest(Code::kInvalidValue, "Name has a colon, which stands between a parent and its part.");
    }
    std::string full_name = parent == nullptr ? std::string() : std::string(FullName(*parent)) + ':';
    full_name += name;
    if (company.FindByName(kind, full_name) != nullptr) {
        throw RefusedRequest(exists,
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
    AddIsActive(account, add);
    AddReference(account, "ParentRef", parent);
    AddText(account, "Sublevel", std::to_string(std::ranges::count(full_name, ':')));
    AddText(account, "AccountType", type);
    AddText(account, "AccountNumber", ChildText(add, "AccountNumber"));
    AddText(account, "BankNumber", ChildText(add, "BankNumber"));
    AddText(account, "Desc", ChildText(add, "Desc"));
    AddText(account, "Balance", "0.00");
    return AnswerWith(context.company.Add(kAccounts, std::move(account)), context.request);
}

// What a change of an account may say; the balance is none of it.
constexpr std::array kAccountModFields{
    Field{.name = "ListID", .occurs = Occurs::kOnce},
    Field{.name = "EditSequence", .form = Form::kCount, .occurs = Occurs::kOnce},
    kIsActive,
    Field{.name = "AccountNumber", .longest = kLongestNumber},
    Field{.name = "BankNumber", .longest = kLongestNumber},
    Field{.name = "Desc"},
};
constexpr std::array kAccountModRequest{Aggregate("AccountMod", kAccountModFields, Occurs::kOnce), kIncludeRetElement};

// Refuses a change that was made from an older state of the account than the books have.
[[nodiscard]] Answer ModifyAccount(const RequestContext& context) {
    const Element& mod = *FindChild(context.request, "AccountMod");
    const std::string_view id = ChildText(mod, "ListID");
    const Element* const account = context.company.FindById(kAccounts, id);
    if (account == nullptr) {
        throw RefusedRequest(Code::kUnknownReference,
                             "AccountMod/ListID names the account " + Quoted(id) + ", which does not exist.");
    }
    if (ChildText(*account, "EditSequence") != ChildText(mod, "EditSequence")) {
        throw RefusedRequest(Code::kStaleEditSequence, "AccountMod/EditSequence is " +
                                                           Quoted(ChildText(mod, "EditSequence")) +
                                                           ", but the account was changed since; query it again.");
    }
    Element& changed = context.company.Change(kAccounts, id, context.now);
    for (const std::string_view field : {"IsActive", "AccountNumber", "BankNumber", "Desc"}) {
        if (FindChild(mod, field) != nullptr) {
            SetChildText(changed, field, ChildText(mod, field));
        }
    }
    return AnswerWith(changed, context.request);
}

// Customers

constexpr std::array kCustomerAddFields{
    kName,
    kIsActive,
    Field{.name = "CompanyName", .longest = kLongestName},
    Field{.name = "Phone", .longest = kLongestNumber},
    Field{.name = "Email", .longest = kLongestName},
};
constexpr std::array kCustomerAddRequest{Aggregate("CustomerAdd", kCustomerAddFields, Occurs::kOnce),
                                         kIncludeRetElement};

[[nodiscard]] Answer AddCustomer(const RequestContext& context) {
    const Element& add = *FindChild(context.request, "CustomerAdd");
    const std::string_view name = Trimmed(ChildText(add, "Name"));
    const std::string full_name = NewFullName(context.company, kCustomers, name, nullptr);

    Element customer = context.company.NewRecord(kCustomers, context.now);
    AddText(customer, "Name", name);
    AddText(customer, "FullName", full_name);
    AddIsActive(customer, add);
    for (const std::string_view field : {"CompanyName", "Phone", "Email"}) {
        AddText(customer, field, ChildText(add, field));
    }
    AddText(customer, "Balance", "0.00");
    return AnswerWith(context.company.Add(kCustomers, std::move(customer)), context.request);
}

// Payment items

constexpr std::array kItemPaymentAddFields{
    kName,
    kIsActive,
    Field{.name = "ItemDesc"},
    Reference("PaymentMethodRef"),
};
constexpr std::array kItemPaymentAddRequest{Aggregate("ItemPaymentAdd", kItemPaymentAddFields, Occurs::kOnce),
                                            kIncludeRetElement};

[[nodiscard]] Answer AddPaymentItem(const RequestContext& context) {
    const Element& add = *FindChild(context.request, "ItemPaymentAdd");
    const std::string_view name = Trimmed(ChildText(add, "Name"));
    const std::string full_name = NewFullName(context.company, kItems, name, nullptr, Code::kPaymentItemExists);
    const Element* const method = Resolve(context.company, kPaymentMethods, add, "PaymentMethodRef");

    Element item = context.company.NewRecord(kItems, context.now);
    AddText(item, "Name", name);
    AddText(item, "FullName", full_name);
    AddIsActive(item, add);
    AddText(item, "Type", "Payment");
    AddText(item, "ItemDesc", ChildText(add, "ItemDesc"));
    AddReference(item, "PaymentMethodRef", method);
    return AnswerWith(context.company.Add(kItems, std::move(item)), context.request);
}

constexpr std::array kListEntries{
    RequestKind{"AccountAddRq", kAccountAddRequest, AddAccount},
    RequestKind{"AccountModRq", kAccountModRequest, ModifyAccount},
    RequestKind{"CustomerAddRq", kCustomerAddRequest, AddCustomer},
    RequestKind{"ItemPaymentAddRq", kItemPaymentAddRequest, AddPaymentItem},
};

}  // namespace

std::span<const RequestKind> ListEntries() noexcept { return kListEntries; }

}  // namespace paylodge::refhost
