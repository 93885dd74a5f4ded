// Where scripts for the page go: to a program that shows the page, or to a file, so that a test or a demo can read what
// would have run.
#pragma once

namespace paylodge::refhost {

extern "C" {
// Gets each script in the system ANSI code page; both texts are valid during the call only.
using ScriptListener = void __cdecl(void* context, const char* browser_instance, const char* script);
}

// From now on scripts go to the listener alone; null: to a file again. On the host's user-interface thread.
void ListenWith(ScriptListener* listener, void* context) noexcept;

// Without a listener, appends one record to the file that the environment variable OSKERIN_SCRIPT_FILE names: a line
// with the browser instance and the script's length in bytes, then the script and a line end. Without the variable the
// script is written to standard output when OSKERIN_SCRIPT_ECHO is 1, and dropped otherwise.
void ListenToScript(const char* browser_instance, const char* script);

}  // namespace paylodge::refhost
