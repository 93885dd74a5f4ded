#include "tests/kit/report.hpp"

#include <windows.h>

#include <cstdio>
#include <stdexcept>

namespace paylodge::kit {
namespace {

// A function of ntdll.dll that its header does not declare.
template <class Function>
[[nodiscard]] Function* FindSystemFunction(const char* name) noexcept {
    const FARPROC found = ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), name);
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(found));
}

}  // namespace

Report::Report(const std::filesystem::path& log, const std::string& machine) : log_(log, std::ios::binary) {
    if (!log_) {
        throw std::runtime_error("the log test-log.txt cannot be written: unpack the kit into a folder of your own");
    }
    Say(machine);
}

void Report::Say(const std::string& line) {
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
    log_ << line << "\r\n" << std::flush;
}

void Report::Add(const std::string& program, const std::vector<Case>& cases, const std::string& output) {
    Counts counts;
    for (const Case& test : cases) {
        counts.Add(test);
        counts_.Add(test);
    }
    Say(program + std::string(program.size() < 40 ? 40 - program.size() : 1, ' ') + CountText(counts));
    for (const Case& test : cases) {
        const std::string name = program + '/' + test.name;
        if (test.outcome == Outcome::kFailed) {
            failed_.push_back(name);
            Say("FAILED " + name + "\n    " + test.text);
        } else if (test.outcome == Outcome::kSkipped) {
            skipped_.push_back(name + ": " + test.text);
        }
    }
    if (counts.failed > 0) {
        log_ << "--- all that " << program << " printed\r\n" << output << "---\r\n" << std::flush;
    }
}

bool Report::Finish() {
    for (const std::string& text : skipped_) {
        Say("skipped " + text);
    }
    for (const std::string& name : failed_) {
        Say("failed " + name);
    }
    Say(CountText(counts_));
    return counts_.failed == 0 && counts_.passed > 0;
}

std::string DescribeMachine() {
    OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof version;
    // GetVersionEx tells programs without a manifest that they run on an older system.
    if (auto* const get = FindSystemFunction<LONG WINAPI(OSVERSIONINFOW*)>("RtlGetVersion")) {
        get(&version);
    }
    SYSTEM_INFO system = {};
    ::GetNativeSystemInfo(&system);
    char text[200];
    std::snprintf(text, sizeof text, "Windows %lu.%lu.%lu, processor kind %u, code page %u, language 0x%04x",
                  version.dwMajorVersion, version.dwMinorVersion, version.dwBuildNumber,
                  static_cast<unsigned>(system.wProcessorArchitecture), ::GetACP(),
                  static_cast<unsigned>(::GetUserDefaultUILanguage()));
    std::string line = text;
    if (auto* const get = FindSystemFunction<const char * CDECL()>("wine_get_version")) {
        line += std::string(", Wine ") + get();
    }
    return line;
}

}  // namespace paylodge::kit
