// Writes element trees as XML text. Reading the text back gives the same tree, line ends and blanks included.
#pragma once

#include <string>

#include "refhost/books/element.hpp"

namespace paylodge::refhost {

// Everything in one line, without blanks between the elements.
[[nodiscard]] std::string CompactXml(const Element& element);
// One line for each element, two blanks for each level; `depth` is the level of the first line.
[[nodiscard]] std::string IndentedXml(const Element& element, int depth = 0);

}  // namespace paylodge::refhost
