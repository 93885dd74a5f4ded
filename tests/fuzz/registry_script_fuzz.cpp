// Hostile registry scripts: whatever the text, the parser returns a script or throws a RegistryScriptError.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "frame/registrar/registry_script.hpp"

namespace paylodge {
namespace {

[[nodiscard]] bool IsScript(std::u16string_view text) {
    const ScriptVariables variables = {{u"MODULE", u"C:\\It's here\\100%\\Paylodge.dll"}, {u"OLEMISC", u"131473"}};
    try {
        static_cast<void>(ParseRegistryScript(text, variables));
        return true;
    } catch (const RegistryScriptError&) {
        return false;
    }
}

// A script is one for the current user too; what is none does not become one.
[[nodiscard]] bool KeepsItsMeaning(std::u16string_view text) {
    try {
        return IsScript(RewriteForCurrentUser(text)) == IsScript(text);
    } catch (const RegistryScriptError&) {
        return !IsScript(text);
    }
}

// Bytes below 0x80 stand for themselves, so that the fuzzer finds the language's words.
[[nodiscard]] std::u16string Widen(const std::uint8_t* data, std::size_t size) {
    std::u16string text;
    for (std::size_t i = 0; i < size; ++i) {
        text += static_cast<char16_t>(data[i] < 0x80 ? data[i] : data[i] << 8);
    }
    return text;
}

}  // namespace
}  // namespace paylodge

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (!paylodge::KeepsItsMeaning(paylodge::Widen(data, size))) {
        std::abort();
    }
    return 0;
}
