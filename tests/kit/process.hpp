// Runs a program to its end.
#pragma once

#include <windows.h>

#include <filesystem>
#include <map>
#include <string>
#include <variant>

#include "tests/kit/results.hpp"

namespace paylodge::kit {

struct Command {
    std::filesystem::path program;
    // Each in double quotes on the command line; none has any in it.
    std::vector<std::wstring> arguments;
    std::filesystem::path folder;
    // Takes what the program prints.
    std::filesystem::path log;
    // Beside those of this process.
    std::map<std::wstring, std::wstring> environment;
};

// Ends the running program, and with it whatever it has started; no other starts afterwards. Any thread may call it.
void StopPrograms() noexcept;
[[nodiscard]] bool AreProgramsStopped() noexcept;

// How the program ended, or the error number of Windows when it could not be started. The processes that it left behind
// are ended.
[[nodiscard]] std::variant<Ending, DWORD> Run(const Command& command, DWORD seconds);

}  // namespace paylodge::kit
