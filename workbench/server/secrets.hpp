// Random texts that nobody can guess.
#pragma once

#include <string>

namespace paylodge::workbench {

// 128 bits as hexadecimal digits. Throws std::runtime_error when the system has no random numbers.
[[nodiscard]] std::string MakeSecret();

}  // namespace paylodge::workbench
