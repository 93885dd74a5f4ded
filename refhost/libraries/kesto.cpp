// Kesto.dll of the reference host: the host's feature flags, from the environment variable KESTO_FLAGS. It holds
// entries such as "SBSSettings/NetworkAdapter.EnableLogContext=true", separated by semicolons; the last one of a name
// counts.

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

namespace {

[[nodiscard]] std::string FlagTexts() {
    std::string texts(::GetEnvironmentVariableA("KESTO_FLAGS", nullptr, 0), '\0');
    texts.resize(::GetEnvironmentVariableA("KESTO_FLAGS", texts.data(), static_cast<DWORD>(texts.size())));
    return texts;
}

[[nodiscard]] std::string_view Text(const char* text) noexcept { return text == nullptr ? "" : text; }

[[nodiscard]] std::optional<bool> FindFlag(std::string_view flags, std::string_view name) {
    std::optional<bool> found;
    while (!flags.empty()) {
        const std::string_view entry = flags.substr(0, flags.find(';'));
        const size_t equals = entry.find('=');
        if (equals != std::string_view::npos && entry.substr(0, equals) == name) {
            found = entry.substr(equals + 1) == "true";
        }
        flags.remove_prefix(entry.size() == flags.size() ? entry.size() : entry.size() + 1);
    }
    return found;
}

}  // namespace

// Kesto::KestoAccess::GetFeatureParamAsBool; the definition file gives it the name that the host's compiler makes of
// that. A flag that is not set has its default value, which is true for "true" only. Null texts count as empty.
extern "C" bool __cdecl GetFeatureParamAsBool(const char* section, const char* name, const char* default_value) {
    const std::string full_name = std::string(Text(section)) + '/' + std::string(Text(name));
    return FindFlag(FlagTexts(), full_name).value_or(Text(default_value) == "true");
}
