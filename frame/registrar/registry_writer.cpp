#include "frame/registrar/registry_writer.hpp"

#include <algorithm>
#include <array>

namespace paylodge {
namespace {

// Too much hangs beneath these to delete them with their trees.
constexpr std::array<std::u16string_view, 10> kSharedKeys = {
    u"AppID",    u"Classes", u"CLSID",   u"Component Categories", u"Interface", u"Microsoft",
    u"Software", u"System",  u"TypeLib", u"Wow6432Node",
};

[[nodiscard]] bool IsShared(std::u16string_view name) noexcept {
    return std::ranges::any_of(kSharedKeys, [name](std::u16string_view key) { return EqualIgnoringCase(key, name); });
}

[[nodiscard]] HKEY RootKey(RegistryRoot root) noexcept {
    switch (root) {
        case RegistryRoot::kClassesRoot:
            return HKEY_CLASSES_ROOT;
        case RegistryRoot::kCurrentUser:
            return HKEY_CURRENT_USER;
        case RegistryRoot::kLocalMachine:
            return HKEY_LOCAL_MACHINE;
        case RegistryRoot::kUsers:
            return HKEY_USERS;
        case RegistryRoot::kPerformanceData:
            return HKEY_PERFORMANCE_DATA;
        case RegistryRoot::kDynamicData:
            return HKEY_DYN_DATA;
        case RegistryRoot::kCurrentConfig:
            return HKEY_CURRENT_CONFIG;
    }
    return nullptr;
}

[[nodiscard]] std::wstring Wide(std::u16string_view text) { return {text.begin(), text.end()}; }

[[nodiscard]] LSTATUS SuccessIfMissing(LSTATUS status) noexcept {
    return status == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : status;
}

[[nodiscard]] LSTATUS FirstFailure(LSTATUS earlier, LSTATUS later) noexcept {
    return earlier == ERROR_SUCCESS ? later : earlier;
}

[[nodiscard]] LSTATUS DeleteTree(HKEY parent, const std::u16string& name) {
    return IsShared(name) ? ERROR_SUCCESS : SuccessIfMissing(::RegDeleteTreeW(parent, Wide(name).c_str()));
}

// Stores data of each kind as the registry's type for it.
class ValueWriter {
  public:
    // An empty name stands for the key's default value.
    ValueWriter(HKEY key, std::u16string_view name) : key_(key), name_(Wide(name)) {}

    [[nodiscard]] LSTATUS operator()(const std::u16string& text) const {
        return Set(REG_SZ, text.c_str(), (text.size() + 1) * sizeof(char16_t));
    }
    [[nodiscard]] LSTATUS operator()(std::uint32_t number) const { return Set(REG_DWORD, &number, sizeof number); }
    [[nodiscard]] LSTATUS operator()(const std::vector<std::u16string>& texts) const {
        std::u16string list;
        for (const std::u16string& text : texts) {
            list += text;
            list += u'\0';
        }
        return Set(REG_MULTI_SZ, list.c_str(), (list.size() + 1) * sizeof(char16_t));
    }
    [[nodiscard]] LSTATUS operator()(const std::vector<std::uint8_t>& bytes) const {
        return Set(REG_BINARY, bytes.data(), bytes.size());
    }

  private:
    [[nodiscard]] LSTATUS Set(DWORD type, const void* data, size_t size) const {
        return ::RegSetValueExW(key_, name_.c_str(), 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(size));
    }

    HKEY key_;
    std::wstring name_;
};

[[nodiscard]] LSTATUS WriteAll(HKEY key, std::span<const RegistryEntry> entries);
[[nodiscard]] LSTATUS RemoveAll(HKEY key, std::span<const RegistryEntry> entries);

// What a key is opened for: to change its values where the script has some for it, else only to go through it. Whether
// its subkeys may be created and deleted is decided by the keys' own rights, not by those of the handle.
[[nodiscard]] REGSAM AccessFor(const RegistryEntry& entry) noexcept {
    const bool has_values = entry.data || std::ranges::any_of(entry.entries, [](const RegistryEntry& child) {
                                return child.kind == RegistryEntryKind::kValue;
                            });
    return has_values ? KEY_READ | KEY_SET_VALUE : KEY_READ;
}

[[nodiscard]] LSTATUS WriteKey(HKEY parent, const RegistryEntry& entry) {
    LSTATUS status = entry.force_remove ? DeleteTree(parent, entry.name) : ERROR_SUCCESS;
    RegistryKey key;
    if (status == ERROR_SUCCESS) {
        status = ::RegCreateKeyExW(parent, Wide(entry.name).c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                   AccessFor(entry), nullptr, key.Receive(), nullptr);
    }
    if (status == ERROR_SUCCESS && entry.data) {
        status = std::visit(ValueWriter(key.Get(), {}), *entry.data);
    }
    return status == ERROR_SUCCESS ? WriteAll(key.Get(), entry.entries) : status;
}

[[nodiscard]] LSTATUS Write(HKEY parent, const RegistryEntry& entry) {
    switch (entry.kind) {
        case RegistryEntryKind::kKey:
            return WriteKey(parent, entry);
        case RegistryEntryKind::kValue:
            // NOLINTNEXTLINE(bugprone-unchecked-optional-access): a value always has data.
            return std::visit(ValueWriter(parent, entry.name), entry.data.value());
        case RegistryEntryKind::kDelete:
            return DeleteTree(parent, entry.name);
    }
    return ERROR_INVALID_PARAMETER;
}

[[nodiscard]] LSTATUS WriteAll(HKEY key, std::span<const RegistryEntry> entries) {
    for (const RegistryEntry& entry : entries) {
        if (const LSTATUS status = Write(key, entry); status != ERROR_SUCCESS) {
            return status;
        }
    }
    return ERROR_SUCCESS;
}

[[nodiscard]] bool HasSubkeys(HKEY key) noexcept {
    DWORD count = 0;
    return ::RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr, nullptr, nullptr,
                              nullptr, nullptr) == ERROR_SUCCESS &&
           count != 0;
}

[[nodiscard]] LSTATUS RemoveKey(HKEY parent, const RegistryEntry& entry) {
    if (entry.force_remove && !entry.no_remove && !IsShared(entry.name)) {
        return DeleteTree(parent, entry.name);
    }
    RegistryKey key;
    LSTATUS status = ::RegOpenKeyExW(parent, Wide(entry.name).c_str(), 0, AccessFor(entry), key.Receive());
    if (status != ERROR_SUCCESS) {
        return SuccessIfMissing(status);
    }
    status = RemoveAll(key.Get(), entry.entries);
    if (entry.no_remove || HasSubkeys(key.Get())) {
        return status;
    }
    key.Reset();
    return FirstFailure(status, SuccessIfMissing(::RegDeleteKeyW(parent, Wide(entry.name).c_str())));
}

[[nodiscard]] LSTATUS Remove(HKEY parent, const RegistryEntry& entry) {
    switch (entry.kind) {
        case RegistryEntryKind::kKey:
            return RemoveKey(parent, entry);
        case RegistryEntryKind::kValue:
            return entry.no_remove ? ERROR_SUCCESS
                                   : SuccessIfMissing(::RegDeleteValueW(parent, Wide(entry.name).c_str()));
        case RegistryEntryKind::kDelete:
            return ERROR_SUCCESS;
    }
    return ERROR_INVALID_PARAMETER;
}

[[nodiscard]] LSTATUS RemoveAll(HKEY key, std::span<const RegistryEntry> entries) {
    LSTATUS status = ERROR_SUCCESS;
    for (const RegistryEntry& entry : entries) {
        status = FirstFailure(status, Remove(key, entry));
    }
    return status;
}

}  // namespace

HRESULT WriteEntries(HKEY key, std::span<const RegistryEntry> entries) {
    // The conversion is a macro that looks at its argument twice.
    const LSTATUS status = WriteAll(key, entries);
    return HRESULT_FROM_WIN32(status);
}

HRESULT RemoveEntries(HKEY key, std::span<const RegistryEntry> entries) {
    const LSTATUS status = RemoveAll(key, entries);
    return HRESULT_FROM_WIN32(status);
}

HRESULT WriteScript(const RegistryScript& script) {
    for (const RegistryTree& tree : script) {
        if (const HRESULT result = WriteEntries(RootKey(tree.root), tree.entries); FAILED(result)) {
            return result;
        }
    }
    return S_OK;
}

HRESULT RemoveScript(const RegistryScript& script) {
    HRESULT first_failure = S_OK;
    for (const RegistryTree& tree : script) {
        const HRESULT result = RemoveEntries(RootKey(tree.root), tree.entries);
        if (SUCCEEDED(first_failure)) {
            first_failure = result;
        }
    }
    return first_failure;
}

}  // namespace paylodge
