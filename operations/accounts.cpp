// Accounts: lists by type, balances, creation, activation. The list operations do not look at the response's status: a
// refused query leads to an empty list.

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

[[nodiscard]] HRESULT ListAccountNames(const std::string& response, std::string& text) {
    ComPtr<IXMLDOMNode> accounts;
    HRESULT result = FindResponseElement(response, L"AccountQueryRs", accounts);
    if (FAILED(result)) {
        return result;
    }
    XMLBuilder list;
    result = VisitChildren(accounts.Get(), [&list](IXMLDOMNode* account) {
        std::array<std::string, 1> name;
        const HRESULT was_read = ReadChildTexts(account, std::array{L"FullName"sv}, name);
        list.AddElement("AccountName", name.front());
        return was_read;
    });
    text = std::move(list).GetText();
    return result;
}

// The accounts of a response with these of their values, each under the name that the page knows it by.
template <size_t count>
[[nodiscard]] HRESULT ListAccounts(const std::string& response,
                                   const std::array<std::wstring_view, count>& response_names,
                                   const std::array<std::string_view, count>& result_names, std::string& text) {
    ComPtr<IXMLDOMNode> accounts;
    HRESULT result = FindResponseElement(response, L"AccountQueryRs", accounts);
    if (FAILED(result) || !accounts) {
        return result;
    }
    XMLBuilder list;
    list.OpenElement("AccountQueryRs");
    result = VisitChildren(accounts.Get(), [&](IXMLDOMNode* account) {
        std::array<std::string, count> values;
        const HRESULT was_read = ReadChildTexts(account, response_names, values);
        list.OpenElement("AccountRet");
        for (size_t index = 0; index < count; ++index) {
            list.AddElement(result_names[index], values[index]);
        }
        list.CloseElement("AccountRet");
        return was_read;
    });
    list.CloseElement("AccountQueryRs");
    text = std::move(list).GetText();
    return result;
}

struct AccountState {
    std::string list_id;
    std::string edit_sequence;
    std::string is_active;
};

// The first account of a response; its values are empty where it has none, and where they cannot be read.
[[nodiscard]] AccountState ReadAccountState(const std::string& response) {
    ComPtr<IXMLDOMNode> accounts;
    ComPtr<IXMLDOMNode> account;
    std::array<std::string, 3> values;
    if (FAILED(FindResponseElement(response, L"AccountQueryRs", accounts)) ||
        FAILED(FindFirstChildElement(accounts.Get(), account)) ||
        FAILED(ReadChildTexts(account.Get(), std::array{L"ListID"sv, L"EditSequence"sv, L"IsActive"sv}, values))) {
        return {};
    }
    return {std::move(values[0]), std::move(values[1]), std::move(values[2])};
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
        [](const std::string& response, std::string& text) {
            return ListAccounts(response, std::array{L"FullName"sv, L"AccountType"sv, L"ListID"sv},
                                std::array{"AccountName"sv, "AccountType"sv, "ListID"sv}, text);
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
        [](const std::string& response, std::string& text) {
            return ListAccounts(response, std::array{L"FullName"sv, L"Balance"sv, L"BankNumber"sv, L"AccountNumber"sv},
                                std::array{"AccountName"sv, "Balance"sv, "BankNumber"sv, "AccountNumber"sv}, text);
        });
}

// S_OK also for a name that exists already; E_FAIL for every failure.
STDMETHODIMP CPaylodge::CreateAccount(BSTR bstrAccountName, BSTR bstrAccountType, BSTR bstrAccountNumber) {
    if (!IsSiteAllowed()) {
        return S_OK;
    }
    std::string document = ComposeRequest("AccountAddRq", [&](XMLBuilder& request) {
        request.OpenElement("AccountAdd");
        request.AddElement("Name", AnsiFromBstr(bstrAccountName));
        request.AddElement("AccountType", AnsiFromBstr(bstrAccountType));
        request.AddElement("BankNumber", AnsiFromBstr(bstrAccountNumber));
        request.CloseElement("AccountAdd");
    });
    std::string response;
    if (FAILED(Send(std::move(document), response))) {
        return E_FAIL;
    }
    return CheckAddResponse(response, L"AccountAddRs", kNameExists);
}

// Sends no change when the account is in the wanted state already. Returns the HRESULT of a failed send, or E_FAIL.
STDMETHODIMP CPaylodge::ActivateOrDeactivateAccount(BSTR bstrAccountName, VARIANT_BOOL bMakeActive) {
    if (!IsSiteAllowed()) {
        return S_OK;
    }
    const std::string_view wanted = bMakeActive == VARIANT_TRUE ? "true" : "false";
    std::string response;
    HRESULT result = Send(
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
    result = Send(ComposeActivation(account, wanted), response);
    return FAILED(result) ? result : CheckAddResponse(response, L"AccountModRs");
}

}  // namespace paylodge
