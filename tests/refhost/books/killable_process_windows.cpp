#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>

#include "com/owner.hpp"
#include "tests/refhost/books/killable_process.hpp"

namespace paylodge::refhost {

KillableProcess::KillableProcess(std::string_view name, const std::vector<std::string>& arguments) {
    wchar_t own[MAX_PATH] = {};
    ::GetModuleFileNameW(nullptr, own, MAX_PATH);
    const auto path = std::filesystem::path(own).parent_path() / (std::string(name) + ".exe");
    std::wstring command = L'"' + path.wstring() + L'"';
    for (const std::string& word : arguments) {
        command += L" \"" + std::filesystem::path(word).wstring() + L'"';
    }
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    EXPECT_TRUE(
        ::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
        << path;
    const Handle thread(process.hThread);
    handle_ = reinterpret_cast<std::intptr_t>(process.hProcess);
}

KillableProcess::~KillableProcess() {
    constexpr UINT kKilled = 99;
    const Handle process(reinterpret_cast<HANDLE>(handle_));
    ::TerminateProcess(process.Get(), kKilled);
    EXPECT_EQ(::WaitForSingleObject(process.Get(), 30'000), WAIT_OBJECT_0);
    DWORD exit_code = 0;
    ::GetExitCodeProcess(process.Get(), &exit_code);
    EXPECT_EQ(exit_code, kKilled) << "it ended by itself";
}

}  // namespace paylodge::refhost
