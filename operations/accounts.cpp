// Accounts: lists by type, balances, creation, activation. The list operations do not look at the response's status: a
// refused query gives an empty list.

#include <array>

#include "lhxml/dom.hpp"
#include "lhxml/envelope.hpp"
#include "lhxml/response_status.hpp"
#include "operations/account_types.hpp"
#include "operations/paylodge.hpp"

namespace paylodge {
namespace {

using namespace std::string_view_literals;

// A query for active accounts; write_filter(XMLBuilder&) adds the rest.
template <class WriteFilter>
[[nodiscard]] std::string ComposeActiveAccountQuery(const WriteFilter& write_filter) {
    return ComposeRequest("AccountQueryRq", [&](XMLBuilder& request) {
        request.AddElement("ActiveStatus", "ActiveOnly");
        write_filter(request);
    });
}

[[nodiscard]] std::string ListAccountNames(const std::string& response) {
    XMLBuilder list;
    const auto accounts = FindResponseElement(response, L"AccountQueryRs");
    for (auto account = FirstChild(accounts.Get()); account; account = NextSibling(account.Get())) {
        const auto [name] = ReadChildTexts(account.Get(), std::array{L"FullName"sv});
        list.AddElement("AccountName", name);
    }
    return list.GetText();
}

// The accounts of a response with these of their values, each under the name that the page knows it by.
template <size_t count>
[[nodiscard]] std::string ListAccounts(const std::string& response,
                                       const std::array<std::wstring_view, count>& response_names,
                                       const std::array<std::string_view, count>& result_names) {
    const auto accounts = FindResponseElement(response, L"AccountQueryRs");
    if (!accounts) {
        return {};
    }
    XMLBuilder list;
    list.OpenElement("AccountQueryRs");
    for (auto account = FirstChild(accounts.Get()); account; account = NextSibling(account.Get())) {
        const auto values = ReadChildTexts(account.Get(), response_names);
        list.OpenElement("AccountRet");
        for (size_t index = 0; index < count; ++index) {
            list.AddElement(result_names[index], values[index]);
        }
        list.CloseElement("AccountRet");
    }
    list.CloseElement("AccountQueryRs");
    return list.GetText();
}

struct AccountState {
    std::string list_id;
    std::string edit_sequence;
    std::string is_active;
};

// The first account of a response; its values are empty where it has none.
[[nodiscard]] AccountState ReadAccountState(const std::string& response) {
    const auto accounts = FindResponseElement(response, L"AccountQueryRs");
    auto account = FirstChild(accounts.Get());
    while (account && !IsElement(account.Get())) {
        account = NextSibling(account.Get());
    }
    auto [list_id, edit_sequence, is_active] =
        ReadChildTexts(account.Get(), std::array{L"ListID"sv, L"EditSequence"sv, L"IsActive"sv});
    return {std::move(list_id), std::move(edit_sequence), std::move(is_active)};
}

[[nodiscard]] std::string ComposeActivation(const AccountState& account, std::string_view is_active) {
    return ComposeRequest("AccountModRq", [&](XMLBuilder& request) {
        request.OpenElement("AccountMod");
        request.AddElement("ListID", account.list_id);
        request.AddElement("EditSequence", account.edit_sequence);
        request.AddElement("IsActive", is_active);
        request.CloseElement("AccountMod");
    });
}

}  // namespace

// Names of the active accounts of a type (of all types when it is empty), each in an AccountName element.
STDMETHODIMP CPaylodge::GetAccounts(BSTR accountType, BSTR* pAccountNames) {
    return AnswerQuery(
        pAccountNames,
        [&] {
            return ComposeActiveAccountQuery(
                [&](XMLBuilder& request) { request.AddElement("AccountType", AnsiFromBstr(accountType)); });
        },
        ListAccountNames);
}

// The active accounts of several types with name, type and list id.
STDMETHODIMP CPaylodge::GetAccountsForMultipleTypes(BSTR accountTypes, BSTR* pAccountData) {
    return AnswerQuery(
        pAccountData,
        [&] {
            return ComposeActiveAccountQuery([&](XMLBuilder& request) {
                const std::string types = AnsiFromBstr(accountTypes);
                for (const std::string_view type : SplitAccountTypes(types)) {
                    request.AddElement("AccountType", type);
                }
                for (const auto element : {"FullName"sv, "ListID"sv, "AccountType"sv}) {
                    request.AddElement("IncludeRetElement", element);
                }
            });
        },
        [](const std::string& response) {
            return ListAccounts(response, std::array{L"FullName"sv, L"AccountType"sv, L"ListID"sv},
                                std::array{"AccountName"sv, "AccountType"sv, "ListID"sv});
        });
}

// The active accounts of a type with name and balance, and bank accounts with their numbers.
STDMETHODIMP CPaylodge::GetBalanceForAccountType(BSTR accountType, BSTR* pAccountData) {
    return AnswerQuery(
        pAccountData,
        [&] {
            return ComposeActiveAccountQuery([&](XMLBuilder& request) {
                const std::string type = AnsiFromBstr(accountType);
                request.AddElement("AccountType", type);
                request.AddElement("IncludeRetElement", "FullName");
                request.AddElement("IncludeRetElement", "Balance");
                if (IsBankAccountType(type)) {
                    request.AddElement("IncludeRetElement", "AccountNumber");
                    request.AddElement("IncludeRetElement", "BankNumber");
                }
            });
        },
        [](const std::string& response) {
            return ListAccounts(response, std::array{L"FullName"sv, L"Balance"sv, L"BankNumber"sv, L"AccountNumber"sv},
                                std::array{"AccountName"sv, "Balance"sv, "BankNumber"sv, "AccountNumber"sv});
        });
}

// S_OK also for a name that exists already; E_FAIL for every failure.
STDMETHODIMP CPaylodge::CreateAccount(BSTR bstrAccountName, BSTR bstrAccountType, BSTR bstrAccountNumber) {
    if (!IsSiteAllowed()) {
        return S_OK;
    }
    const std::string document = ComposeRequest("AccountAddRq", [&](XMLBuilder& request) {
        request.OpenElement("AccountAdd");
        request.AddElement("Name", AnsiFromBstr(bstrAccountName));
        request.AddElement("AccountType", AnsiFromBstr(bstrAccountType));
        request.AddElement("BankNumber", AnsiFromBstr(bstrAccountNumber));
        request.CloseElement("AccountAdd");
    });
    std::string response;
    if (FAILED(Exchange(document, response))) {
        return E_FAIL;
    }
    return CheckAddResponse(response, L"AccountAddRs", kNameExists);
}

// Sends no change when the account is in the wanted state already. The code of a failed send, or E_FAIL.
STDMETHODIMP CPaylodge::ActivateOrDeactivateAccount(BSTR bstrAccountName, VARIANT_BOOL bMakeActive) {
    if (!IsSiteAllowed()) {
        return S_OK;
    }
    const std::string_view wanted = bMakeActive == VARIANT_TRUE ? "true" : "false";
    std::string response;
    HRESULT result = Exchange(
        ComposeRequest("AccountQueryRq",
                       [&](XMLBuilder& request) { request.AddElement("FullName", AnsiFromBstr(bstrAccountName)); }),
        response);
    if (FAILED(result)) {
        return result;
    }
    const AccountState account = ReadAccountState(response);
    if (account.list_id.empty() || account.edit_sequence.empty()) {
        return E_FAIL;
    }
    if (account.is_active == wanted) {
        return S_OK;
    }
    result = Exchange(ComposeActivation(account, wanted), response);
    return FAILED(result) ? result : CheckAddResponse(response, L"AccountModRs");
}

}  // namespace paylodge
