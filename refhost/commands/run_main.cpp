// The program run: see script_run.hpp.

#include <windows.h>

#include <objbase.h>

#include <cstdio>
#include <string_view>

#include "refhost/commands/script_run.hpp"

int wmain(int count, wchar_t** arguments) {
    // Script hosts take that switch, and scripts that start another script write it.
    const bool has_switch = count > 1 && std::wstring_view(arguments[1]) == L"//nologo";
    wchar_t** const first = arguments + (has_switch ? 2 : 1);
    if (first >= arguments + count) {
        std::fputs("Usage: run [//nologo] FILE.js [ARGUMENT]...\n", stderr);
        return 2;
    }
    if (FAILED(::CoInitialize(nullptr))) {
        return 1;
    }
    const int status = paylodge::refhost::RunScript({first, arguments + count});
    ::CoUninitialize();
    return status;
}
