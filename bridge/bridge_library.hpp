// The host's bridge library, which runs script in the page, drives the card reader and reaches account services.
#pragma once

#include <windows.h>

#include <string>

#include "com/owner.hpp"

namespace paylodge {

// Null while the library is not loaded. Used on the host's user-interface thread only. Not freed with this module:
// libraries must not be freed while one is being unloaded, and the host holds a reference of its own.
extern HMODULE g_hBridgeModule;

// Loads the library when the handle is null; a failed load leaves it null.
void LoadBridgeLibrary() noexcept;
// Unloads the library when the handle is not null.
void FreeBridgeLibrary() noexcept;

// The library for one script: loaded when this begins and freed when it ends.
class ScriptRun {
  public:
    ScriptRun() noexcept;
    ~ScriptRun() { FreeBridgeLibrary(); }
    ScriptRun(const ScriptRun&) = delete;
    ScriptRun& operator=(const ScriptRun&) = delete;

    // Whether the library could be loaded.
    explicit operator bool() const noexcept { return static_cast<bool>(in_use_); }

    // Runs the script in the page of the browser instance that the host named. E_FAIL when the library lacks the
    // export, or a structured exception leaves it. Throws what else leaves it, and E_OUTOFMEMORY.
    [[nodiscard]] HRESULT Execute(const std::string& script) const;

  private:
    // The script may lead to another one, at whose end the library is freed; and an exception is the library's.
    ModuleHandle in_use_;
};

// Runs the script that make_script() returns. E_FAIL when the library is missing, and for whatever fails on the way.
template <class MakeScript>
[[nodiscard]] HRESULT RunScript(const MakeScript& make_script) noexcept {
    const ScriptRun run;
    try {
        return run ? run.Execute(make_script()) : E_FAIL;
    } catch (...) {
        return E_FAIL;
    }
}

// The address of an export, or null. The library is loaded for it when needed, and stays in the process from then on:
// the caller keeps the address.
[[nodiscard]] FARPROC KeepBridgeExport(const char* name) noexcept;

// One function of the library, looked up on first use and kept. While it has not been found, each use looks again.
template <class Result, class... Arguments>
class BridgeFunction {
  public:
    using Type = Result __cdecl(Arguments...);

    explicit constexpr BridgeFunction(const char* name) noexcept : name_(name) {}

    [[nodiscard]] Type* Find() noexcept {
        if (address_ == nullptr) {
            address_ = reinterpret_cast<Type*>(reinterpret_cast<void*>(KeepBridgeExport(name_)));
        }
        return address_;
    }

  private:
    const char* name_;
    Type* address_ = nullptr;
};

}  // namespace paylodge
