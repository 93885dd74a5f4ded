#include "tests/unit/storage/logger_module.hpp"

#include "storage/logger.hpp"
#include "tests/support/import_slot.hpp"

extern "C" {
extern decltype(&::MessageBoxA) import_of_message_box PAYLODGE_IMPORT_SLOT(MessageBoxA, 16);
extern decltype(&::FindWindowA) import_of_find_window PAYLODGE_IMPORT_SLOT(FindWindowA, 8);
extern decltype(&::GetModuleHandleExW) import_of_find_module PAYLODGE_IMPORT_SLOT(GetModuleHandleExW, 12);
extern decltype(&::LoadLibraryExW) import_of_load_library PAYLODGE_IMPORT_SLOT(LoadLibraryExW, 12);
decltype(&::MessageBoxA) import_of_message_box = nullptr;
decltype(&::FindWindowA) import_of_find_window = nullptr;
decltype(&::GetModuleHandleExW) import_of_find_module = nullptr;
decltype(&::LoadLibraryExW) import_of_load_library = nullptr;

__declspec(dllexport) void ReplaceImports(const paylodge::test::LoggerImports& imports) {
    import_of_message_box = imports.message_box;
    import_of_find_window = imports.find_window;
    import_of_find_module = imports.find_module;
    import_of_load_library = imports.load_library;
}

__declspec(dllexport) void LogHResult(const char* function, const char* message, HRESULT result) {
    paylodge::CNALogger().LogHResult(function, message, result);
}

__declspec(dllexport) void LogText(const char* text) { paylodge::CNALogger().LogText(text); }
}
