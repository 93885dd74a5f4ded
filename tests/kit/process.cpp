#include "tests/kit/process.hpp"

#include <atomic>

#include "com/owner.hpp"

namespace paylodge::kit {
namespace {

std::atomic<bool> g_is_stopped = false;
constexpr DWORD kLookMilliseconds = 100;
// As Ctrl-C ends a program.
constexpr UINT kStopped = 130;

// Sets variables of this process, which its children inherit, for as long as it lives.
class Environment {
  public:
    explicit Environment(const std::map<std::wstring, std::wstring>& variables) {
        for (const auto& [name, value] : variables) {
            std::wstring before(::GetEnvironmentVariableW(name.c_str(), nullptr, 0), L'\0');
            before.resize(::GetEnvironmentVariableW(name.c_str(), before.data(), static_cast<DWORD>(before.size())));
            before_.emplace(name, before);
            ::SetEnvironmentVariableW(name.c_str(), value.c_str());
        }
    }
    ~Environment() {
        for (const auto& [name, value] : before_) {
            ::SetEnvironmentVariableW(name.c_str(), value.empty() ? nullptr : value.c_str());
        }
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

  private:
    std::map<std::wstring, std::wstring> before_;
};

[[nodiscard]] FileHandle OpenForChild(const wchar_t* path, DWORD access, DWORD disposition) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    return FileHandle(::CreateFileW(path, access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, disposition,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
}

// What is assigned to it ends with it.
[[nodiscard]] Handle MakeJob() {
    Handle job(::CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    ::SetInformationJobObject(job.Get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
    return job;
}

[[nodiscard]] bool EndsWithin(HANDLE process, DWORD seconds) {
    const ULONGLONG end = ::GetTickCount64() + seconds * 1000ULL;
    while (!g_is_stopped && ::GetTickCount64() < end) {
        if (::WaitForSingleObject(process, kLookMilliseconds) == WAIT_OBJECT_0) {
            return true;
        }
    }
    return false;
}

[[nodiscard]] std::wstring CommandLine(const Command& command) {
    std::wstring line = L'"' + command.program.wstring() + L'"';
    for (const std::wstring& argument : command.arguments) {
        line += L" \"" + argument + L'"';
    }
    return line;
}

}  // namespace

void StopPrograms() noexcept { g_is_stopped = true; }

bool AreProgramsStopped() noexcept { return g_is_stopped; }

std::variant<Ending, DWORD> Run(const Command& command, DWORD seconds) {
    const FileHandle output = OpenForChild(command.log.c_str(), GENERIC_WRITE, CREATE_ALWAYS);
    const FileHandle input = OpenForChild(L"NUL", GENERIC_READ, OPEN_EXISTING);
    if (!output || !input) {
        return ::GetLastError();
    }
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = input.Get();
    start.hStdOutput = output.Get();
    start.hStdError = output.Get();
    const Environment environment(command.environment);
    std::wstring line = CommandLine(command);
    PROCESS_INFORMATION child = {};
    // Suspended, so that it has no children before it is in the job.
    if (!::CreateProcessW(command.program.c_str(), line.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr,
                          command.folder.c_str(), &start, &child)) {
        return ::GetLastError();
    }
    const Handle process(child.hProcess);
    const Handle thread(child.hThread);
    const Handle job = MakeJob();
    ::AssignProcessToJobObject(job.Get(), process.Get());
    ::ResumeThread(thread.Get());
    Ending ending;
    ending.was_stopped = !EndsWithin(process.Get(), seconds);
    ::TerminateJobObject(job.Get(), kStopped);
    if (ending.was_stopped) {
        ::TerminateProcess(process.Get(), kStopped);
        ::WaitForSingleObject(process.Get(), INFINITE);
    }
    ::GetExitCodeProcess(process.Get(), &ending.exit_code);
    return ending;
}

}  // namespace paylodge::kit
