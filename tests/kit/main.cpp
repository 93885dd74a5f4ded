// Runs the test kit that this program lies in: run-tests [TEXT]
//
// With a TEXT only what has it in its name, for example x86/script or com_tests. Exit status: 0 when something ran and
// nothing failed, 1 otherwise, 2 for a wrong call, 130 after Ctrl-C.

#include <windows.h>

#include <cstdio>
#include <stdexcept>

#include "com/module.hpp"
#include "tests/kit/clean_up.hpp"
#include "tests/kit/jobs.hpp"
#include "tests/kit/process.hpp"
#include "tests/kit/report.hpp"

namespace paylodge::kit {
namespace {

namespace fs = std::filesystem;

// The folder that the programs run in, gone with this object.
class Scratch {
  public:
    explicit Scratch(fs::path folder) : folder_(std::move(folder)) {
        RemoveFolder(folder_);
        fs::create_directories(folder_);
    }
    ~Scratch() {
        RemoveFolder(folder_);
        RemoveScratchKeys();
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    [[nodiscard]] const fs::path& Folder() const noexcept { return folder_; }

  private:
    fs::path folder_;
};

BOOL WINAPI StopAtCtrlC(DWORD /*event*/) noexcept {
    StopPrograms();
    return TRUE;
}

[[nodiscard]] int RunKit(const fs::path& kit, const std::wstring& text) {
    const std::vector<Job> jobs = FindJobs(kit, text);
    if (jobs.empty()) {
        std::fprintf(stderr, "there is no test with '%ls' in its name in %ls\n", text.c_str(), kit.c_str());
        return 2;
    }
    Report report(kit / L"test-log.txt", DescribeMachine());
    const Scratch scratch(kit / L"scratch");
    for (const Job& job : jobs) {
        std::string output;
        const std::vector<Case> cases = RunJob(kit, scratch.Folder(), job, output);
        if (AreProgramsStopped()) {
            std::fputs("stopped\n", stderr);
            return 130;
        }
        report.Add(std::string(job.name.begin(), job.name.end()), cases, output);
    }
    return report.Finish() ? 0 : 1;
}

}  // namespace
}  // namespace paylodge::kit

int wmain(int count, wchar_t** arguments) {
    using namespace paylodge;
    if (count > 2) {
        std::fputs("Usage: run-tests [TEXT]\n", stderr);
        return 2;
    }
    // A crash is a result, not a dialog to be answered; the programs inherit this.
    ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    ::SetConsoleCtrlHandler(&kit::StopAtCtrlC, TRUE);
    try {
        return kit::RunKit(std::filesystem::path(Module::Path()).parent_path(), count > 1 ? arguments[1] : L"");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "run-tests: %s\n", error.what());
        return 1;
    }
}
