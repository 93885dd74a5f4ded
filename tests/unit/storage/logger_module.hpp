// The logger in a library of its own, so that loading it anew forgets where the log stands.
#pragma once

#include <windows.h>

namespace paylodge::test {

// The system's functions as that library calls them.
struct LoggerImports {
    decltype(&::MessageBoxA) message_box;
    decltype(&::FindWindowA) find_window;
    decltype(&::GetModuleHandleExW) find_module;
    decltype(&::LoadLibraryExW) load_library;
};

// Exports of the library under these names: set what it calls, and CNALogger's operations.
using ReplaceImportsFunction = void(const LoggerImports& imports);
using LogHResultFunction = void(const char* function, const char* message, HRESULT result);
using LogTextFunction = void(const char* text);

}  // namespace paylodge::test
