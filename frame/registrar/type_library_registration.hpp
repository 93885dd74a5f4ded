// Registers the type library in the module's own resources.
#pragma once

#include <windows.h>

#include <oleauto.h>

namespace paylodge {

// Where a registration is written: for every user of the machine, or for the current user alone.
enum class RegistrationScope { kMachine, kCurrentUser };

// The platform's functions for registering a type library and removing it.
struct TypeLibraryFunctions {
    decltype(&::RegisterTypeLib) register_library;
    decltype(&::UnRegisterTypeLib) unregister_library;
};

// The functions for a scope. Those for the current user are looked up by name in `automation`; where one is missing,
// the machine-wide one takes its place.
[[nodiscard]] TypeLibraryFunctions FindTypeLibraryFunctions(RegistrationScope scope, HMODULE automation) noexcept;

// Both return the failure of loading the library or of the platform's function. Removing a library that is not
// registered returns S_OK.
[[nodiscard]] HRESULT RegisterTypeLibrary(RegistrationScope scope);
[[nodiscard]] HRESULT UnregisterTypeLibrary(RegistrationScope scope);

}  // namespace paylodge
