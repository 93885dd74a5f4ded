// Registers the module as a component server: what DllRegisterServer and DllUnregisterServer do.
#pragma once

#include <windows.h>

#include <span>

#include "frame/registrar/registrar.hpp"

namespace paylodge {

// One part of the module's registration, as a way there and a way back.
struct RegistrationStep {
    HRESULT (*apply)(const Registrar& registrar);
    HRESULT (*remove)(const Registrar& registrar);
};

// Applies the steps in their order. When one fails, it and those before it are removed again, and its HRESULT is
// returned.
[[nodiscard]] HRESULT ApplySteps(std::span<const RegistrationStep> steps, const Registrar& registrar);
// Removes every step, also after a failure; returns the first failure.
[[nodiscard]] HRESULT RemoveSteps(std::span<const RegistrationStep> steps, const Registrar& registrar);

// Both classes and the type library. Return the HRESULT of the step that failed, E_OUTOFMEMORY without memory.
[[nodiscard]] HRESULT RegisterServer(RegistrationScope scope = RegistrationScope::kMachine);
[[nodiscard]] HRESULT UnregisterServer(RegistrationScope scope = RegistrationScope::kMachine);

}  // namespace paylodge
