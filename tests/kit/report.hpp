// What a run of the kit shows and writes down.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/kit/results.hpp"

namespace paylodge::kit {

// Prints a line for each program as it ends and keeps the whole story in a log file, to be sent in.
class Report {
  public:
    // Begins the log with a line about the machine. Throws std::runtime_error when the log cannot be written.
    Report(const std::filesystem::path& log, const std::string& machine);

    // `output` is what the program printed; the log has it when something failed.
    void Add(const std::string& program, const std::vector<Case>& cases, const std::string& output);
    // Prints the reasons of what was skipped, the names of what failed, and the counts. Whether the run was good:
    // something passed, and nothing failed.
    [[nodiscard]] bool Finish();

  private:
    void Say(const std::string& line);

    std::ofstream log_;
    Counts counts_;
    std::vector<std::string> failed_;
    std::vector<std::string> skipped_;
};

// A line about the machine: version and kind of Windows, code page, language.
[[nodiscard]] std::string DescribeMachine();

}  // namespace paylodge::kit
