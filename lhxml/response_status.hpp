// The status that a response element carries. Status values are compared as exact texts, never as numbers.
#pragma once

#include <windows.h>

#include <msxml2.h>

#include <optional>
#include <string>
#include <string_view>

#include "lhxml/xml_builder.hpp"

namespace paylodge {

// Reads statusCode, then statusMessage; an absent one leaves its text unchanged. Returns the first failure met (of the
// attributes, of the code), else the HRESULT of reading the message.
HRESULT GetResponseStatus(IXMLDOMNode* response_element, std::string& status_code, std::string& status_message);

// Whether a status code is that of a request that succeeded: exactly "0".
[[nodiscard]] constexpr bool IsStatusOK(std::string_view status_code) noexcept { return status_code == "0"; }

// Opens an element of the given name that carries the response element's four status attributes, empty where absent.
// The caller closes it. Returns the HRESULT of reading the attributes or of the last one. The status code goes to
// `status_code` too, for a caller that judges it as well.
HRESULT CopyStatusAttributes(XMLBuilder& builder, IXMLDOMNode* response_element, std::string_view name,
                             std::string* status_code = nullptr);

// The status of an add request whose name exists already: of an account or customer, and of a payment item.
inline constexpr std::string_view kNameExists = "3100";
inline constexpr std::string_view kPaymentItemExists = "3180";

// Judges the response to an add or modify request by its first element of this name: S_OK for status "0" and for the
// extra code, where one is accepted; also without such an element. E_FAIL for any other status and for a response that
// does not load; the DOM's failure when the element could not be looked for.
[[nodiscard]] HRESULT CheckAddResponse(std::string_view response, std::wstring_view element_name,
                                       std::optional<std::string_view> extra_code = std::nullopt);

}  // namespace paylodge
