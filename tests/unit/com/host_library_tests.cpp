#include "com/host_library.hpp"

#include <gtest/gtest.h>

#include <filesystem>

#include "com/module.hpp"
#include "com/owner.hpp"

namespace paylodge {
namespace {

TEST(HostLibrary, ReturnsAnExportThatCanBeCalled) {
    HostLibrary library(L"kernel32.dll");
    const auto get_process_id = library.Find<DWORD WINAPI()>("GetCurrentProcessId");
    ASSERT_NE(nullptr, get_process_id);
    EXPECT_EQ(::GetCurrentProcessId(), get_process_id());
}

TEST(HostLibrary, MissingExportIsNull) {
    HostLibrary library(L"kernel32.dll");
    EXPECT_EQ(nullptr, library.Find<void()>("NoSuchExport"));
}

// A copy of one of the system's libraries under a name that nothing else has.
class LibraryFile {
  public:
    explicit LibraryFile(std::filesystem::path path) : path_(std::move(path)) {
        std::wstring system_folder(MAX_PATH, L'\0');
        system_folder.resize(::GetSystemDirectoryW(system_folder.data(), MAX_PATH));
        std::filesystem::copy_file(std::filesystem::path(system_folder) / L"version.dll", path_);
    }
    ~LibraryFile() {
        while (const HMODULE loaded = ::GetModuleHandleW(path_.c_str())) {
            ::FreeLibrary(loaded);
        }
        std::filesystem::remove(path_);
    }
    LibraryFile(const LibraryFile&) = delete;
    LibraryFile& operator=(const LibraryFile&) = delete;

    [[nodiscard]] const std::filesystem::path& Path() const noexcept { return path_; }

  private:
    std::filesystem::path path_;
};

constexpr const char* kExport = "GetFileVersionInfoSizeW";

[[nodiscard]] std::filesystem::path ProgramFolder() { return std::filesystem::path(Module::Path()).parent_path(); }

TEST(HostLibrary, MissingLibraryIsNullAndLookedForAgain) {
    HostLibrary library(L"no_such_library.dll");
    EXPECT_EQ(nullptr, library.Find<void()>(kExport));
    const LibraryFile file(ProgramFolder() / L"no_such_library.dll");
    EXPECT_NE(nullptr, library.Find<void()>(kExport));
}

// The current folder and PATH are where others may put a library of the host's name.
TEST(HostLibrary, IsNotTakenFromTheCurrentFolderOrTheSearchPath) {
    const auto folder = ProgramFolder() / L"not_the_program's_folder";
    std::filesystem::create_directory(folder);
    {
        const LibraryFile file(folder / L"planted_library.dll");
        const auto current = std::filesystem::current_path();
        std::filesystem::current_path(folder);
        std::wstring search_path(32767, L'\0');
        search_path.resize(::GetEnvironmentVariableW(L"PATH", search_path.data(), 32767));
        ASSERT_TRUE(::SetEnvironmentVariableW(L"PATH", (folder.wstring() + L";" + search_path).c_str()));
        HostLibrary library(L"planted_library.dll");
        EXPECT_EQ(nullptr, library.Find<void()>(kExport));
        // The system's default order finds it.
        EXPECT_TRUE(ModuleHandle(::LoadLibraryW(L"planted_library.dll")));
        ASSERT_TRUE(::SetEnvironmentVariableW(L"PATH", search_path.c_str()));
        std::filesystem::current_path(current);
    }
    std::filesystem::remove(folder);
}

TEST(HostLibrary, IsTheOneThatTheProcessHasLoaded) {
    const auto folder = ProgramFolder() / L"the_host's_folder";
    std::filesystem::create_directory(folder);
    {
        const LibraryFile file(folder / L"host_library.dll");
        const HMODULE loaded = ::LoadLibraryW(file.Path().c_str());
        ASSERT_NE(nullptr, loaded);
        HostLibrary library(L"host_library.dll");
        EXPECT_EQ(reinterpret_cast<void*>(::GetProcAddress(loaded, kExport)),
                  reinterpret_cast<void*>(library.Find<void()>(kExport)));
        ::FreeLibrary(loaded);
        EXPECT_EQ(loaded, ::GetModuleHandleW(file.Path().c_str())) << "the library is kept";
    }
    std::filesystem::remove(folder);
}

// However often it is asked for, so that a host that unloads it at its end is not kept from it by every call.
TEST(HostLibrary, IsReferredToOnce) {
    const LibraryFile file(ProgramFolder() / L"counted_library.dll");
    const HMODULE loaded = ::LoadLibraryW(file.Path().c_str());
    ASSERT_NE(nullptr, loaded);
    HostLibrary library(L"counted_library.dll");
    for (int call = 0; call < 3; ++call) {
        EXPECT_NE(nullptr, library.Find<void()>(kExport));
    }
    ::FreeLibrary(loaded);
    EXPECT_EQ(loaded, ::GetModuleHandleW(file.Path().c_str()));
    ::FreeLibrary(loaded);
    EXPECT_EQ(nullptr, ::GetModuleHandleW(file.Path().c_str()));
}

TEST(HostLibrary, MayBeInTheSystemsFolder) {
    constexpr auto name = L"msacm32.dll";
    ASSERT_EQ(nullptr, ::GetModuleHandleW(name)) << "the test needs a library that nothing else has loaded";
    HostLibrary library(name);
    EXPECT_NE(nullptr, library.Find<DWORD WINAPI()>("acmGetVersion"));
    ::FreeLibrary(::GetModuleHandleW(name));
}

}  // namespace
}  // namespace paylodge
