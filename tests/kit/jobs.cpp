#include "tests/kit/jobs.hpp"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>

#include "tests/kit/process.hpp"

namespace paylodge::kit {
namespace {

namespace fs = std::filesystem;

constexpr DWORD kTimeLimitSeconds = 600;
// Texts and their bytes are those of Western languages.
constexpr UINT kTestedCodePage = 1252;
constexpr const wchar_t* kCompanyFile = L"riverside.lhcompany";

[[nodiscard]] bool IsTestProgram(const fs::path& file) {
    return file.extension() == L".exe" && file.stem().wstring().ends_with(L"_tests");
}

[[nodiscard]] bool IsPageScript(const fs::path& file) {
    return file.extension() == L".js" && file.stem() != L"harness";
}

[[nodiscard]] std::vector<fs::path> FilesIn(const fs::path& folder, bool (*accepts)(const fs::path&)) {
    std::vector<fs::path> files;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        if (accepts(entry.path())) {
            files.push_back(entry.path());
        }
    }
    std::ranges::sort(files);
    return files;
}

[[nodiscard]] std::string ReadFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

[[nodiscard]] std::wstring Variable(const wchar_t* name) {
    std::wstring value(::GetEnvironmentVariableW(name, nullptr, 0), L'\0');
    value.resize(::GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
    return value;
}

// The host's libraries are found by name, each program has a company file of its own, counts of COM strings are exact.
[[nodiscard]] std::map<std::wstring, std::wstring> EnvironmentOf(const fs::path& build, const fs::path& folder) {
    return {{L"PATH", (build / L"refhost").wstring() + L';' + build.wstring() + L';' + Variable(L"PATH")},
            {L"OANOCACHE", L"1"},
            {L"LEDGERHALL_COMPANY_FILE", (folder / kCompanyFile).wstring()}};
}

// Errors that say that a program is for another kind of machine.
[[nodiscard]] bool IsForAnotherMachine(DWORD error) noexcept {
    return error == ERROR_BAD_EXE_FORMAT || error == ERROR_EXE_MACHINE_TYPE_MISMATCH || error == ERROR_NOT_SUPPORTED;
}

[[nodiscard]] std::vector<Case> NotStarted(const Job& job, DWORD error) {
    if (IsForAnotherMachine(error)) {
        const std::string architecture(job.architecture.begin(), job.architecture.end());
        return {{"(all)", Outcome::kSkipped, "this Windows does not run " + architecture + " programs"}};
    }
    return {{"(start of program)", Outcome::kFailed, "could not be started: error " + std::to_string(error)}};
}

// Runs the command and appends what it printed; `read` makes results of it.
[[nodiscard]] std::vector<Case> RunAndRead(const Job& job, const Command& command, std::string& output,
                                           std::vector<Case> (*read)(std::string_view, const Ending&)) {
    const auto ending = Run(command, kTimeLimitSeconds);
    if (const DWORD* const error = std::get_if<DWORD>(&ending)) {
        return NotStarted(job, *error);
    }
    const std::string text = ReadFile(command.log);
    output += text;
    return read(text, std::get<Ending>(ending));
}

// A program that is one test.
[[nodiscard]] std::vector<Case> ReadStatus(std::string_view log, const Ending& ending) {
    if (ending.exit_code == 0 && !ending.was_stopped) {
        return {};
    }
    return {{"(company file)", Outcome::kFailed, std::string(log) + "exit code " + std::to_string(ending.exit_code)}};
}

}  // namespace

std::vector<Job> FindJobs(const fs::path& kit, std::wstring_view text) {
    std::vector<Job> jobs;
    for (const std::wstring_view name : kArchitectures) {
        const std::wstring architecture(name);
        for (const fs::path& file : FilesIn(kit / architecture / L"tests", &IsTestProgram)) {
            jobs.push_back({architecture + L"/" + file.stem().wstring(), architecture, file, false});
        }
        for (const fs::path& file : FilesIn(kit / L"tests" / L"script", &IsPageScript)) {
            jobs.push_back({architecture + L"/script/" + file.stem().wstring(), architecture, file, true});
        }
    }
    std::erase_if(jobs, [&](const Job& job) { return job.name.find(text) == std::wstring::npos; });
    return jobs;
}

std::vector<Case> RunJob(const fs::path& kit, const fs::path& scratch, const Job& job, std::string& output) {
    if (::GetACP() != kTestedCodePage) {
        return {{"(all)", Outcome::kSkipped,
                 "the tests expect the code page 1252, and this Windows has " + std::to_string(::GetACP())}};
    }
    const fs::path folder = scratch / job.name;
    const fs::path build = kit / job.architecture;
    const fs::path company = build / L"refhost" / L"company.exe";
    const fs::path log = scratch / L"output.txt";
    fs::create_directories(folder);
    const auto environment = EnvironmentOf(build, folder);

    const auto import = {std::wstring(L"import"), (kit / L"examples" / L"riverside.xml").wstring(),
                         (folder / kCompanyFile).wstring()};
    std::vector<Case> cases = RunAndRead(job, {company, import, folder, log, environment}, output, &ReadStatus);
    if (!cases.empty()) {
        return cases;
    }
    if (!job.is_script) {
        return RunAndRead(job, {job.file, {}, folder, log, environment}, output, &ReadGoogleTest);
    }
    Command command = {build / L"refhost" / L"run.exe", {}, folder, log, environment};
    command.arguments = {(job.file.parent_path() / L"harness.js").wstring(), job.file.wstring()};
    command.environment[L"OSKERIN_SCRIPT_FILE"] = (folder / L"page-scripts.txt").wstring();
    cases = RunAndRead(job, command, output, &ReadPageScript);
    // Whatever a page did, the books that it leaves are true.
    const auto check = {std::wstring(L"check"), (folder / kCompanyFile).wstring()};
    for (const Case& test : RunAndRead(job, {company, check, folder, log, environment}, output, &ReadStatus)) {
        cases.push_back(test);
    }
    return cases;
}

}  // namespace paylodge::kit
