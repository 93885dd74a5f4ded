#include "tests/kit/clean_up.hpp"

#include <windows.h>

#include <string>
#include <vector>

#include "com/owner.hpp"

namespace paylodge::kit {
namespace {

struct KeyTraits {
    using Type = HKEY;
    static constexpr Type None() noexcept { return nullptr; }
    static void Free(Type key) noexcept { ::RegCloseKey(key); }
};

constexpr std::wstring_view kScratchKeys = L"PaylodgeTests.";
constexpr DWORD kLongestKeyName = 255;
constexpr int kTries = 20;
constexpr DWORD kPauseMilliseconds = 100;

}  // namespace

void RemoveScratchKeys() {
    Owner<KeyTraits> software;
    if (::RegOpenKeyExW(HKEY_CURRENT_USER, L"Software", 0, KEY_READ | DELETE, software.Receive()) != ERROR_SUCCESS) {
        return;
    }
    std::vector<std::wstring> found;
    std::wstring name(kLongestKeyName + 1, L'\0');
    for (DWORD index = 0;; ++index) {
        auto length = static_cast<DWORD>(name.size());
        if (::RegEnumKeyExW(software.Get(), index, name.data(), &length, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS) {
            break;
        }
        if (std::wstring_view(name).substr(0, length).starts_with(kScratchKeys)) {
            found.push_back(name.substr(0, length));
        }
    }
    for (const std::wstring& key : found) {
        ::RegDeleteTreeW(software.Get(), key.c_str());
    }
}

void RemoveFolder(const std::filesystem::path& folder) {
    for (int left = kTries; left > 0; --left) {
        std::error_code error;
        std::filesystem::remove_all(folder, error);
        if (!error) {
            return;
        }
        ::Sleep(kPauseMilliseconds);
    }
}

}  // namespace paylodge::kit
