// A registration in several parts: all of them, or none.
#pragma once

#include <windows.h>

#include <span>

#include "frame/registrar/registrar.hpp"

namespace paylodge {

// One part of a module's registration, as a way there and a way back.
struct RegistrationStep {
    HRESULT (*apply)(const Registrar& registrar);
    HRESULT (*remove)(const Registrar& registrar);
};

// Applies the steps in their order. When one fails, it and those before it are removed again, and its HRESULT is
// returned.
[[nodiscard]] HRESULT ApplySteps(std::span<const RegistrationStep> steps, const Registrar& registrar);
// Removes every step, also after a failure; returns the first failure.
[[nodiscard]] HRESULT RemoveSteps(std::span<const RegistrationStep> steps, const Registrar& registrar);

}  // namespace paylodge
