// Where scripts for the page go: to a file, so that a test or a demo can read what would have run.
#pragma once

#include <string_view>

namespace paylodge::refhost {

// Appends one record to the file that the environment variable OSKERIN_SCRIPT_FILE names: a line with the browser
// instance and the script's length in bytes, then the script and a line end. Without the variable the script is written
// to standard output when OSKERIN_SCRIPT_ECHO is 1, and dropped otherwise.
void ListenToScript(std::string_view browser_instance, std::string_view script);

}  // namespace paylodge::refhost
