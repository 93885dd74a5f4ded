// The customer behind a scanned check and the open invoices that it pays. The response's status is not looked at: one
// without the expected elements gives an empty result.

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

[[nodiscard]] bool EqualsIgnoringCase(const std::string& left, const std::string& right) noexcept {
    return ::_mbsicmp(reinterpret_cast<const unsigned char*>(left.c_str()),
                      reinterpret_cast<const unsigned char*>(right.c_str())) == 0;
}

// The text of the node's first child of this name, and whether there is one.
[[nodiscard]] bool ReadChild(IXMLDOMNode* node, std::wstring_view name, std::string& text) {
    const auto child = FindChild(node, name);
    GetNodeText(child.Get(), text);
    return static_cast<bool>(child);
}

// The list id of the first customer with exactly this name, in any letter case.
[[nodiscard]] std::string FindCustomerID(const std::string& response, const std::string& wanted_name) {
    const auto customers = FindResponseElement(response, L"CustomerQueryRs");
    for (auto customer = FirstChild(customers.Get()); customer; customer = NextSibling(customer.Get())) {
        std::string name;
        std::string list_id;
        if (ReadChild(customer.Get(), L"Name", name) && EqualsIgnoringCase(name, wanted_name) &&
            ReadChild(customer.Get(), L"ListID", list_id)) {
            return list_id;
        }
    }
    return {};
}

[[nodiscard]] std::string FirstCustomerName(const std::string& response) {
    const auto customers = FindResponseElement(response, L"CustomerQueryRs");
    std::string name;
    static_cast<void>(ReadChild(FirstChild(customers.Get()).Get(), L"Name", name));
    return name;
}

[[nodiscard]] std::string MatchInvoices(const std::string& response, const std::string& check_amount) {
    CheckMatcher matcher(check_amount);
    if (matcher.IsDecided()) {
        return {};
    }
    const auto invoices = FindResponseElement(response, L"InvoiceQueryRs");
    for (auto invoice = FirstChild(invoices.Get()); invoice && !matcher.IsDecided();
         invoice = NextSibling(invoice.Get())) {
        const auto [balance_element, reference_element] =
            FindChildren(invoice.Get(), std::array{L"BalanceRemaining"sv, L"RefNumber"sv});
        if (balance_element) {
            std::string balance;
            std::string reference;
            GetNodeText(balance_element.Get(), balance);
            GetNodeText(reference_element.Get(), reference);
            matcher.AddInvoice(reference, balance);
        }
    }
    return matcher.Result();
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
        [&](const std::string& response) { return FindCustomerID(response, name); });
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
        FirstCustomerName);
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
        [&](const std::string& response) { return MatchInvoices(response, amount); });
}

}  // namespace paylodge
