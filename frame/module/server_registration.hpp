// Registers the module as a component server: what DllRegisterServer and DllUnregisterServer do.
#pragma once

#include <windows.h>

#include "frame/registrar/type_library_registration.hpp"

namespace paylodge {

// Both classes and the type library. Return the HRESULT of the step that failed, E_OUTOFMEMORY without memory.
[[nodiscard]] HRESULT RegisterServer(RegistrationScope scope = RegistrationScope::kMachine);
[[nodiscard]] HRESULT UnregisterServer(RegistrationScope scope = RegistrationScope::kMachine);

}  // namespace paylodge
