// The module (DLL or program) that this code is linked into: what keeps it loaded, and where it is. With it, every
// allocation that fails in the module throws a COM error, E_OUTOFMEMORY, which is a std::bad_alloc, too.
#pragma once

#include <windows.h>

#include <string>

namespace paylodge {

// Counts what keeps the module in memory: every object, every class object handed out, every lock.
class Module {
  public:
    static void AddReference() noexcept;
    static void RemoveReference() noexcept;
    // The same for locks, of which there cannot be fewer than none.
    static void Lock() noexcept;
    static void Unlock() noexcept;
    // Objects and locks together.
    [[nodiscard]] static LONG References() noexcept;

    [[nodiscard]] static HINSTANCE Instance() noexcept;
    // Full path of the module's file, of any length. Throws the system's error.
    [[nodiscard]] static std::wstring Path();
};

// Held as a member by each object that has to keep the module loaded.
class ModuleReference {
  public:
    ModuleReference() noexcept { Module::AddReference(); }
    ~ModuleReference() { Module::RemoveReference(); }
    ModuleReference(const ModuleReference&) = delete;
    ModuleReference& operator=(const ModuleReference&) = delete;
};

}  // namespace paylodge
