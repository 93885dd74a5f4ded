// The program run: see script_run.hpp.

#include <windows.h>

#include <objbase.h>

#include <cstdio>

#include "refhost/commands/script_run.hpp"

int wmain(int count, wchar_t** arguments) {
    if (count < 2) {
        std::fputs("Usage: run FILE.js [ARGUMENT]...\n", stderr);
        return 2;
    }
    if (FAILED(::CoInitialize(nullptr))) {
        return 1;
    }
    const int status = paylodge::refhost::RunScript({arguments + 1, arguments + count});
    ::CoUninitialize();
    return status;
}
