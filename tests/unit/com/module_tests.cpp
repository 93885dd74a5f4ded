#include "com/module.hpp"

#include <comdef.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

#include "tests/support/hresult.hpp"
#include "tests/support/import_slot.hpp"

namespace paylodge {
namespace {

// What the system says about the path of this program while it lives: another path, or an error.
class FakePath {
  public:
    explicit FakePath(std::wstring path) : path_(std::move(path)) { active_ = this; }
    explicit FakePath(DWORD error) : error_(error) { active_ = this; }
    ~FakePath() { active_ = nullptr; }
    FakePath(const FakePath&) = delete;
    FakePath& operator=(const FakePath&) = delete;

    static DWORD WINAPI GetModuleFileName(HMODULE module, wchar_t* path, DWORD size) {
        if (active_ == nullptr) {
            const HMODULE kernel = ::GetModuleHandleW(L"kernel32.dll");
            const auto system = reinterpret_cast<decltype(&GetModuleFileName)>(
                reinterpret_cast<void*>(::GetProcAddress(kernel, "GetModuleFileNameW")));
            return system(module, path, size);
        }
        return active_->Copy(path, size);
    }

  private:
    // As the system does: a path without room for it and its null is cut off, and the room is returned for its length.
    [[nodiscard]] DWORD Copy(wchar_t* path, DWORD size) const {
        if (error_ != ERROR_SUCCESS) {
            ::SetLastError(error_);
            return 0;
        }
        const size_t length = std::min<size_t>(path_.size(), size - 1);
        path[path_.copy(path, length)] = L'\0';
        ::SetLastError(length < path_.size() ? ERROR_INSUFFICIENT_BUFFER : ERROR_SUCCESS);
        return length < path_.size() ? size : static_cast<DWORD>(length);
    }

    static inline const FakePath* active_ = nullptr;
    std::wstring path_;
    DWORD error_ = ERROR_SUCCESS;
};

TEST(Module, IsTheProgramThatTheCodeIsLinkedInto) {
    EXPECT_EQ(::GetModuleHandleW(nullptr), Module::Instance());
    EXPECT_EQ(L"com_tests.exe", std::filesystem::path(Module::Path()).filename());
    EXPECT_TRUE(std::filesystem::path(Module::Path()).is_absolute());
}

TEST(Module, CountsTheLocksOfSeveralThreads) {
    constexpr int kRounds = 1'000'000;
    const LONG before = Module::References();
    std::atomic<int> ready = 0;
    const auto lock_and_unlock = [&ready] {
        // Both at the same time.
        ++ready;
        while (ready < 2) {
            std::this_thread::yield();
        }
        for (int round = 0; round < kRounds; ++round) {
            Module::Lock();
            Module::Unlock();
        }
    };
    std::thread other(lock_and_unlock);
    lock_and_unlock();
    other.join();
    EXPECT_EQ(before, Module::References());
}

TEST(Module, PathMayBeOfAnyLength) {
    constexpr std::wstring_view root = LR"(\\?\C:\)";
    for (const size_t length : {20U, 259U, 260U, 261U, 519U, 520U, 521U, 32766U}) {
        const std::wstring path = std::wstring(root) + std::wstring(length - root.size(), L'f');
        const FakePath fake(path);
        EXPECT_EQ(path, Module::Path()) << length;
    }
}

TEST(Module, PathThatTheSystemRefusesThrowsItsError) {
    const FakePath fake(ERROR_ACCESS_DENIED);
    try {
        static_cast<void>(Module::Path());
        ADD_FAILURE() << "nothing was thrown";
    } catch (const _com_error& error) {
        EXPECT_HRESULT(E_ACCESSDENIED, error.Error());
    }
}

}  // namespace
}  // namespace paylodge

extern "C" {
extern decltype(&::GetModuleFileNameW)
    const import_of_get_module_file_name PAYLODGE_IMPORT_SLOT(GetModuleFileNameW, 12);
decltype(&::GetModuleFileNameW) const import_of_get_module_file_name = &paylodge::FakePath::GetModuleFileName;
}
