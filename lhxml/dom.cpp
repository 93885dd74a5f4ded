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

// Goes from the node to the one that comes next in document order, `depth` levels below the top of the walk; null
// behind the last one.
[[nodiscard]] HRESULT GoOnInDocumentOrder(ComPtr<IXMLDOMNode>& node, int& depth) {
    ComPtr<IXMLDOMNode> next;
    HRESULT result = node->get_firstChild(next.Receive());
    if (next) {
        ++depth;
    }
    for (; SUCCEEDED(result) && !next && depth > 0; --depth) {
        result = node->get_nextSibling(next.Receive());
        if (FAILED(result) || next) {
            break;
        }
        ComPtr<IXMLDOMNode> parent;
        result = node->get_parentNode(parent.Receive());
        if (!parent) {
            return FAILED(result) ? result : E_UNEXPECTED;
        }
        node = std::move(parent);
    }
    node = std::move(next);
    return result;
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
    return attributes == nullptr ? E_POINTER : GetAttributeValue(attributes, BstrFromThreadAnsi(name).Get(), value);
}

HRESULT GetAttributeValue(IXMLDOMNamedNodeMap* attributes, BSTR name, std::string& value) {
    if (attributes == nullptr) {
        return E_POINTER;
    }
    ComPtr<IXMLDOMNode> attribute;
    const HRESULT result = attributes->getNamedItem(name, attribute.Receive());
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
    ComPtr<IXMLDOMNode> next(node);
    for (;;) {
        HRESULT result = GoOnInDocumentOrder(next, depth);
        bool is_found = false;
        if (SUCCEEDED(result) && next) {
            result = TestElement(next.Get(), name, is_found);
        }
        if (is_found) {
            element = next;
        }
        if (FAILED(result) || is_found || !next) {
            return FAILED(result) ? result : S_OK;
        }
    }
}

HRESULT FindResponseElement(std::string_view response, std::wstring_view name, ComPtr<IXMLDOMNode>& element) {
    std::string load_error;
    const auto document = LoadXmlDocument(response, load_error);
    return document ? FindFirstElement(document.Get(), name, element) : S_OK;
}

HRESULT TestElement(IXMLDOMNode* node, bool& is_element) {
    DOMNodeType type = NODE_INVALID;
    const HRESULT result = node->get_nodeType(&type);
    is_element = SUCCEEDED(result) && type == NODE_ELEMENT;
    return FAILED(result) ? result : S_OK;
}

HRESULT TestElement(IXMLDOMNode* node, std::wstring_view name, bool& is_element) {
    OwnedBstr node_name;
    const HRESULT result = node->get_nodeName(node_name.Receive());
    is_element = false;
    return SUCCEEDED(result) && View(node_name) == name ? TestElement(node, is_element) : result;
}

HRESULT FindFirstChildElement(IXMLDOMNode* node, ComPtr<IXMLDOMNode>& element) {
    return VisitChildren(node, [&element](IXMLDOMNode* child) {
        bool is_element = false;
        const HRESULT result = TestElement(child, is_element);
        if (is_element) {
            element = ComPtr<IXMLDOMNode>(child);
        }
        return is_element ? S_FALSE : result;
    });
}

HRESULT FindPath(IXMLDOMNode* node, std::span<const std::wstring_view> names, ComPtr<IXMLDOMNode>& element) {
    if (names.empty()) {
        element = ComPtr<IXMLDOMNode>(node);
        return S_OK;
    }
    return VisitChildren(node, [&](IXMLDOMNode* child) {
        bool is_on_path = false;
        HRESULT result = TestElement(child, names.front(), is_on_path);
        if (is_on_path) {
            result = FindPath(child, names.subspan(1), element);
        }
        return SUCCEEDED(result) && element ? S_FALSE : result;
    });
}

}  // namespace paylodge
