// A company file and the processes that have it open.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

#include "refhost/books/problems.hpp"
#include "tests/refhost/objects/host_server.hpp"

namespace paylodge::refhost {
namespace {

// Nothing when the file was opened.
[[nodiscard]] std::optional<Problem> ProblemOf(const TemporaryCompanyFile& file) {
    try {
        static_cast<void>(file.Open());
    } catch (const HostError& error) {
        return error.GetProblem();
    }
    return std::nullopt;
}

// Another process that has a company file open, until it is killed.
class LockHolder {
  public:
    explicit LockHolder(const std::wstring& path) {
        const std::wstring event_name = L"refhost-test-locked-" + std::to_wstring(::GetCurrentProcessId());
        const HANDLE locked = ::CreateEventW(nullptr, TRUE, FALSE, event_name.c_str());
        std::wstring command =
            L'"' + PathBesideProgram(L"refhost_lock_holder.exe") + L"\" \"" + path + L"\" " + event_name;
        STARTUPINFOW startup = {};
        startup.cb = sizeof startup;
        EXPECT_TRUE(::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                                     &process_));
        EXPECT_EQ(::WaitForSingleObject(locked, 30'000), WAIT_OBJECT_0);
        ::CloseHandle(locked);
    }
    ~LockHolder() {
        Kill();
        ::CloseHandle(process_.hThread);
        ::CloseHandle(process_.hProcess);
    }
    LockHolder(const LockHolder&) = delete;
    LockHolder& operator=(const LockHolder&) = delete;

    void Kill() const {
        ::TerminateProcess(process_.hProcess, 1);
        ::WaitForSingleObject(process_.hProcess, 30'000);
    }

  private:
    PROCESS_INFORMATION process_ = {};
};

TEST(CompanyFileLock, OfAnotherProcessRefusesASecondOpenerUntilThatProcessIsGone) {
    const TemporaryCompanyFile file;
    const LockHolder holder(file.Path());
    EXPECT_EQ(ProblemOf(file), Problem::kLocked);
    holder.Kill();
    EXPECT_EQ(ProblemOf(file), std::nullopt);
}

}  // namespace
}  // namespace paylodge::refhost
