// The customer behind a scanned check and the open invoices that it pays. The response's status is not looked at: one
// without the expected elements leads to an empty result.

#include <windows.h>

#include <mbstring.h>

#include <array>

#include "lhxml/dom.hpp"
#include "lhxml/envelope.hpp"
#include "operations/check_matching.hpp"
#include "operations/paylodge.hpp"

namespace paylodge {
namespace {

using namespace std::string_view_literals;

// As the multibyte code page of the C library sees letter case.
[[nodiscard]] bool IsSameName(const std::string& left, const std::string& right) noexcept {
    return ::_mbsicmp(reinterpret_cast<const unsigned char*>(left.c_str()),
                      reinterpret_cast<const unsigned char*>(right.c_str())) == 0;
}

// The list id of the first customer with exactly this name, in any letter case, that has one.
[[nodiscard]] HRESULT FindCustomerID(const std::string& response, const std::string& wanted_name,
                                     std::string& list_id) {
    ComPtr<IXMLDOMNode> customers;
    const HRESULT result = FindResponseElement(response, L"CustomerQueryRs", customers);
    return FAILED(result) ? result : VisitChildren(customers.Get(), [&](IXMLDOMNode* customer) {
        std::array<ComPtr<IXMLDOMNode>, 2> elements;
        auto& [name_element, id_element] = elements;
        HRESULT was_read = FindChildren(customer, std::array{L"Name"sv, L"ListID"sv}, elements);
        if (FAILED(was_read) || !name_element || !id_element) {
            return was_read;
        }
        std::string name;
        was_read = GetNodeText(name_element.Get(), name);
        if (FAILED(was_read) || !IsSameName(name, wanted_name)) {
            return was_read;
        }
        was_read = GetNodeText(id_element.Get(), list_id);
        return FAILED(was_read) ? was_read : S_FALSE;
    });
}

[[nodiscard]] HRESULT ReadFirstCustomerName(const std::string& response, std::string& name) {
    ComPtr<IXMLDOMNode> customers;
    HRESULT result = FindResponseElement(response, L"CustomerQueryRs", customers);
    if (SUCCEEDED(result)) {
        result = VisitChildren(customers.Get(), [&name](IXMLDOMNode* customer) {
            std::array<std::string, 1> texts;
            const HRESULT was_read = ReadChildTexts(customer, std::array{L"Name"sv}, texts);
            name = std::move(texts.front());
            return FAILED(was_read) ? was_read : S_FALSE;
        });
    }
    return result;
}

// An invoice that cannot be read is none: it enters neither the list of numbers nor the sum.
void ShowInvoice(CheckMatcher& matcher, IXMLDOMNode* invoice) {
    std::array<ComPtr<IXMLDOMNode>, 2> elements;
    const auto& [balance_element, reference_element] = elements;
    std::string balance;
    std::string reference;
    if (SUCCEEDED(FindChildren(invoice, std::array{L"BalanceRemaining"sv, L"RefNumber"sv}, elements)) &&
        balance_element && SUCCEEDED(GetNodeText(balance_element.Get(), balance)) &&
        SUCCEEDED(GetNodeText(reference_element.Get(), reference))) {
        matcher.AddInvoice(reference, balance);
    }
}

[[nodiscard]] HRESULT MatchInvoices(const std::string& response, const std::string& check_amount, std::string& text) {
    CheckMatcher matcher(check_amount);
    if (matcher.IsDecided()) {
        return S_OK;
    }
    ComPtr<IXMLDOMNode> invoices;
    HRESULT result = FindResponseElement(response, L"InvoiceQueryRs", invoices);
    if (SUCCEEDED(result)) {
        result = VisitChildren(invoices.Get(), [&matcher](IXMLDOMNode* invoice) {
            ShowInvoice(matcher, invoice);
            return matcher.IsDecided() ? S_FALSE : S_OK;
        });
    }
    text = matcher.Result();
    return result;
}

}  // namespace

// The list id of the customer whose name is the payor's, without regard to letter case and spaces around it; else
// empty.
STDMETHODIMP CPaylodge::GetCustomerIDForName(BSTR payorName, BSTR* pCustomerListElemID) {
    std::string name;
    return AnswerQuery(
        pCustomerListElemID,
        [&] {
            name = TrimSpaces(AnsiFromBstr(payorName));
            return ComposeRequest("CustomerQueryRq", [&](XMLBuilder& request) {
                request.AddElement("ActiveStatus", "ActiveOnly");
                request.OpenElement("NameFilter");
                request.AddElement("MatchCriterion", "Contains");
                request.AddElement("Name", name);
                request.CloseElement("NameFilter");
            });
        },
        [&](const std::string& response, std::string& text) { return FindCustomerID(response, name, text); });
}

// The customer's name, or empty when there is no such customer.
STDMETHODIMP CPaylodge::GetCustomerNameForID(BSTR customerListElemID, BSTR* pCustomerName) {
    return AnswerQuery(
        pCustomerName,
        [&] {
            return ComposeRequest("CustomerQueryRq", [&](XMLBuilder& request) {
                request.AddElement("ListID", AnsiFromBstr(customerListElemID));
            });
        },
        ReadFirstCustomerName);
}

// The number of the open invoice that the check pays, or the numbers of all of them when it pays all together, or empty
// when neither is so. E_INVALIDARG without a customer or an amount.
STDMETHODIMP CPaylodge::GetInvoiceInfoForCustomerID(BSTR customerListElemID, BSTR checkAmount, BSTR* pInvoiceInfo) {
    if (!IsSiteAllowed()) {
        return S_OK;
    }
    const std::string list_id = AnsiFromBstr(customerListElemID);
    const std::string amount = AnsiFromBstr(checkAmount);
    if (list_id.empty() || amount.empty()) {
        return E_INVALIDARG;
    }
    return AnswerAllowedQuery(
        pInvoiceInfo,
        [&] {
            return ComposeRequest("InvoiceQueryRq", [&](XMLBuilder& request) {
                request.OpenElement("EntityFilter");
                request.AddElement("ListIDWithChildren", list_id);
                request.CloseElement("EntityFilter");
                request.AddElement("PaidStatus", "NotPaidOnly");
            });
        },
        [&](const std::string& response, std::string& text) { return MatchInvoices(response, amount, text); });
}

}  // namespace paylodge
