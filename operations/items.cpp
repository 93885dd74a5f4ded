// Items and their taxability, payment methods, and the host's own transaction forms.

#include <array>

#include "lhxml/dom.hpp"
#include "lhxml/envelope.hpp"
#include "operations/paylodge.hpp"

namespace paylodge {
namespace {

using namespace std::string_view_literals;

[[nodiscard]] std::string ListItemNames(const std::string& response) {
    XMLBuilder list;
    const auto items = FindResponseElement(response, L"ItemQueryRs");
    for (auto item = FirstChild(items.Get()); item; item = NextSibling(item.Get())) {
        // An item with a full name, even an empty one, is not known by its short name.
        auto name_element = FindChild(item.Get(), L"FullName");
        if (!name_element) {
            name_element = FindChild(item.Get(), L"Name");
        }
        std::string name;
        GetNodeText(name_element.Get(), name);
        list.AddElement("ItemName", name);
    }
    return list.GetText();
}

[[nodiscard]] std::string ListPaymentMethods(const std::string& response, std::set<std::string>& known_names) {
    const auto methods = FindResponseElement(response, L"PaymentMethodQueryRs");
    if (!methods) {
        return {};
    }
    XMLBuilder list;
    list.OpenElement("PaymentMethods");
    for (auto method = FirstChild(methods.Get()); method; method = NextSibling(method.Get())) {
        const auto [name] = ReadChildTexts(method.Get(), std::array{L"Name"sv});
        if (!name.empty()) {
            known_names.insert(name);
            list.AddElement("PayMethName", name);
        }
    }
    list.CloseElement("PaymentMethods");
    return list.GetText();
}

// The list id of the first sales tax code that an item's response refers to; empty without one.
[[nodiscard]] std::string FindSalesTaxCodeID(const std::string& response) {
    const auto reference = FindResponseElement(response, L"SalesTaxCodeRef");
    std::string list_id;
    GetNodeText(FindChild(reference.Get(), L"ListID").Get(), list_id);
    return list_id;
}

// Whether the first sales tax code of a response is taxable; the text has to be exactly "true".
[[nodiscard]] bool ReadIsTaxable(const std::string& response) {
    std::string is_taxable;
    GetNodeText(FindResponseElement(response, L"IsTaxable").Get(), is_taxable);
    return is_taxable == "true";
}

}  // namespace

// The names of all items, each in an ItemName element.
STDMETHODIMP CPaylodge::GetItems(BSTR* pItemNames) {
    return AnswerQuery(
        pItemNames, [] { return ComposeRequest("ItemQueryRq", [](XMLBuilder&) {}); }, ListItemNames);
}

// The names of the active payment methods that the host sorts from A to Z.
STDMETHODIMP CPaylodge::GetPaymentMethods(BSTR* pPaymentMethodNames) {
    return AnswerQuery(
        pPaymentMethodNames,
        [] {
            return ComposeRequest("PaymentMethodQueryRq", [](XMLBuilder& request) {
                request.AddElement("MaxReturned", "10000");
                request.AddElement("ActiveStatus", "ActiveOnly");
                request.AddElement("FromModifiedDate", "1970-01-01T00:00:00");
                // Not the end of 32-bit seconds, though day and time are: the host is asked for exactly this moment.
                request.AddElement("ToModifiedDate", "2030-01-19T03:14:07");
                request.OpenElement("NameRangeFilter");
                request.AddElement("FromName", "A");
                request.AddElement("ToName", "Z");
                request.CloseElement("NameRangeFilter");
            });
        },
        [this](const std::string& response) { return ListPaymentMethods(response, lookup_map_); });
}

// VARIANT_TRUE when the item's sales tax code is taxable. The code of the item query; a failed query for the tax code
// means not taxable.
STDMETHODIMP CPaylodge::IsTaxableItem(BSTR itemName, VARIANT_BOOL* pIsTaxable) {
    if (!IsSiteAllowed()) {
        return S_OK;
    }
    if (pIsTaxable == nullptr) {
        return E_POINTER;
    }
    const std::string item_query = ComposeRequest(
        "ItemQueryRq", [&](XMLBuilder& request) { request.AddElement("FullName", AnsiFromBstr(itemName)); });
    std::string response;
    const HRESULT result = Exchange(item_query, response);
    if (FAILED(result)) {
        return result;
    }
    const std::string tax_code_id = FindSalesTaxCodeID(response);
    *pIsTaxable = !tax_code_id.empty() && IsTaxableCode(tax_code_id) ? VARIANT_TRUE : VARIANT_FALSE;
    return result;
}

bool CPaylodge::IsTaxableCode(std::string_view tax_code_id) {
    const std::string document =
        ComposeRequest("SalesTaxCodeQueryRq", [&](XMLBuilder& request) { request.AddElement("ListID", tax_code_id); });
    std::string response;
    return SUCCEEDED(Exchange(document, response)) && ReadIsTaxable(response);
}

// Asks the host to show a transaction in its own form; what it answers is not looked at.
STDMETHODIMP CPaylodge::OpenTxnForm(BSTR txnType, BSTR txnID) {
    if (!IsSiteAllowed()) {
        return S_OK;
    }
    std::string response;
    return Exchange(ComposeRequest("TxnDisplayModRq",
                                   [&](XMLBuilder& request) {
                                       request.AddElement("TxnDisplayModType", AnsiFromBstr(txnType));
                                       request.AddElement("TxnID", AnsiFromBstr(txnID));
                                   }),
                    response);
}

}  // namespace paylodge
