// Reads XML text with the platform's parser, which is strict about well-formedness.
#pragma once

#include <string_view>

#include "refhost/books/processor.hpp"

namespace paylodge::refhost {

// White space between elements is dropped; texts of elements without children are kept as they are. Raises
// RefusedRequest for text that is not well-formed, has a document type declaration or is nested too deeply, and a COM
// error when the parser cannot be had.
[[nodiscard]] Document ReadXml(std::wstring_view text);

}  // namespace paylodge::refhost
