// What the kit has to run: the test programs and page scripts of each architecture.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "tests/kit/results.hpp"

namespace paylodge::kit {

inline constexpr std::wstring_view kArchitectures[] = {L"x64", L"x86"};

struct Job {
    // For example x64/com_tests or x86/script/pushes.
    std::wstring name;
    std::wstring architecture;
    // A test program, or a page script.
    std::filesystem::path file;
    bool is_script = false;
};

// The jobs of the kit in this folder that have the text in their names, in their order.
[[nodiscard]] std::vector<Job> FindJobs(const std::filesystem::path& kit, std::wstring_view text);

// Runs the job in a new folder of its own, beneath `scratch`, and appends what it printed to `output`. When this
// Windows runs no programs of the architecture, the one result says so as skipped.
[[nodiscard]] std::vector<Case> RunJob(const std::filesystem::path& kit, const std::filesystem::path& scratch,
                                       const Job& job, std::string& output);

}  // namespace paylodge::kit
