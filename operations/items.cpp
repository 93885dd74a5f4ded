// Items and their taxability, payment methods, and the host's own transaction forms.

#include <array>

#include "lhxml/dom.hpp"
#include "lhxml/envelope.hpp"
#include "operations/paylodge.hpp"

namespace paylodge {
namespace {

using namespace std::string_view_literals;

// An item with a full name, even an empty one, is not known by its short name.
[[nodiscard]] HRESULT ReadItemName(IXMLDOMNode* item, std::string& name) {
    std::array<ComPtr<IXMLDOMNode>, 2> elements;
    const auto& [full_name, short_name] = elements;
    // What cannot be looked for counts as missing here.
    static_cast<void>(FindChildren(item, std::array{L"FullName"sv, L"Name"sv}, elements));
    return GetNodeText(full_name ? full_name.Get() : short_name.Get(), name);
}

[[nodiscard]] HRESULT ListItemNames(const std::string& response, std::string& text) {
    ComPtr<IXMLDOMNode> items;
    HRESULT result = FindResponseElement(response, L"ItemQueryRs", items);
    if (FAILED(result)) {
        return result;
    }
    XMLBuilder list;
    result = VisitChildren(items.Get(), [&list](IXMLDOMNode* item) {
        std::string name;
        const HRESULT was_read = ReadItemName(item, name);
        list.AddElement("ItemName", name);
        return was_read;
    });
    text = std::move(list).GetText();
    return result;
}

[[nodiscard]] HRESULT ListPaymentMethods(const std::string& response, std::set<std::string>& known_names,
                                         std::string& text) {
    ComPtr<IXMLDOMNode> methods;
    HRESULT result = FindResponseElement(response, L"PaymentMethodQueryRs", methods);
    if (FAILED(result) || !methods) {
        return result;
    }
    XMLBuilder list;
    list.OpenElement("PaymentMethods");
    result = VisitChildren(methods.Get(), [&](IXMLDOMNode* method) {
        std::array<std::string, 1> name;
        const HRESULT was_read = ReadChildTexts(method, std::array{L"Name"sv}, name);
        if (!name.front().empty()) {
            known_names.insert(name.front());
            list.AddElement("PayMethName", name.front());
        }
        return was_read;
    });
    list.CloseElement("PaymentMethods");
    text = std::move(list).GetText();
    return result;
}

// The list id of the first sales tax code that an item's response refers to; empty without one.
[[nodiscard]] HRESULT FindSalesTaxCodeID(const std::string& response, std::string& list_id) {
    ComPtr<IXMLDOMNode> reference;
    std::array<std::string, 1> texts;
    HRESULT result = FindResponseElement(response, L"SalesTaxCodeRef", reference);
    if (SUCCEEDED(result)) {
        result = ReadChildTexts(reference.Get(), std::array{L"ListID"sv}, texts);
    }
    list_id = std::move(texts.front());
    return result;
}

// Whether the first sales tax code of a response is taxable; the text has to be exactly "true".
[[nodiscard]] bool ReadIsTaxable(const std::string& response) {
    ComPtr<IXMLDOMNode> element;
    std::string is_taxable;
    return SUCCEEDED(FindResponseElement(response, L"IsTaxable", element)) &&
           SUCCEEDED(GetNodeText(element.Get(), is_taxable)) && is_taxable == "true";
}

}  // namespace

// The names of all items, each in an ItemName element.
STDMETHODIMP CPaylodge::GetItems(BSTR* pItemNames) {
    return AnswerQuery(pItemNames, [] { return ComposeRequest("ItemQueryRq", [](XMLBuilder&) {}); }, ListItemNames);
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
        [this](const std::string& response, std::string& text) {
            return ListPaymentMethods(response, lookup_map_, text);
        });
}

// VARIANT_TRUE when the item's sales tax code is taxable. Returns the HRESULT of the item query; a failed query for the
// tax code means not taxable.
STDMETHODIMP CPaylodge::IsTaxableItem(BSTR itemName, VARIANT_BOOL* pIsTaxable) {
    if (!IsSiteAllowed()) {
        return S_OK;
    }
    if (pIsTaxable == nullptr) {
        return E_POINTER;
    }
    std::string item_query = ComposeRequest(
        "ItemQueryRq", [&](XMLBuilder& request) { request.AddElement("FullName", AnsiFromBstr(itemName)); });
    std::string response;
    const HRESULT result = Send(std::move(item_query), response);
    if (FAILED(result)) {
        return result;
    }
    std::string tax_code_id;
    if (const HRESULT was_read = FindSalesTaxCodeID(response, tax_code_id); FAILED(was_read)) {
        return was_read;
    }
    *pIsTaxable = !tax_code_id.empty() && IsTaxableCode(tax_code_id) ? VARIANT_TRUE : VARIANT_FALSE;
    return result;
}

bool CPaylodge::IsTaxableCode(std::string_view tax_code_id) {
    std::string document =
        ComposeRequest("SalesTaxCodeQueryRq", [&](XMLBuilder& request) { request.AddElement("ListID", tax_code_id); });
    std::string response;
    return SUCCEEDED(Send(std::move(document), response)) && ReadIsTaxable(response);
}

// Asks the host to show a transaction in its own form. The response is not read.
STDMETHODIMP CPaylodge::OpenTxnForm(BSTR txnType, BSTR txnID) {
    if (!IsSiteAllowed()) {
        return S_OK;
    }
    std::string response;
    return Send(ComposeRequest("TxnDisplayModRq",
                               [&](XMLBuilder& request) {
                                   request.AddElement("TxnDisplayModType", AnsiFromBstr(txnType));
                                   request.AddElement("TxnID", AnsiFromBstr(txnID));
                               }),
                response);
}

}  // namespace paylodge
