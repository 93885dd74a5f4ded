// Reads responses as DOM documents. Texts come out as narrow strings in the system's ANSI code page. All of these throw
// E_OUTOFMEMORY; none logs.
#pragma once

#include <windows.h>

#include <msxml2.h>

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "com/bstr.hpp"
#include "com/com_ptr.hpp"

namespace paylodge {

// A document loaded from the text, or null with the reason in `error`, which is left alone otherwise.
[[nodiscard]] ComPtr<IXMLDOMDocument2> LoadXmlDocument(std::string_view text, std::string& error);

// Replaces `value` when the attribute is present. Returns the HRESULT of the lookup, E_POINTER without attributes.
HRESULT GetAttributeValue(IXMLDOMNamedNodeMap* attributes, std::string_view name, std::string& value);
// The same for a name that is a COM string already.
HRESULT GetAttributeValue(IXMLDOMNamedNodeMap* attributes, BSTR name, std::string& value);

// The text of the node and all its descendants, and the node's name. A null node: S_OK, and nothing changes.
HRESULT GetNodeText(IXMLDOMNode* node, std::string& text);
HRESULT GetNodeName(IXMLDOMNode* node, std::string& name);

// All of the following return S_OK, also when there is nothing to be found, or the failure of the DOM: what could not
// be read does not count as absent.

// Calls visit(child) for each child of the node in document order, until it returns something else than S_OK: S_FALSE
// ends the walk, a failure is passed on. A null node has no children.
template <class Visit>
[[nodiscard]] HRESULT VisitChildren(IXMLDOMNode* node, const Visit& visit) {
    ComPtr<IXMLDOMNode> child;
    HRESULT result = node == nullptr ? S_OK : node->get_firstChild(child.Receive());
    while (SUCCEEDED(result) && child) {
        if (result = visit(child.Get()); result != S_OK) {
            break;
        }
        ComPtr<IXMLDOMNode> next;
        result = child->get_nextSibling(next.Receive());
        child = std::move(next);
    }
    return FAILED(result) ? result : S_OK;
}

// The first element of this name below the node, in document order; `element` stays empty when there is none. Stops at
// the match: a query by tag name would visit the whole document.
[[nodiscard]] HRESULT FindFirstElement(IXMLDOMNode* node, std::wstring_view name, ComPtr<IXMLDOMNode>& element);

// The first element of this name in a response; `element` stays empty when the response does not load or holds none.
[[nodiscard]] HRESULT FindResponseElement(std::string_view response, std::wstring_view name,
                                          ComPtr<IXMLDOMNode>& element);

// Whether the node is an element, and one of this name.
[[nodiscard]] HRESULT TestElement(IXMLDOMNode* node, bool& is_element);
[[nodiscard]] HRESULT TestElement(IXMLDOMNode* node, std::wstring_view name, bool& is_element);

// The node's first child that is an element, of whatever name; `element` stays empty when there is none.
[[nodiscard]] HRESULT FindFirstChildElement(IXMLDOMNode* node, ComPtr<IXMLDOMNode>& element);

// The first element to which a path of child elements with these names leads; `element` stays empty when there is none.
[[nodiscard]] HRESULT FindPath(IXMLDOMNode* node, std::span<const std::wstring_view> names,
                               ComPtr<IXMLDOMNode>& element);

// The node's first child elements with these names, each left empty where there is none, in one walk over the children.
// What was found before a failure stays.
template <size_t count>
[[nodiscard]] HRESULT FindChildren(IXMLDOMNode* node, const std::array<std::wstring_view, count>& names,
                                   std::array<ComPtr<IXMLDOMNode>, count>& found) {
    size_t left = count;
    return VisitChildren(node, [&](IXMLDOMNode* child) {
        OwnedBstr name;
        HRESULT result = child->get_nodeName(name.Receive());
        const auto index = static_cast<size_t>(std::ranges::find(names, View(name)) - names.begin());
        if (SUCCEEDED(result) && index < count && !found[index]) {
            bool is_element = false;
            result = TestElement(child, is_element);
            if (is_element) {
                found[index] = ComPtr<IXMLDOMNode>(child);
                --left;
            }
        }
        return SUCCEEDED(result) && left == 0 ? S_FALSE : result;
    });
}

// The texts of those elements, each left unchanged where there is none.
template <size_t count>
[[nodiscard]] HRESULT ReadChildTexts(IXMLDOMNode* node, const std::array<std::wstring_view, count>& names,
                                     std::array<std::string, count>& texts) {
    std::array<ComPtr<IXMLDOMNode>, count> children;
    HRESULT result = FindChildren(node, names, children);
    for (size_t index = 0; SUCCEEDED(result) && index < count; ++index) {
        result = GetNodeText(children[index].Get(), texts[index]);
    }
    return result;
}

}  // namespace paylodge
