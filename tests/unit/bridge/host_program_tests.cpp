// The example of a host program, run as a process of its own beside the component and the reference host.

#include <windows.h>

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "com/module.hpp"
#include "com/owner.hpp"
#include "tests/unit/bridge/script_page.hpp"

namespace paylodge::test {
namespace {

struct Outcome {
    DWORD exit_code = ~0U;
    std::string output;
};

// The folder in which everything is built, one above that of the test programs.
[[nodiscard]] std::wstring BuildFolder() {
    const std::wstring program = Module::Path();
    const size_t folder = program.find_last_of(L'\\');
    return program.substr(0, program.find_last_of(L'\\', folder - 1) + 1);
}

[[nodiscard]] std::string ReadAll(HANDLE pipe) {
    std::string text;
    std::array<char, 4096> buffer;
    DWORD size = 0;
    while (::ReadFile(pipe, buffer.data(), static_cast<DWORD>(buffer.size()), &size, nullptr) && size > 0) {
        text.append(buffer.data(), size);
    }
    std::erase(text, '\r');
    return text;
}

[[nodiscard]] Outcome Run(std::wstring command) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    Handle output;
    Handle end_of_child;
    EXPECT_TRUE(::CreatePipe(output.Receive(), end_of_child.Receive(), &inherited, 0));
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = end_of_child.Get();
    start.hStdError = end_of_child.Get();
    PROCESS_INFORMATION child = {};
    EXPECT_TRUE(::CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &child));
    const Handle process(child.hProcess);
    const Handle thread(child.hThread);
    end_of_child.Reset();
    Outcome outcome;
    outcome.output = ReadAll(output.Get());
    ::WaitForSingleObject(process.Get(), INFINITE);
    ::GetExitCodeProcess(process.Get(), &outcome.exit_code);
    return outcome;
}

[[nodiscard]] Outcome RunHostProgram(const std::wstring& module) {
    ::SetEnvironmentVariableW(L"OSKERIN_SCRIPT_ECHO", L"1");
    ::SetEnvironmentVariableW(L"OSKERIN_SCRIPT_FILE", nullptr);
    // There the bridge library is found by its name.
    EXPECT_TRUE(::SetCurrentDirectoryW((BuildFolder() + L"refhost").c_str()));
    return Run(L"\"" + BuildFolder() + L"host-program.exe\" \"" + module + L"\"");
}

TEST(HostProgram, PrintsWhatArrivesAsEventAndAsScript) {
    const Outcome outcome = RunHostProgram(BuildFolder() + L"Paylodge.dll");
    EXPECT_EQ(outcome.exit_code, 0U);
    EXPECT_EQ(outcome.output,
              "As events:\n"
              "event 5: \"R-1001\"\n"
              "event 4: \"<Payments/>\" \"2026-01-15\" true\n"
              "event 11: \"[{\"name\":\"Alder Court\"}]\"\n"
              "As scripts:\n"
              "browser=browser-1 bytes=37\n"
              "app.lhProxy.invoiceIdFromLH(\"R-1001\")\n"
              "browser=browser-1 bytes=61\n"
              "app.lhProxy.txnEventFromLH(\"<Payments/>\",\"2026-01-15\",\"true\")\n"
              "browser=browser-1 bytes=63\n"
              "$.fn.CustomerSearchResultFromLH(\"[{\\\"name\\\":\\\"Alder Court\\\"}]\")\n");
}

TEST(HostProgram, ReachesTheFunctionsOfThePage) {
    if (const auto reason = WhyNoScriptEngine()) {
        GTEST_SKIP() << *reason;
    }
    std::istringstream lines(RunHostProgram(BuildFolder() + L"Paylodge.dll").output);
    std::vector<std::string> arrived;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("browser=") && std::getline(lines, line)) {
            arrived.push_back(RunInPage(line));
        }
    }
    EXPECT_EQ(arrived,
              (std::vector<std::string>{"app.lhProxy.invoiceIdFromLH[string R-1001]",
                                        "app.lhProxy.txnEventFromLH[string <Payments/>|string 2026-01-15|string true]",
                                        "$.fn.CustomerSearchResultFromLH[string [{\"name\":\"Alder Court\"}]]"}));
}

TEST(HostProgram, NamesTheMissingModule) {
    const Outcome outcome = RunHostProgram(L"C:\\missing\\Paylodge.dll");
    EXPECT_EQ(outcome.exit_code, 1U);
    EXPECT_EQ(outcome.output, "C:\\missing\\Paylodge.dll cannot be loaded: name its path as the argument\n");
}

}  // namespace
}  // namespace paylodge::test
