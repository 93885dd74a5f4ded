// The platform's XML document object.
#pragma once

#include <windows.h>

#include <msxml2.h>

namespace paylodge::refhost {

// A new document that loads at once and fetches nothing. *document: a reference that the caller owns.
[[nodiscard]] HRESULT CreateDomDocument(IXMLDOMDocument2** document) noexcept;

}  // namespace paylodge::refhost
