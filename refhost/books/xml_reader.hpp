// Reads XML text strictly: what is not well-formed is refused with its place and what belongs there.
#pragma once

#include <string_view>

#include "refhost/books/document.hpp"

namespace paylodge::refhost {

// The text is UTF-8, whatever its declaration says. White space between elements is dropped; texts of elements without
// children are kept as they are. Throws RefusedRequest for text that is not well-formed, has a document type
// declaration or is nested too deeply.
[[nodiscard]] Document ReadXml(std::string_view text);

}  // namespace paylodge::refhost
