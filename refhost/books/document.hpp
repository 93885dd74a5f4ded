// An XML document as its reader found it.
#pragma once

#include <string>
#include <vector>

#include "refhost/books/element.hpp"

namespace paylodge::refhost {

struct Instruction {
    std::string target;
    std::string data;
};

// The XML declaration counts as an instruction.
struct Document {
    std::vector<Instruction> instructions;
    Element root;
};

}  // namespace paylodge::refhost
