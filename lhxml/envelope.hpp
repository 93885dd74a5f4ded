// The LHXML request document: its two envelope forms and the request identifiers.
#pragma once

#include <string>
#include <string_view>

#include "lhxml/xml_builder.hpp"

namespace paylodge {

// The one-line form around a request body of the page, which is neither checked nor escaped.
[[nodiscard]] std::string PassThroughEnvelope(std::string_view body);

// The line-by-line form: declaration, processing instruction, document element and message set. Leaves the builder two
// levels deep, inside the message set.
void BeginEnvelope(XMLBuilder& builder);
// Closes the message set and the document element.
void EndEnvelope(XMLBuilder& builder);

// Opens a request element with a fresh identifier as its one attribute. The caller closes it.
void OpenRequestElement(XMLBuilder& builder, std::string_view name);

// A complete document of the built form with one request; write_elements(XMLBuilder&) adds the request's own elements.
template <class WriteElements>
[[nodiscard]] std::string ComposeRequest(std::string_view name, const WriteElements& write_elements) {
    XMLBuilder builder;
    BeginEnvelope(builder);
    OpenRequestElement(builder, name);
    write_elements(builder);
    builder.CloseElement(name);
    EndEnvelope(builder);
    return std::move(builder).GetText();
}

// "requestID", an underscore and the next number of the C library's generator, which is seeded with the time on first
// use. Identifiers are not unique and never read back.
[[nodiscard]] std::string MakeRequestID();

}  // namespace paylodge
