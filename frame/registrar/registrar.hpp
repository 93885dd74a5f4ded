// The registrar: runs the registry scripts in the module's resources.
#pragma once

#include <windows.h>

#include "frame/registrar/registry_script.hpp"
#include "frame/registrar/type_library_registration.hpp"

namespace paylodge {

// Scripts are resources of the type "REGISTRY": text in the system's ANSI code page. A script whose root is "HKCR" is
// written to the current user's classes when the scope says so.
//
// The methods return DISP_E_EXCEPTION for a mistake in a script, which then changes nothing, the system's error for a
// resource that is missing, or the HRESULT of the registry call that failed.
class Registrar {
  public:
    Registrar(RegistrationScope scope, ScriptVariables variables) noexcept
        : scope_(scope), variables_(std::move(variables)) {}

    [[nodiscard]] RegistrationScope Scope() const noexcept { return scope_; }

    // Creates what the script with this resource id says. What was created before a failure stays.
    [[nodiscard]] HRESULT Register(WORD script) const;
    // Removes it again; what is not there counts as removed.
    [[nodiscard]] HRESULT Unregister(WORD script) const;

  private:
    [[nodiscard]] HRESULT Run(WORD script, HRESULT (*apply)(const RegistryScript&)) const;

    RegistrationScope scope_;
    ScriptVariables variables_;
};

}  // namespace paylodge
