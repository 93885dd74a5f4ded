// Runs a page's script in the system's script engine, with the objects that it expects.
#pragma once

#include <string>
#include <vector>

namespace paylodge::refhost {

// `words`: the path of the script, and the arguments for it. Returns the exit status: 0, that of WScript.Quit, 1 for an
// error that the script did not catch, or 2 when there is no such script. Errors are printed to standard error.
[[nodiscard]] int RunScript(const std::vector<std::wstring>& words);

}  // namespace paylodge::refhost
