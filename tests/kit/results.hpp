// What a test program or page script printed, as results. Knows nothing of Windows.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace paylodge::kit {

enum class Outcome { kPassed, kFailed, kSkipped };

// One test; `text` says why it failed or was skipped.
struct Case {
    std::string name;
    Outcome outcome = Outcome::kPassed;
    std::string text;

    friend bool operator==(const Case&, const Case&) = default;
};

// How a program ended.
struct Ending {
    unsigned long exit_code = 0;
    bool was_stopped = false;  // at its time limit
};

struct Counts {
    int passed = 0;
    int failed = 0;
    int skipped = 0;

    void Add(const Case& test) noexcept;
};

// "3 passed, 1 failed", with ", 2 skipped" where there are some.
[[nodiscard]] std::string CountText(const Counts& counts);

// The tests of a program that is built with GoogleTest. A program that ended within a test fails in the name of that
// test, one that ended badly at another place in the name "(end of program)".
[[nodiscard]] std::vector<Case> ReadGoogleTest(std::string_view log, const Ending& ending);

// The tests of a page script: lines PASS, FAIL and SKIP, and END when it is through.
[[nodiscard]] std::vector<Case> ReadPageScript(std::string_view log, const Ending& ending);

}  // namespace paylodge::kit
