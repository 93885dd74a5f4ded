#include "tests/unit/lhxml/fake_node.hpp"

#include <utility>

#include "com/bstr.hpp"
#include "com/object_root.hpp"
#include "refhost/objects/undispatched.hpp"

namespace paylodge::test {
namespace {

// A node that implements nothing.
class SilentNode : public refhost::Undispatched<IXMLDOMNode> {
  public:
    using Row = InterfaceRow<SilentNode>;
    static constexpr std::array kInterfaces = {Row::Of<IDispatch>()};

    STDMETHODIMP get_nodeName(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP get_nodeValue(VARIANT*) override { return E_NOTIMPL; }
    STDMETHODIMP put_nodeValue(VARIANT) override { return E_NOTIMPL; }
    STDMETHODIMP get_nodeType(DOMNodeType*) override { return E_NOTIMPL; }
    STDMETHODIMP get_parentNode(IXMLDOMNode**) override { return E_NOTIMPL; }
    STDMETHODIMP get_childNodes(IXMLDOMNodeList**) override { return E_NOTIMPL; }
    STDMETHODIMP get_firstChild(IXMLDOMNode**) override { return E_NOTIMPL; }
    STDMETHODIMP get_lastChild(IXMLDOMNode**) override { return E_NOTIMPL; }
    STDMETHODIMP get_previousSibling(IXMLDOMNode**) override { return E_NOTIMPL; }
    STDMETHODIMP get_nextSibling(IXMLDOMNode**) override { return E_NOTIMPL; }
    STDMETHODIMP get_attributes(IXMLDOMNamedNodeMap**) override { return E_NOTIMPL; }
    STDMETHODIMP insertBefore(IXMLDOMNode*, VARIANT, IXMLDOMNode**) override { return E_NOTIMPL; }
    STDMETHODIMP replaceChild(IXMLDOMNode*, IXMLDOMNode*, IXMLDOMNode**) override { return E_NOTIMPL; }
    STDMETHODIMP removeChild(IXMLDOMNode*, IXMLDOMNode**) override { return E_NOTIMPL; }
    STDMETHODIMP appendChild(IXMLDOMNode*, IXMLDOMNode**) override { return E_NOTIMPL; }
    STDMETHODIMP hasChildNodes(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP get_ownerDocument(IXMLDOMDocument**) override { return E_NOTIMPL; }
    STDMETHODIMP cloneNode(VARIANT_BOOL, IXMLDOMNode**) override { return E_NOTIMPL; }
    STDMETHODIMP get_nodeTypeString(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP get_text(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP put_text(BSTR) override { return E_NOTIMPL; }
    STDMETHODIMP get_specified(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP get_definition(IXMLDOMNode**) override { return E_NOTIMPL; }
    STDMETHODIMP get_nodeTypedValue(VARIANT*) override { return E_NOTIMPL; }
    STDMETHODIMP put_nodeTypedValue(VARIANT) override { return E_NOTIMPL; }
    STDMETHODIMP get_dataType(VARIANT*) override { return E_NOTIMPL; }
    STDMETHODIMP put_dataType(BSTR) override { return E_NOTIMPL; }
    STDMETHODIMP get_xml(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP transformNode(IXMLDOMNode*, BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP selectNodes(BSTR, IXMLDOMNodeList**) override { return E_NOTIMPL; }
    STDMETHODIMP selectSingleNode(BSTR, IXMLDOMNode**) override { return E_NOTIMPL; }
    STDMETHODIMP get_parsed(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP get_namespaceURI(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP get_prefix(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP get_baseName(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP transformNodeToObject(IXMLDOMNode*, VARIANT) override { return E_NOTIMPL; }

  protected:
    ~SilentNode() = default;
};

class Attribute : public SilentNode {
  public:
    explicit Attribute(std::wstring value) : value_(std::move(value)) {}

    STDMETHODIMP get_nodeValue(VARIANT* value) override {
        value->vt = VT_BSTR;
        value->bstrVal = MakeBstr(value_).Detach();
        return S_OK;
    }

  protected:
    ~Attribute() = default;

  private:
    std::wstring value_;
};

class Attributes : public refhost::Undispatched<IXMLDOMNamedNodeMap> {
  public:
    using Row = InterfaceRow<Attributes>;
    static constexpr std::array kInterfaces = {Row::Of<IDispatch>()};

    explicit Attributes(AttributePlan plan) : plan_(std::move(plan)) {}

    STDMETHODIMP getNamedItem(BSTR name, IXMLDOMNode** item) override {
        const std::wstring key(View(name));
        if (const auto failure = plan_.failures.find(key); failure != plan_.failures.end()) {
            return failure->second;
        }
        const auto value = plan_.values.find(key);
        if (value == plan_.values.end()) {
            *item = nullptr;
            return S_FALSE;
        }
        *item = ComObject<Attribute>::Create(value->second).Detach();
        return S_OK;
    }
    STDMETHODIMP setNamedItem(IXMLDOMNode*, IXMLDOMNode**) override { return E_NOTIMPL; }
    STDMETHODIMP removeNamedItem(BSTR, IXMLDOMNode**) override { return E_NOTIMPL; }
    STDMETHODIMP get_item(LONG, IXMLDOMNode**) override { return E_NOTIMPL; }
    STDMETHODIMP get_length(LONG*) override { return E_NOTIMPL; }
    STDMETHODIMP getQualifiedItem(BSTR, BSTR, IXMLDOMNode**) override { return E_NOTIMPL; }
    STDMETHODIMP removeQualifiedItem(BSTR, BSTR, IXMLDOMNode**) override { return E_NOTIMPL; }
    STDMETHODIMP nextNode(IXMLDOMNode**) override { return E_NOTIMPL; }
    STDMETHODIMP reset() override { return E_NOTIMPL; }
    // One method: the headers of the releases differ in its name, so that neither can say that it overrides.
#ifdef __clang__
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Winconsistent-missing-override"
#endif
    STDMETHODIMP get__newEnum(IUnknown**) { return E_NOTIMPL; }  // NOLINT(modernize-use-override)
    STDMETHODIMP _newEnum(IUnknown**) { return E_NOTIMPL; }      // NOLINT(modernize-use-override)
#ifdef __clang__
#pragma clang diagnostic pop
#endif

  protected:
    ~Attributes() = default;

  private:
    AttributePlan plan_;
};

class ElementNode : public SilentNode {
  public:
    explicit ElementNode(AttributePlan plan) : plan_(std::move(plan)) {}

    STDMETHODIMP get_attributes(IXMLDOMNamedNodeMap** attributes) override {
        if (plan_.has_map && SUCCEEDED(plan_.fetch)) {
            *attributes = MakeFakeAttributes(plan_).Detach();
        }
        return plan_.fetch;
    }

  protected:
    ~ElementNode() = default;

  private:
    AttributePlan plan_;
};

}  // namespace

ComPtr<IXMLDOMNode> MakeFakeNode(AttributePlan plan) {
    return ComPtr<IXMLDOMNode>(ComObject<ElementNode>::Create(std::move(plan)).Get());
}

ComPtr<IXMLDOMNamedNodeMap> MakeFakeAttributes(AttributePlan plan) {
    return ComPtr<IXMLDOMNamedNodeMap>(ComObject<Attributes>::Create(std::move(plan)).Get());
}

}  // namespace paylodge::test
