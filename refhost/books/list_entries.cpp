#include "refhost/books/list_entries.hpp"

#include <algorithm>
#include <array>

#include "refhost/books/names.hpp"
#include "refhost/books/references.hpp"
#include "refhost/books/status.hpp"
#include "refhost/books/values.hpp"

namespace paylodge::refhost {
namespace {

constexpr Field kName{.name = "Name", .form = Form::kName, .occurs = Occurs::kOnce, .longest = kLongestName};
constexpr Field kIsActive{.name = "IsActive", .form = Form::kBoolean};

// What is empty is not stored.
[[nodiscard]] std::optional<std::string> Given(const Element& element, std::string_view field) {
    const std::string_view text = ChildText(element, field);
    return text.empty() ? std::nullopt : std::optional(std::string(text));
}

[[nodiscard]] std::int64_t IsActive(const Element& element) {
    return ChildText(element, "IsActive") == "false" ? 0 : 1;
}

// A name that a new record can have.
struct NewName {
    std::string name;
    // With the parent's in front.
    std::string full_name;
    std::optional<RecordNumber> parent;
};

// Throws RefusedRequest with the status for a name that exists, and for a name that cannot be used.
[[nodiscard]] NewName ReadName(const RequestContext& context, const ListKind& kind, const Element& add,
                               Code exists = Code::kNameExists) {
    NewName name{std::string(Trimmed(ChildText(add, "Name"))), {}, {}};
    if (name.name.find(':') != std::string::npos) {
        throw RefusedRequest(Code::kInvalidValue, "Name has a colon, which stands between a parent and its part.");
    }
    const auto parent = Refer(context.company, kind, add, "ParentRef");
    name.parent = NumberOf(parent);
    name.full_name = (parent ? parent->full_name + ':' : std::string()) + name.name;
    if (context.company.NumberOfName(kind, name.full_name)) {
        throw RefusedRequest(exists,
                             "Name: the " + std::string(kind.noun) + ' ' + Quoted(name.full_name) + " exists already.");
    }
    return name;
}

[[nodiscard]] Answer AnswerWithRecord(const RequestContext& context, const ListKind& kind, RecordNumber number) {
    return AnswerWith(context.company.Record(kind, number), context.request);
}

// Accounts

constexpr std::array kAccountAddFields{
    kName,
    kIsActive,
    Reference("ParentRef"),
    Choice("AccountType", kAccountTypes, Occurs::kOnce),
    Field{.name = "AccountNumber", .form = Form::kName, .longest = kLongestNumber},
    Field{.name = "BankNumber", .form = Form::kName, .longest = kLongestNumber},
    Field{.name = "Desc"},
};
constexpr std::array kAccountAddRequest{Aggregate("AccountAdd", kAccountAddFields, Occurs::kOnce), kIncludeRetElement};

[[nodiscard]] Answer AddAccount(const RequestContext& context) {
    const Element& add = *FindChild(context.request, "AccountAdd");
    const std::string_view type = CanonicalChoice(kAccountTypes, ChildText(add, "AccountType"));
    const NewName name = ReadName(context, kAccounts, add);
    if (const auto parent = Refer(context.company, kAccounts, add, "ParentRef"); parent && parent->type != type) {
        throw RefusedRequest(Code::kUnfitAccount,
                             "AccountType differs from the one of the account in ParentRef, " + parent->type + '.');
    }
    const RecordNumber number = context.company.NewNumber(context.now);
    context.company.Data().Run(
        "INSERT INTO accounts (number, parent, name, full_name, folded_name, is_active, type, account_number,"
        " bank_number, description) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
        number, name.parent, name.name, name.full_name, Folded(name.full_name), IsActive(add), type,
        Given(add, "AccountNumber"), Given(add, "BankNumber"), Given(add, "Desc"));
    return AnswerWithRecord(context, kAccounts, number);
}

// What a change of an account may say; the balance is none of it.
constexpr std::array kAccountModFields{
    Field{.name = "ListID", .occurs = Occurs::kOnce},
    Field{.name = "EditSequence", .form = Form::kCount, .occurs = Occurs::kOnce},
    kIsActive,
    Field{.name = "AccountNumber", .form = Form::kName, .longest = kLongestNumber},
    Field{.name = "BankNumber", .form = Form::kName, .longest = kLongestNumber},
    Field{.name = "Desc"},
};
constexpr std::array kAccountModRequest{Aggregate("AccountMod", kAccountModFields, Occurs::kOnce), kIncludeRetElement};

// The fields of a change that are texts, and the columns that hold them.
struct TextField {
    std::string_view element;
    std::string_view column;
};
constexpr std::array kAccountTexts{TextField{"AccountNumber", "account_number"}, TextField{"BankNumber", "bank_number"},
                                   TextField{"Desc", "description"}};

// Refuses a change that was made from an older state of the account than the books have.
[[nodiscard]] Answer ModifyAccount(const RequestContext& context) {
    const Element& mod = *FindChild(context.request, "AccountMod");
    const std::string_view id = ChildText(mod, "ListID");
    Database& data = context.company.Data();
    const auto number = context.company.NumberOfId(kAccounts, id);
    if (!number) {
        throw RefusedRequest(Code::kUnknownReference,
                             "AccountMod/ListID names the account " + Quoted(id) + ", which does not exist.");
    }
    const auto sequence = data.FindInteger("SELECT edit_sequence FROM records WHERE number = ?", *number);
    if (std::to_string(sequence.value_or(0)) != ChildText(mod, "EditSequence")) {
        throw RefusedRequest(Code::kStaleEditSequence, "AccountMod/EditSequence is " +
                                                           Quoted(ChildText(mod, "EditSequence")) +
                                                           ", but the account was changed since; query it again.");
    }
    if (FindChild(mod, "IsActive") != nullptr) {
        data.Run("UPDATE accounts SET is_active = ? WHERE number = ?", IsActive(mod), *number);
    }
    for (const TextField& field : kAccountTexts) {
        if (FindChild(mod, field.element) != nullptr) {
            data.Run("UPDATE accounts SET " + std::string(field.column) + " = ? WHERE number = ?",
                     Given(mod, field.element), *number);
        }
    }
    context.company.Touch(*number, context.now);
    return AnswerWithRecord(context, kAccounts, *number);
}

// Customers

constexpr std::array kCustomerAddFields{
    kName,
    kIsActive,
    Reference("ParentRef"),
    Field{.name = "CompanyName", .form = Form::kName, .longest = kLongestName},
    Field{.name = "Contact", .form = Form::kName, .longest = kLongestName},
    Field{.name = "Phone", .form = Form::kName, .longest = kLongestNumber},
    Field{.name = "Email", .form = Form::kName, .longest = kLongestName},
};
constexpr std::array kCustomerAddRequest{Aggregate("CustomerAdd", kCustomerAddFields, Occurs::kOnce),
                                         kIncludeRetElement};

[[nodiscard]] Answer AddCustomer(const RequestContext& context) {
    const Element& add = *FindChild(context.request, "CustomerAdd");
    const NewName name = ReadName(context, kCustomers, add);
    const RecordNumber number = context.company.NewNumber(context.now);
    context.company.Data().Run(
        "INSERT INTO customers (number, parent, name, full_name, folded_name, is_active, company_name, contact, phone,"
        " email) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
        number, name.parent, name.name, name.full_name, Folded(name.full_name), IsActive(add),
        Given(add, "CompanyName"), Given(add, "Contact"), Given(add, "Phone"), Given(add, "Email"));
    return AnswerWithRecord(context, kCustomers, number);
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
    const NewName name = ReadName(context, kItems, add, Code::kPaymentItemExists);
    const auto method = Refer(context.company, kPaymentMethods, add, "PaymentMethodRef");
    const RecordNumber number = context.company.NewNumber(context.now);
    context.company.Data().Run(
        "INSERT INTO items (number, name, full_name, folded_name, is_active, type, description, payment_method)"
        " VALUES (?, ?, ?, ?, ?, 'Payment', ?, ?)",
        number, name.name, name.full_name, Folded(name.full_name), IsActive(add), Given(add, "ItemDesc"),
        NumberOf(method));
    return AnswerWithRecord(context, kItems, number);
}

constexpr std::array kListEntries{
    RequestKind{"AccountAddRq", kAccountAddRequest, AddAccount, true},
    RequestKind{"AccountModRq", kAccountModRequest, ModifyAccount, true},
    RequestKind{"CustomerAddRq", kCustomerAddRequest, AddCustomer, true},
    RequestKind{"ItemPaymentAddRq", kItemPaymentAddRequest, AddPaymentItem, true},
};

}  // namespace

std::span<const RequestKind> ListEntries() noexcept { return kListEntries; }

}  // namespace paylodge::refhost
