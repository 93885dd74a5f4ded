#include "refhost/books/references.hpp"

#include <algorithm>
#include <array>

#include "refhost/books/status.hpp"

namespace paylodge::refhost {
namespace {

// Money that comes in is kept in one of these.
constexpr std::array<std::string_view, 2> kMoneyTypes{"Bank", "OtherCurrentAsset"};

[[nodiscard]] bool HasType(const ListKind& kind) { return &kind == &kAccounts || &kind == &kItems; }

[[nodiscard]] std::string Described(const ListKind& kind, std::string_view field, std::string_view name) {
    return std::string(field) + " names the " + std::string(kind.noun) + ' ' + Quoted(name);
}

[[nodiscard]] Referred Read(Company& company, const ListKind& kind, RecordNumber number, std::string_view field) {
    Statement row = company.Data().Prepare("SELECT " + std::string(kind.name_column) + ", is_active" +
                                               (HasType(kind) ? ", type" : "") + " FROM " + std::string(kind.table) +
                                               " WHERE number = ?",
                                           number);
    static_cast<void>(row.Step());
    if (row.Integer(1) == 0) {
        throw RefusedRequest(Code::kInactive, Described(kind, field, row.Text(0)) + ", which is inactive.");
    }
    return {number, std::string(row.Text(0)), HasType(kind) ? std::string(row.Text(2)) : std::string()};
}

[[nodiscard]] std::string Listed(AccountTypes types) {
    std::string text;
    for (const std::string_view type : types) {
        text.append(text.empty() ? "" : ", ").append(type);
    }
    return text;
}

void CheckType(const Referred& account, std::string_view field, AccountTypes types) {
    const bool fits =
        types.empty() ? account.type != "NonPosting" : std::ranges::find(types, account.type) != types.end();
    if (!fits) {
        throw RefusedRequest(
            Code::kUnfitAccount,
            Described(kAccounts, field, account.full_name) + " of the type " + account.type +
                (types.empty() ? ", which is never posted to." : "; its type has to be one of " + Listed(types) + '.'));
    }
}

}  // namespace

std::optional<Referred> Refer(Company& company, const ListKind& kind, const Element& element, std::string_view name) {
    const Element* const reference = FindChild(element, name);
    if (reference == nullptr) {
        return std::nullopt;
    }
    const std::string_view id = ChildText(*reference, "ListID");
    const std::string_view full_name = ChildText(*reference, "FullName");
    if (id.empty() && full_name.empty()) {
        return std::nullopt;
    }
    const auto number = id.empty() ? company.NumberOfName(kind, full_name) : company.NumberOfId(kind, id);
    if (!number) {
        throw RefusedRequest(Code::kUnknownReference,
                             Described(kind, name, id.empty() ? full_name : id) + ", which does not exist.");
    }
    return Read(company, kind, *number, name);
}

Referred ReferRequired(Company& company, const ListKind& kind, const Element& element, std::string_view name) {
    auto referred = Refer(company, kind, element, name);
    if (!referred) {
        throw RefusedRequest(Code::kMissingField, element.name + '/' + std::string(name) + "/FullName is missing.");
    }
    return *std::move(referred);
}

Referred ReferAccount(Company& company, const Element& element, std::string_view name, AccountTypes types) {
    Referred account = ReferRequired(company, kAccounts, element, name);
    CheckType(account, name, types);
    return account;
}

Referred ReferDepositAccount(Company& company, const Element& element, std::string_view name) {
    if (auto account = Refer(company, kAccounts, element, name)) {
        CheckType(*account, name, kMoneyTypes);
        return *std::move(account);
    }
    const auto number = company.NumberOfName(kAccounts, kUndepositedFunds);
    if (!number) {
        throw RefusedRequest(Code::kUnknownReference, std::string(name) + " is missing, and there is no account " +
                                                          Quoted(kUndepositedFunds) + '.');
    }
    return Read(company, kAccounts, *number, name);
}

RecordNumber FirstAccountOfType(Company& company, std::string_view type) {
    const auto number = company.Data().FindInteger(
        "SELECT number FROM accounts WHERE type = ? AND is_active ORDER BY number LIMIT 1", type);
    if (!number) {
        throw RefusedRequest(Code::kUnknownReference,
                             "The company file has no active account of the type " + std::string(type) + '.');
    }
    return *number;
}

RecordNumber AccountOfItem(Company& company, RecordNumber item) {
    Statement row = company.Data().Prepare(
        "SELECT accounts.number, accounts.full_name, accounts.is_active, items.full_name FROM items"
        " JOIN accounts ON accounts.number = items.account WHERE items.number = ?",
        item);
    if (!row.Step()) {
        return FirstAccountOfType(company, "Income");
    }
    if (row.Integer(2) == 0) {
        throw RefusedRequest(Code::kInactive, Described(kItems, "ItemRef", row.Text(3)) + ", whose account " +
                                                  Quoted(row.Text(1)) + " is inactive.");
    }
    return row.Integer(0);
}

}  // namespace paylodge::refhost
