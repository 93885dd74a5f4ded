// Reads responses as DOM documents. Texts come out as narrow strings in the system's ANSI code page. All of these raise
// E_OUTOFMEMORY; none logs.
#pragma once

#include <windows.h>

#include <msxml2.h>

#include <string>
#include <string_view>

#include "frame/com/com_ptr.hpp"

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

// Whether the node is an element of this name.
[[nodiscard]] bool IsElement(IXMLDOMNode* node, std::wstring_view name);

// The node's first child element of this name, or empty.
[[nodiscard]] ComPtr<IXMLDOMNode> FindChild(IXMLDOMNode* node, std::wstring_view name);

}  // namespace paylodge
