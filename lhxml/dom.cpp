#include "lhxml/dom.hpp"

#include <comdef.h>

#include "com/ansi_text.hpp"
#include "com/host_library.hpp"
#include "com/variant.hpp"
#include "hostapi/libraries.hpp"

namespace paylodge {
namespace {

HostLibrary g_host_utilities(kUtilityLibrary);

[[nodiscard]] ComPtr<IXMLDOMDocument2> CreateDocument() {
    ComPtr<IXMLDOMDocument2> document;
    auto* const create = g_host_utilities.Find<CreateDOMDocumentFunction>(kCreateDOMDocument);
    if (create == nullptr || FAILED(create(document.Receive()))) {
        return {};
    }
    return document;
}

[[nodiscard]] std::string ParseErrorReason(IXMLDOMDocument2& document) {
    ComPtr<IXMLDOMParseError> parse_error;
    OwnedBstr reason;
    if (SUCCEEDED(document.get_parseError(parse_error.Receive())) && parse_error) {
        static_cast<void>(parse_error->get_reason(reason.Receive()));
    }
    return AnsiFromBstr(reason.Get());
}

// One of the DOM's properties that hand out a string, as narrow text.
template <class Node>
[[nodiscard]] HRESULT ReadText(Node* node, HRESULT (STDMETHODCALLTYPE Node::*get)(BSTR*), std::string& text) {
    if (node == nullptr) {
        return S_OK;
    }
    OwnedBstr value;
    const HRESULT result = (node->*get)(value.Receive());
    if (SUCCEEDED(result)) {
        text = AnsiFromBstr(value.Get());
    }
    return result;
}

// One of the DOM's properties that lead to another node.
[[nodiscard]] ComPtr<IXMLDOMNode> Step(IXMLDOMNode* node,
                                       HRESULT (STDMETHODCALLTYPE IXMLDOMNode::*get)(IXMLDOMNode**)) {
    ComPtr<IXMLDOMNode> next;
    if (node == nullptr || FAILED((node->*get)(next.Receive()))) {
        return {};
    }
    return next;
}

// The node that comes next in document order, below `top`.
[[nodiscard]] ComPtr<IXMLDOMNode> NextInDocumentOrder(ComPtr<IXMLDOMNode> node, int& depth) {
    if (ComPtr<IXMLDOMNode> child = FirstChild(node.Get())) {
        ++depth;
        return child;
    }
    for (; depth > 0; --depth) {
        if (ComPtr<IXMLDOMNode> sibling = NextSibling(node.Get())) {
            return sibling;
        }
        node = Step(node.Get(), &IXMLDOMNode::get_parentNode);
    }
    return {};
}

}  // namespace

ComPtr<IXMLDOMDocument2> LoadXmlDocument(std::string_view text, std::string& error) {
    ComPtr<IXMLDOMDocument2> document = CreateDocument();
    if (!document) {
        error = "Instantiate MSXML DOM OBJ failed";
        return {};
    }
    const OwnedBstr wide_text = BstrFromThreadAnsi(text);
    VARIANT_BOOL is_loaded = VARIANT_FALSE;
    if (SUCCEEDED(document->loadXML(wide_text.Get(), &is_loaded)) && is_loaded != VARIANT_FALSE) {
        return document;
    }
    error = "Load failed because " + ParseErrorReason(*document.Get());
    return {};
}

HRESULT GetAttributeValue(IXMLDOMNamedNodeMap* attributes, std::string_view name, std::string& value) {
    if (attributes == nullptr) {
        return E_POINTER;
    }
    ComPtr<IXMLDOMNode> attribute;
    const HRESULT result = attributes->getNamedItem(BstrFromThreadAnsi(name).Get(), attribute.Receive());
    OwnedVariant content;
    if (SUCCEEDED(result) && attribute && SUCCEEDED(attribute->get_nodeValue(content.Receive())) &&
        content.Type() == VT_BSTR) {
        value = AnsiFromBstr(content.Bstr());
    }
    return result;
}

HRESULT GetNodeText(IXMLDOMNode* node, std::string& text) { return ReadText(node, &IXMLDOMNode::get_text, text); }

HRESULT GetNodeName(IXMLDOMNode* node, std::string& name) { return ReadText(node, &IXMLDOMNode::get_nodeName, name); }

HRESULT FindFirstElement(IXMLDOMNode* node, std::wstring_view name, ComPtr<IXMLDOMNode>& element) {
    if (node == nullptr) {
        return E_POINTER;
    }
    int depth = 0;
    for (ComPtr<IXMLDOMNode> next(node); next; next = NextInDocumentOrder(std::move(next), depth)) {
        if (depth > 0 && IsElement(next.Get(), name)) {
            element = std::move(next);
            break;
        }
    }
    return S_OK;
}

ComPtr<IXMLDOMNode> FirstChild(IXMLDOMNode* node) { return Step(node, &IXMLDOMNode::get_firstChild); }

ComPtr<IXMLDOMNode> NextSibling(IXMLDOMNode* node) { return Step(node, &IXMLDOMNode::get_nextSibling); }

ComPtr<IXMLDOMNode> FindResponseElement(std::string_view response, std::wstring_view name) {
    std::string load_error;
    const auto document = LoadXmlDocument(response, load_error);
    ComPtr<IXMLDOMNode> element;
    static_cast<void>(FindFirstElement(document.Get(), name, element));
    return element;
}

bool IsElement(IXMLDOMNode* node) {
    DOMNodeType type = NODE_INVALID;
    return SUCCEEDED(node->get_nodeType(&type)) && type == NODE_ELEMENT;
}

bool IsElement(IXMLDOMNode* node, std::wstring_view name) {
    OwnedBstr node_name;
    return SUCCEEDED(node->get_nodeName(node_name.Receive())) && View(node_name) == name && IsElement(node);
}

ComPtr<IXMLDOMNode> FindPath(IXMLDOMNode* node, std::span<const std::wstring_view> names) {
    if (names.empty()) {
        return ComPtr<IXMLDOMNode>(node);
    }
    for (auto child = FirstChild(node); child; child = NextSibling(child.Get())) {
        if (IsElement(child.Get(), names.front())) {
            if (auto found = FindPath(child.Get(), names.subspan(1))) {
                return found;
            }
        }
    }
    return {};
}

ComPtr<IXMLDOMNode> FindChild(IXMLDOMNode* node, std::wstring_view name) { return FindPath(node, {&name, 1}); }

}  // namespace paylodge
