// A key of its own for each test, gone when the test is over, and short ways of looking into it.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "frame/registrar/registry_writer.hpp"

namespace paylodge {

class ScratchRegistry : public testing::Test {
  public:
    ScratchRegistry() : name_(L"Software\\PaylodgeTests." + std::to_wstring(::GetCurrentProcessId())) {
        EXPECT_EQ(::RegCreateKeyExW(HKEY_CURRENT_USER, name_.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                    KEY_ALL_ACCESS, nullptr, root_.Receive(), nullptr),
                  ERROR_SUCCESS);
    }
    ScratchRegistry(const ScratchRegistry&) = delete;
    ScratchRegistry& operator=(const ScratchRegistry&) = delete;
    ~ScratchRegistry() override {
        root_.Reset();
        EXPECT_EQ(::RegDeleteTreeW(HKEY_CURRENT_USER, name_.c_str()), ERROR_SUCCESS);
    }

  protected:
    [[nodiscard]] HKEY Root() const noexcept { return root_.Get(); }

    void CreateKey(const wchar_t* path) const {
        RegistryKey key;
        EXPECT_EQ(::RegCreateKeyExW(Root(), path, 0, nullptr, 0, KEY_READ, nullptr, key.Receive(), nullptr),
                  ERROR_SUCCESS);
    }

    void SetText(const wchar_t* path, const wchar_t* name, const std::wstring& text) const {
        EXPECT_EQ(::RegSetKeyValueW(Root(), path, name, REG_SZ, text.c_str(),
                                    static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))),
                  ERROR_SUCCESS);
    }

    [[nodiscard]] bool HasKey(const wchar_t* path) const {
        RegistryKey key;
        return ::RegOpenKeyExW(Root(), path, 0, KEY_READ, key.Receive()) == ERROR_SUCCESS;
    }

    // Type and bytes of a value; null is the name of a default value. Nothing without the value.
    struct Stored {
        DWORD type = REG_NONE;
        std::vector<BYTE> bytes;
    };
    [[nodiscard]] std::optional<Stored> Value(const wchar_t* path, const wchar_t* name) const {
        Stored stored;
        DWORD size = 0;
        RegistryKey key;
        if (::RegOpenKeyExW(Root(), path, 0, KEY_READ, key.Receive()) != ERROR_SUCCESS ||
            ::RegQueryValueExW(key.Get(), name, nullptr, nullptr, nullptr, &size) != ERROR_SUCCESS) {
            return std::nullopt;
        }
        stored.bytes.resize(size);
        EXPECT_EQ(::RegQueryValueExW(key.Get(), name, nullptr, &stored.type, stored.bytes.data(), &size),
                  ERROR_SUCCESS);
        return stored;
    }

    // The text of a value of the type REG_SZ with its one null at the end; "(none)" for anything else.
    [[nodiscard]] std::wstring Text(const wchar_t* path, const wchar_t* name = nullptr) const {
        const std::optional<Stored> stored = Value(path, name);
        if (!stored || stored->type != REG_SZ) {
            return L"(none)";
        }
        const std::wstring text(reinterpret_cast<const wchar_t*>(stored->bytes.data()),
                                stored->bytes.size() / sizeof(wchar_t));
        return !text.empty() && text.find(L'\0') == text.size() - 1 ? text.substr(0, text.size() - 1) : L"(none)";
    }

    [[nodiscard]] DWORD CountSubkeys(const wchar_t* path) const { return Counts(path).subkeys; }
    [[nodiscard]] DWORD CountValues(const wchar_t* path) const { return Counts(path).values; }

  private:
    struct KeyCounts {
        DWORD subkeys = 0;
        DWORD values = 0;
    };
    [[nodiscard]] KeyCounts Counts(const wchar_t* path) const {
        RegistryKey key;
        KeyCounts counts;
        EXPECT_EQ(::RegOpenKeyExW(Root(), path, 0, KEY_READ, key.Receive()), ERROR_SUCCESS);
        EXPECT_EQ(::RegQueryInfoKeyW(key.Get(), nullptr, nullptr, nullptr, &counts.subkeys, nullptr, nullptr,
                                     &counts.values, nullptr, nullptr, nullptr, nullptr),
                  ERROR_SUCCESS);
        return counts;
    }

    std::wstring name_;
    RegistryKey root_;
};

// The predefined key leads into the scratch key while this lives.
class Redirection {
  public:
    Redirection(HKEY predefined, HKEY target) : predefined_(predefined) {
        LetTypeLibrariesFollow();
        EXPECT_EQ(::RegOverridePredefKey(predefined_, target), ERROR_SUCCESS);
    }
    ~Redirection() { EXPECT_EQ(::RegOverridePredefKey(predefined_, nullptr), ERROR_SUCCESS); }
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;

    // Unless it is asked to, RegisterTypeLib of Windows writes to the machine's part of the registry all the same.
    static void LetTypeLibrariesFollow() {
        const FARPROC found = ::GetProcAddress(::GetModuleHandleW(L"oleaut32.dll"), "OaEnablePerUserTLibRegistration");
        if (found != nullptr) {
            reinterpret_cast<void(WINAPI*)()>(reinterpret_cast<void*>(found))();
        }
    }

  private:
    HKEY predefined_;
};

}  // namespace paylodge
