// Reads responses as DOM documents. Texts come out as narrow strings in the system's ANSI code page. All of these raise
// E_OUTOFMEMORY; none logs.
#pragma once

#include <windows.h>

#include <msxml2.h>

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <string_view>

#include "com/bstr.hpp"
#include "com/com_ptr.hpp"

namespace paylodge {

// A document loaded from the text, or null with the reason in `error`, which is left alone otherwise.
[[nodiscard]] ComPtr<IXMLDOMDocument2> LoadXmlDocument(std::string_view text, std::string& error);

// Replaces `value` when the attribute is present. Gives the code of the lookup, E_POINTER without attributes.
HRESULT GetAttributeValue(IXMLDOMNamedNodeMap* attributes, std::string_view name, std::string& value);

// The text of the node and all its descendants, and the node's name. A null node gives S_OK and changes nothing.
HRESULT GetNodeText(IXMLDOMNode* node, std::string& text);
HRESULT GetNodeName(IXMLDOMNode* node, std::string& name);

// The first element of this name below the node, in document order; `element` stays empty when there is none. Stops at
// the match: a query by tag name would visit the whole document.
[[nodiscard]] HRESULT FindFirstElement(IXMLDOMNode* node, std::wstring_view name, ComPtr<IXMLDOMNode>& element);

// Steps of a walk; empty at the end, on failure, and for a null node.
[[nodiscard]] ComPtr<IXMLDOMNode> FirstChild(IXMLDOMNode* node);
[[nodiscard]] ComPtr<IXMLDOMNode> NextSibling(IXMLDOMNode* node);

// The first element of this name in a response; empty when the response does not load or holds none.
[[nodiscard]] ComPtr<IXMLDOMNode> FindResponseElement(std::string_view response, std::wstring_view name);

// Whether the node is an element, and one of this name.
[[nodiscard]] bool IsElement(IXMLDOMNode* node);
[[nodiscard]] bool IsElement(IXMLDOMNode* node, std::wstring_view name);

// The first element to which a path of child elements with these names leads, or empty.
[[nodiscard]] ComPtr<IXMLDOMNode> FindPath(IXMLDOMNode* node, std::span<const std::wstring_view> names);

// The node's first child element of this name, or empty.
[[nodiscard]] ComPtr<IXMLDOMNode> FindChild(IXMLDOMNode* node, std::wstring_view name);

// The node's first child elements with these names, each empty where there is none, in one walk over the children.
template <size_t count>
[[nodiscard]] std::array<ComPtr<IXMLDOMNode>, count> FindChildren(IXMLDOMNode* node,
                                                                  const std::array<std::wstring_view, count>& names) {
    std::array<ComPtr<IXMLDOMNode>, count> found;
    size_t left = count;
    for (auto child = FirstChild(node); child && left > 0; child = NextSibling(child.Get())) {
        OwnedBstr name;
        static_cast<void>(child->get_nodeName(name.Receive()));
        const auto index = static_cast<size_t>(std::ranges::find(names, View(name)) - names.begin());
        if (index < count && !found[index] && IsElement(child.Get())) {
            found[index] = child;
            --left;
        }
    }
    return found;
}

// The texts of those elements, empty where there is none.
template <size_t count>
[[nodiscard]] std::array<std::string, count> ReadChildTexts(IXMLDOMNode* node,
                                                            const std::array<std::wstring_view, count>& names) {
    const auto children = FindChildren(node, names);
    std::array<std::string, count> texts;
    for (size_t index = 0; index < count; ++index) {
        GetNodeText(children[index].Get(), texts[index]);
    }
    return texts;
}

}  // namespace paylodge
