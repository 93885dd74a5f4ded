// Applies registry scripts to the registry.
#pragma once

#include <windows.h>

#include <span>

#include "com/owner.hpp"
#include "frame/registrar/registry_script.hpp"

namespace paylodge {

struct RegistryKeyTraits {
    using Type = HKEY;
    static constexpr Type None() noexcept { return nullptr; }
    static void Free(Type key) noexcept { ::RegCloseKey(key); }
};
using RegistryKey = Owner<RegistryKeyTraits>;

// Keys that components share, such as "CLSID", are never deleted with what is in them, whatever a script says.

// Creates the keys and values beneath a key, in their order. The first failure ends it and is returned; what was
// written until then stays.
[[nodiscard]] HRESULT WriteEntries(HKEY key, std::span<const RegistryEntry> entries);
// Removes what WriteEntries creates. A ForceRemove key goes with all that is in it, any other key only if no subkey is
// left in it, a NoRemove key or value not at all. What is not there counts as removed. A failure does not keep the rest
// from being removed; the first one is returned.
[[nodiscard]] HRESULT RemoveEntries(HKEY key, std::span<const RegistryEntry> entries);

// The same for each root key of a script.
[[nodiscard]] HRESULT WriteScript(const RegistryScript& script);
[[nodiscard]] HRESULT RemoveScript(const RegistryScript& script);

}  // namespace paylodge
