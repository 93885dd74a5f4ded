// A company file and the processes that have it open.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

#include "com/owner.hpp"
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
        const Handle locked(::CreateEventW(nullptr, TRUE, FALSE, event_name.c_str()));
        std::wstring command =
            L'"' + PathBesideProgram(L"refhost_lock_holder.exe") + L"\" \"" + path + L"\" " + event_name;
        STARTUPINFOW startup = {};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION process = {};
        EXPECT_TRUE(::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                                     &process));
        const Handle thread(process.hThread);
        process_.Reset(process.hProcess);
        EXPECT_EQ(::WaitForSingleObject(locked.Get(), 30'000), WAIT_OBJECT_0);
    }
    ~LockHolder() { Kill(); }
    LockHolder(const LockHolder&) = delete;
    LockHolder& operator=(const LockHolder&) = delete;

    void Kill() const {
        ::TerminateProcess(process_.Get(), 1);
        ::WaitForSingleObject(process_.Get(), 30'000);
    }

  private:
    Handle process_;
};

TEST(CompanyFileLock, OfAnotherProcessRefusesASecondOpenerUntilThatProcessIsGone) {
    const TemporaryCompanyFile file;
    const LockHolder holder(file.Path());
    EXPECT_EQ(ProblemOf(file), Problem::kLocked);
    holder.Kill();
    EXPECT_EQ(ProblemOf(file), std::nullopt);
}

TEST(CompanyFileLock, OfAProgramThatSharesTheFileWithNobodyRefusesAnOpenerUntilTheFileIsClosed) {
    const TemporaryCompanyFile file;
    FileHandle held(
        ::CreateFileW(file.Path().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(held);
    EXPECT_EQ(ProblemOf(file), Problem::kLocked);
    held.Reset();
    EXPECT_EQ(ProblemOf(file), std::nullopt);
}

}  // namespace
}  // namespace paylodge::refhost
