#include "refhost/books/xml_reader.hpp"

#include <windows.h>

#include <comdef.h>

#include "com/bstr.hpp"
#include "com/com_ptr.hpp"
#include "com/variant.hpp"
#include "refhost/books/values.hpp"
#include "refhost/libraries/dom_document.hpp"
#include "refhost/objects/utf8.hpp"

namespace paylodge::refhost {
namespace {

// Far deeper than any document of the host, and shallow enough for every recursion over one.
constexpr int kDeepest = 64;

void Check(HRESULT result) {
    if (FAILED(result)) {
        _com_issue_error(result);
    }
}

[[noreturn]] void Refuse(const std::string& reason) {
    throw RefusedRequest(Code::kMalformedDocument, "The document is not well-formed XML: " + reason);
}

[[noreturn]] void RefuseUnparsed(IXMLDOMDocument2& document) {
    ComPtr<IXMLDOMParseError> error;
    OwnedBstr reason;
    LONG line = 0;
    if (SUCCEEDED(document.get_parseError(error.Receive())) && error) {
        static_cast<void>(error->get_reason(reason.Receive()));
        static_cast<void>(error->get_line(&line));
    }
    Refuse(std::string(Trimmed(Utf8FromWide(View(reason)))) +
           (line > 0 ? " (line " + std::to_string(line) + ')' : std::string()));
}

[[nodiscard]] ComPtr<IXMLDOMDocument2> Load(std::wstring_view text) {
    if (text.find(L'\0') != std::wstring_view::npos) {
        Refuse("it holds a null character");
    }
    ComPtr<IXMLDOMDocument2> document;
    Check(CreateDomDocument(document.Receive()));
    Check(document->put_preserveWhiteSpace(VARIANT_TRUE));
    VARIANT_BOOL is_loaded = VARIANT_FALSE;
    Check(document->loadXML(MakeBstr(text).Get(), &is_loaded));
    if (is_loaded != VARIANT_TRUE) {
        RefuseUnparsed(*document.Get());
    }
    return document;
}

template <class Node>
[[nodiscard]] std::string Name(Node& node) {
    OwnedBstr name;
    Check(node.get_nodeName(name.Receive()));
    return Utf8FromWide(View(name));
}

template <class Node>
[[nodiscard]] std::string Value(Node& node) {
    OwnedVariant value;
    Check(node.get_nodeValue(value.Receive()));
    return value.Type() == VT_BSTR ? Utf8FromWide(View(value.Bstr())) : std::string();
}

[[nodiscard]] DOMNodeType Type(IXMLDOMNode& node) {
    DOMNodeType type = NODE_INVALID;
    Check(node.get_nodeType(&type));
    return type;
}

void ForEachChild(IXMLDOMNode& node, const auto& visit) {
    ComPtr<IXMLDOMNode> child;
    Check(node.get_firstChild(child.Receive()));
    while (child) {
        visit(*child.Get());
        ComPtr<IXMLDOMNode> next;
        Check(child->get_nextSibling(next.Receive()));
        child = std::move(next);
    }
}

[[nodiscard]] std::vector<Attribute> ReadAttributes(IXMLDOMNode& node) {
    std::vector<Attribute> attributes;
    ComPtr<IXMLDOMNamedNodeMap> map;
    Check(node.get_attributes(map.Receive()));
    if (!map) {
        return attributes;
    }
    for (;;) {
        ComPtr<IXMLDOMNode> attribute;
        Check(map->nextNode(attribute.Receive()));
        if (!attribute) {
            return attributes;
        }
        attributes.push_back({Name(*attribute.Get()), Value(*attribute.Get())});
    }
}

[[nodiscard]] Element ReadElement(IXMLDOMNode& node, int depth) {
    if (depth > kDeepest) {
        throw RefusedRequest(Code::kMalformedDocument,
                             "The document is nested more than " + std::to_string(kDeepest) + " levels deep.");
    }
    Element element = MakeElement(Name(node));
    element.attributes = ReadAttributes(node);
    ForEachChild(node, [&](IXMLDOMNode& child) {
        const DOMNodeType type = Type(child);
        if (type == NODE_ELEMENT) {
            element.children.push_back(ReadElement(child, depth + 1));
        } else if (type == NODE_TEXT || type == NODE_CDATA_SECTION) {
            element.text += Value(child);
        }
    });
    if (!element.children.empty() && Trimmed(element.text).empty()) {
        element.text.clear();
    }
    return element;
}

}  // namespace

Document ReadXml(std::wstring_view text) {
    Document document;
    ForEachChild(*Load(text).Get(), [&](IXMLDOMNode& node) {
        switch (Type(node)) {
            case NODE_PROCESSING_INSTRUCTION:
                document.instructions.push_back({Name(node), Value(node)});
                break;
            case NODE_DOCUMENT_TYPE:
                throw RefusedRequest(Code::kMalformedDocument, "The document has a document type declaration.");
            case NODE_ELEMENT:
                document.root = ReadElement(node, 1);
                break;
            default:
                break;
        }
    });
    return document;
}

}  // namespace paylodge::refhost
