#include "refhost/books/changes.hpp"

#include <algorithm>
#include <array>

#include "refhost/books/status.hpp"
#include "refhost/books/values.hpp"

namespace paylodge::refhost {
namespace {

[[nodiscard]] Element MakeReference(std::string_view name, const Element& record) {
    Element reference = MakeElement(name);
    AddText(reference, "ListID", ChildText(record, "ListID"));
    AddText(reference, "FullName", FullName(record));
    return reference;
}

// Of a card number only the last four digits are kept.
void MaskCardNumber(Element& card) {
    Element* const input = FindChild(card, "CreditCardTxnInputInfo");
    Element* const number = input == nullptr ? nullptr : FindChild(*input, "CreditCardNumber");
    if (number == nullptr) {
        return;
    }
    constexpr size_t kShown = 4;
    const size_t hidden = number->text.size() > kShown ? number->text.size() - kShown : 0;
    std::fill_n(number->text.begin(), hidden, 'x');
}

}  // namespace

const Element* Resolve(const Company& company, const ListKind& kind, const Element& request, std::string_view name) {
    const Element* const reference = FindChild(request, name);
    if (reference == nullptr) {
        return nullptr;
    }
    const std::string_view id = ChildText(*reference, "ListID");
    const std::string_view full_name = ChildText(*reference, "FullName");
    if (id.empty() && full_name.empty()) {
        return nullptr;
    }
    const Element* const record = id.empty() ? company.FindByName(kind, full_name) : company.FindById(kind, id);
    if (record == nullptr) {
        throw RefusedRequest(Code::kUnknownReference, std::string(name) + " names the " + std::string(kind.noun) + ' ' +
                                                          Quoted(id.empty() ? full_name : id) +
                                                          ", which does not exist.");
    }
    return record;
}

const Element& ResolveRequired(const Company& company, const ListKind& kind, const Element& request,
                               std::string_view name) {
    const Element* const record = Resolve(company, kind, request, name);
    if (record == nullptr) {
        throw RefusedRequest(Code::kMissingField, request.name + '/' + std::string(name) + "/FullName is missing.");
    }
    return *record;
}

const Element& ResolveDepositAccount(const Company& company, const Element& request, std::string_view name) {
    if (const Element* const account = Resolve(company, kAccounts, request, name)) {
        return *account;
    }
    const Element* const account = company.FindByName(kAccounts, kUndepositedFunds);
    if (account == nullptr) {
        throw RefusedRequest(Code::kUnknownReference, std::string(name) + " is missing, and there is no account " +
                                                          Quoted(kUndepositedFunds) + '.');
    }
    return *account;
}

const Element& ReceivablesAccount(const Company& company) {
    const auto accounts = company.Records(kAccounts);
    const auto found = std::ranges::find_if(
        accounts, [](const Element& account) { return ChildText(account, "AccountType") == "AccountsReceivable"; });
    if (found == accounts.end()) {
        throw RefusedRequest(Code::kUnknownReference,
                             "The company file has no account of the type AccountsReceivable.");
    }
    return *found;
}

void AddReference(Element& record, std::string_view name, const Element* target) {
    if (target != nullptr) {
        record.children.push_back(MakeReference(name, *target));
    }
}

void AddTransactionDate(Element& record, const Element& request, std::string_view now) {
    const std::string_view date = ChildText(request, "TxnDate");
    AddText(record, "TxnDate", date.empty() ? now.substr(0, 10) : date);
}

void AddCardInfo(Element& record, const Element& request) {
    if (const Element* const card = FindChild(request, kCardInfo.name)) {
        MaskCardNumber(record.children.emplace_back(*card));
    }
}

void ChangeBalance(const RequestContext& context, const ListKind& kind, const Element& record, std::int64_t cents) {
    AddToAmount(context.company.Change(kind, ChildText(record, kind.id), context.now), "Balance", cents);
}

Answer AnswerWith(const Element& record, const Element& request) {
    return {.records = {MakeReturned(record, request)}, .not_found = {}};
}

}  // namespace paylodge::refhost
