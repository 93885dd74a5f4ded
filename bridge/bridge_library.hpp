// The host's bridge library, which runs script in the page, drives the card reader and reaches account services.
#pragma once

#include <windows.h>

#include <functional>
#include <string>

#include "com/owner.hpp"

namespace paylodge {

// Null while the library is not loaded. Used on the host's user-interface thread only.
extern ModuleHandle g_hBridgeModule;

// Loads the library when the handle is null; a failed load leaves it null.
void LoadBridgeLibrary() noexcept;
// Unloads the library when the handle is not null.
void FreeBridgeLibrary() noexcept;

// Runs a script in the page of the browser instance that the host named. The library is loaded for this one call and
// freed after it. E_FAIL when it is missing, lacks the export, or an exception leaves make_script(), which gives the
// script's text, or the export; which exceptions can be caught there, CallGuarded says.
[[nodiscard]] HRESULT RunScript(const std::function<std::string()>& make_script) noexcept;

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
