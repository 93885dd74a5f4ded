// What './dev company' does with company files.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace paylodge::refhost {

// The arguments behind the program's name, in UTF-8. Returns the exit status: 0, 1 for a failure, which is named on
// `errors`, or for findings of a check, and 2 for arguments that make no sense.
[[nodiscard]] int RunCompanyCommand(const std::vector<std::string>& arguments, std::ostream& output,
                                    std::ostream& errors);

}  // namespace paylodge::refhost
