#include "lhxml/response_status.hpp"

#include <array>

#include "lhxml/dom.hpp"

namespace paylodge {
namespace {

using namespace std::string_view_literals;

constexpr std::array kStatusAttributes = {"requestID"sv, "statusCode"sv, "statusSeverity"sv, "statusMessage"sv};
constexpr size_t kStatusCodeIndex = 1;

// The same as COM strings, which each response of a batch would make anew.
constexpr ConstantBstr kRequestID(L"requestID");
constexpr ConstantBstr kStatusCode(L"statusCode");
constexpr ConstantBstr kStatusSeverity(L"statusSeverity");
constexpr ConstantBstr kStatusMessage(L"statusMessage");

[[nodiscard]] HRESULT GetAttributes(IXMLDOMNode* node, ComPtr<IXMLDOMNamedNodeMap>& attributes) {
    return node == nullptr ? E_POINTER : node->get_attributes(attributes.Receive());
}

}  // namespace

HRESULT GetResponseStatus(IXMLDOMNode* response_element, std::string& status_code, std::string& status_message) {
    ComPtr<IXMLDOMNamedNodeMap> attributes;
    HRESULT result = GetAttributes(response_element, attributes);
    if (SUCCEEDED(result)) {
        result = GetAttributeValue(attributes.Get(), kStatusCode.Get(), status_code);
    }
    if (SUCCEEDED(result)) {
        result = GetAttributeValue(attributes.Get(), kStatusMessage.Get(), status_message);
    }
    return result;
}

HRESULT CopyStatusAttributes(XMLBuilder& builder, IXMLDOMNode* response_element, std::string_view name,
                             std::string* status_code) {
    ComPtr<IXMLDOMNamedNodeMap> attributes;
    HRESULT result = GetAttributes(response_element, attributes);
    std::array<std::string, kStatusAttributes.size()> values;
    if (SUCCEEDED(result)) {
        const std::array names = {kRequestID.Get(), kStatusCode.Get(), kStatusSeverity.Get(), kStatusMessage.Get()};
        for (size_t index = 0; index < values.size(); ++index) {
            result = GetAttributeValue(attributes.Get(), names[index], values[index]);
        }
    }
    const std::array<std::string_view, kStatusAttributes.size()> views = {values[0], values[1], values[2], values[3]};
    builder.OpenElement(name, kStatusAttributes, views);
    if (status_code != nullptr) {
        *status_code = values[kStatusCodeIndex];
    }
    return result;
}

HRESULT CheckAddResponse(std::string_view response, std::wstring_view element_name,
                         std::optional<std::string_view> extra_code) {
    std::string load_error;
    const auto document = LoadXmlDocument(response, load_error);
    if (!document) {
        return E_FAIL;
    }
    ComPtr<IXMLDOMNode> element;
    const HRESULT result = FindFirstElement(document.Get(), element_name, element);
    if (FAILED(result) || !element) {
        return result;
    }
    std::string status_code;
    std::string status_message;
    GetResponseStatus(element.Get(), status_code, status_message);
    const bool is_accepted = IsStatusOK(status_code) || (extra_code && status_code == *extra_code);
    return is_accepted ? S_OK : E_FAIL;
}

}  // namespace paylodge
