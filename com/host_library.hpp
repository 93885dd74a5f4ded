// A library of the host, found by name on first use, so that the module itself loads on a machine without the host.
#pragma once

#include <windows.h>

namespace paylodge {

// The library that the process has loaded under this name; else the one in the program's own folder or the system's.
// Nothing in the current folder or on the search path can take its place. It stays loaded until the process ends: it is
// the host's own, and libraries are not to be freed while this module is being unloaded. A library or export that is
// missing is looked for again on the next call. Used on one thread at a time.
class HostLibrary {
  public:
    explicit constexpr HostLibrary(const wchar_t* file_name) noexcept : file_name_(file_name) {}

    // The export with this name as a pointer to Function, or null.
    template <class Function>
    [[nodiscard]] Function* Find(const char* export_name) noexcept {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(FindAddress(export_name)));
    }

  private:
    [[nodiscard]] FARPROC FindAddress(const char* export_name) noexcept;

    const wchar_t* file_name_;
    HMODULE library_ = nullptr;
};

}  // namespace paylodge
