// The registry-script language: a text that says which keys and values a component needs. Knows nothing of the
// platform.
//
//     script = { root "{" { entry } "}" }
//     entry  = "Delete" name
//            | [ "ForceRemove" ] [ "NoRemove" ] "Val" name "=" data
//            | [ "ForceRemove" ] [ "NoRemove" ] name [ "=" data ] [ "{" { entry } "}" ]
//     data   = "s" text | "d" number | "m" texts | "b" bytes
//
// Words are set apart by blanks and do not depend on letter case; a name that is one of the language's words stands in
// single quotes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "frame/registrar/script_tokens.hpp"

namespace paylodge {

enum class RegistryRoot {
    kClassesRoot,
    kCurrentUser,
    kLocalMachine,
    kUsers,
    kPerformanceData,
    kDynamicData,
    kCurrentConfig,
};

// The data of a value: text, number, list of texts, bytes.
using RegistryData =
    std::variant<std::u16string, std::uint32_t, std::vector<std::u16string>, std::vector<std::uint8_t>>;

enum class RegistryEntryKind {
    kKey,     // a key, with its default value as data if it has one
    kValue,   // a named value, always with data
    kDelete,  // a key that registering deletes
};

struct RegistryEntry {
    RegistryEntryKind kind = RegistryEntryKind::kKey;
    bool force_remove = false;  // the key is deleted with all that is in it before it is created
    bool no_remove = false;     // removing leaves it where it is
    std::u16string name;
    std::optional<RegistryData> data;
    std::vector<RegistryEntry> entries;  // what stands in a key, in the order of the script
};

struct RegistryTree {
    RegistryRoot root;
    std::vector<RegistryEntry> entries;
};
using RegistryScript = std::vector<RegistryTree>;

// Reads a whole script. Throws RegistryScriptError.
[[nodiscard]] RegistryScript ParseRegistryScript(std::u16string_view script, const ScriptVariables& variables);

// The script with the current user's classes in place of each root "HKCR". Throws RegistryScriptError for quoted text
// that is not closed; other mistakes are left for the parser to find.
[[nodiscard]] std::u16string RewriteForCurrentUser(std::u16string_view script);

}  // namespace paylodge
