#include "com/host_library.hpp"

#include <gtest/gtest.h>

#include <filesystem>

#include "com/module.hpp"

namespace paylodge {
namespace {

TEST(HostLibrary, GivesAnExportThatCanBeCalled) {
    HostLibrary library(L"kernel32.dll");
    const auto get_process_id = library.Find<DWORD WINAPI()>("GetCurrentProcessId");
    ASSERT_NE(nullptr, get_process_id);
    EXPECT_EQ(::GetCurrentProcessId(), get_process_id());
}

TEST(HostLibrary, MissingExportIsNull) {
    HostLibrary library(L"kernel32.dll");
    EXPECT_EQ(nullptr, library.Find<void()>("NoSuchExport"));
}

TEST(HostLibrary, MissingLibraryIsNullAndLookedForAgain) {
    HostLibrary library(L"no_such_library.dll");
    EXPECT_EQ(nullptr, library.Find<void()>("AnyExport"));

    wchar_t system_folder[MAX_PATH] = L"";
    ASSERT_NE(0U, ::GetSystemDirectoryW(system_folder, MAX_PATH));
    const auto copy = std::filesystem::path(Module::Path()).parent_path() / L"no_such_library.dll";
    std::filesystem::copy_file(std::filesystem::path(system_folder) / L"version.dll", copy);
    EXPECT_NE(nullptr, library.Find<void()>("GetFileVersionInfoSizeW"));
    library = HostLibrary(L"");
    std::filesystem::remove(copy);
}

TEST(HostLibrary, LibraryIsLetGoWithItsOwner) {
    ASSERT_EQ(nullptr, ::GetModuleHandleW(L"hhctrl.ocx"));
    {
        HostLibrary library(L"hhctrl.ocx");
        EXPECT_NE(nullptr, library.Find<void()>("HtmlHelpW"));
        EXPECT_NE(nullptr, library.Find<void()>("HtmlHelpA"));
        EXPECT_NE(nullptr, ::GetModuleHandleW(L"hhctrl.ocx"));
    }
    EXPECT_EQ(nullptr, ::GetModuleHandleW(L"hhctrl.ocx"));
}

TEST(Module, IsTheProgramThatTheCodeIsLinkedInto) {
    EXPECT_EQ(::GetModuleHandleW(nullptr), Module::Instance());
    EXPECT_EQ(L"com_tests.exe", std::filesystem::path(Module::Path()).filename());
    EXPECT_TRUE(std::filesystem::path(Module::Path()).is_absolute());
}

}  // namespace
}  // namespace paylodge
