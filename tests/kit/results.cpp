#include "tests/kit/results.hpp"

#include <algorithm>
#include <optional>

namespace paylodge::kit {
namespace {

constexpr std::string_view kRun = "[ RUN      ] ";
constexpr std::string_view kEndOfProgram = "(end of program)";

// The next line of the text, which is taken from it.
[[nodiscard]] std::string_view TakeLine(std::string_view& text) {
    const size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    return line;
}

[[nodiscard]] std::string Describe(const Ending& ending) {
    return ending.was_stopped ? "the program did not end within its time limit"
                              : "the program ended with exit code " + std::to_string(ending.exit_code);
}

[[nodiscard]] bool EndedBadly(const Ending& ending) noexcept { return ending.was_stopped || ending.exit_code != 0; }

[[nodiscard]] bool AnyFailed(const std::vector<Case>& cases) {
    return std::ranges::find(cases, Outcome::kFailed, &Case::outcome) != cases.end();
}

// How a line says that a test has ended; what the test printed without a line end may stand before it.
[[nodiscard]] std::optional<Outcome> EndOf(std::string_view line, std::string_view test) {
    const struct {
        std::string_view mark;
        Outcome outcome;
    } marks[] = {
        {"[       OK ] ", Outcome::kPassed}, {"[  FAILED  ] ", Outcome::kFailed}, {"[  SKIPPED ] ", Outcome::kSkipped}};
    for (const auto& [mark, outcome] : marks) {
        if (const size_t at = line.find(mark); at != std::string_view::npos) {
            const std::string_view rest = line.substr(at + mark.size());
            // A space before the time, or a comma before the parameter.
            if (rest.starts_with(test) && (rest.size() == test.size() || rest.find_first_of(" ,") == test.size())) {
                return outcome;
            }
        }
    }
    return std::nullopt;
}

[[nodiscard]] std::string Trimmed(std::string text) {
    text.erase(text.find_last_not_of(" \n") + 1);
    return text;
}

// The reason of a skipped test, which GoogleTest prints below a line with the place in the source.
[[nodiscard]] std::string Reason(std::string_view text) {
    std::string reason;
    while (!text.empty()) {
        const std::string_view line = TakeLine(text);
        if (!line.empty() && !line.ends_with("Skipped")) {
            reason += (reason.empty() ? "" : " ") + std::string(line);
        }
    }
    return reason.empty() ? "no reason given" : reason;
}

}  // namespace

void Counts::Add(const Case& test) noexcept {
    int* const counts[] = {&passed, &failed, &skipped};
    ++*counts[static_cast<size_t>(test.outcome)];
}

std::string CountText(const Counts& counts) {
    std::string text = std::to_string(counts.passed) + " passed, " + std::to_string(counts.failed) + " failed";
    if (counts.skipped > 0) {
        text += ", " + std::to_string(counts.skipped) + " skipped";
    }
    return text;
}

std::vector<Case> ReadGoogleTest(std::string_view log, const Ending& ending) {
    std::vector<Case> cases;
    std::string running;
    std::string text;
    while (!log.empty()) {
        const std::string_view line = TakeLine(log);
        if (const size_t at = line.find(kRun); at != std::string_view::npos) {
            running = line.substr(at + kRun.size());
            text.clear();
            continue;
        }
        const auto outcome = running.empty() ? std::nullopt : EndOf(line, running);
        if (!outcome) {
            text += std::string(line) + '\n';
            continue;
        }
        const bool is_passed = *outcome == Outcome::kPassed;
        const bool is_skipped = *outcome == Outcome::kSkipped;
        cases.push_back({running, *outcome, is_passed ? "" : is_skipped ? Reason(text) : Trimmed(text)});
        running.clear();
        text.clear();
    }
    if (!running.empty()) {
        cases.push_back({running, Outcome::kFailed, Trimmed(text + Describe(ending))});
    } else if (EndedBadly(ending) && !AnyFailed(cases)) {
        cases.push_back({std::string(kEndOfProgram), Outcome::kFailed, Trimmed(text + Describe(ending))});
    } else if (cases.empty()) {
        cases.push_back({std::string(kEndOfProgram), Outcome::kFailed, Trimmed(text + "the program has no tests")});
    }
    return cases;
}

std::vector<Case> ReadPageScript(std::string_view log, const Ending& ending) {
    std::vector<Case> cases;
    bool has_end = false;
    std::string rest;
    const auto read = [&cases](std::string_view line, std::string_view word, Outcome outcome) {
        if (!line.starts_with(word)) {
            return false;
        }
        line.remove_prefix(word.size());
        const size_t colon = outcome == Outcome::kPassed ? std::string_view::npos : line.find(": ");
        const std::string_view why = colon == std::string_view::npos ? "" : line.substr(colon + 2);
        cases.push_back({std::string(line.substr(0, colon)), outcome, std::string(why)});
        return true;
    };
    while (!log.empty()) {
        const std::string_view line = TakeLine(log);
        if (read(line, "PASS ", Outcome::kPassed) || read(line, "FAIL ", Outcome::kFailed) ||
            read(line, "SKIP ", Outcome::kSkipped)) {
            continue;
        }
        if (line.starts_with("    ") && !cases.empty() && cases.back().outcome == Outcome::kFailed) {
            cases.back().text += '\n' + std::string(line.substr(4));
        } else if (line == "END") {
            has_end = true;
        } else {
            rest += std::string(line) + '\n';
        }
    }
    if (!has_end || (EndedBadly(ending) && !AnyFailed(cases))) {
        cases.push_back({std::string(kEndOfProgram), Outcome::kFailed, rest + Describe(ending) + " before its end"});
    } else if (cases.empty()) {
        cases.push_back({std::string(kEndOfProgram), Outcome::kFailed, rest + "the script has no tests"});
    }
    return cases;
}

}  // namespace paylodge::kit
