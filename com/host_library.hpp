// A library of the host, loaded by name on first use, so that the module itself loads on a machine without the host.
#pragma once

#include <windows.h>

#include "com/owner.hpp"

namespace paylodge {

// Keeps the library loaded until this module is unloaded. A library or export that is missing is looked for again on
// the next call. Used on one thread at a time.
class HostLibrary {
  public:
    explicit HostLibrary(const wchar_t* file_name) noexcept : file_name_(file_name) {}

    // The export with this name as a pointer to Function, or null.
    template <class Function>
    [[nodiscard]] Function* Find(const char* export_name) noexcept {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(FindAddress(export_name)));
    }

  private:
    [[nodiscard]] FARPROC FindAddress(const char* export_name) noexcept {
        if (!library_) {
            library_.Reset(::LoadLibraryW(file_name_));
        }
        return library_ ? ::GetProcAddress(library_.Get(), export_name) : nullptr;
    }

    const wchar_t* file_name_;
    ModuleHandle library_;
};

}  // namespace paylodge
