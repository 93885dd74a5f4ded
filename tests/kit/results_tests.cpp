#include "tests/kit/results.hpp"

#include <gtest/gtest.h>

namespace paylodge::kit {

void PrintTo(const Case& test, std::ostream* out) {
    *out << test.name << ' ' << static_cast<int>(test.outcome) << ' ' << test.text;
}

namespace {

using Cases = std::vector<Case>;
using enum Outcome;

constexpr std::string_view kTwoTests =
    "[==========] Running 2 tests from 1 test suite.\r\n"
    "[ RUN      ] Suite.First\r\n"
    "[       OK ] Suite.First (0 ms)\r\n"
    "[ RUN      ] Each/Suite.Second/1\r\n"
    "file.cpp:3: Failure\r\n"
    "printed by the test[  FAILED  ] Each/Suite.Second/1, where GetParam() = 7 (2 ms)\r\n"
    "[  FAILED  ] 1 test, listed below:\r\n"
    "[  FAILED  ] Each/Suite.Second/1, where GetParam() = 7\r\n";

TEST(GoogleTestLog, GivesEachTestOnce) {
    EXPECT_EQ(ReadGoogleTest("[ RUN      ] A.B\n[       OK ] A.B (0 ms)\n", {}), (Cases{{"A.B", kPassed, ""}}));
}

TEST(GoogleTestLog, KeepsTheTextOfAFailure) {
    const Cases cases = ReadGoogleTest("[ RUN      ] A.B\nfile.cpp:3: Failure\n[  FAILED  ] A.B (0 ms)\n", {1, false});
    EXPECT_EQ(cases, (Cases{{"A.B", kFailed, "file.cpp:3: Failure"}}));
}

TEST(GoogleTestLog, ReadsParametersAndWhatStandsBeforeTheMark) {
    const Cases cases = ReadGoogleTest(kTwoTests, {1, false});
    ASSERT_EQ(cases.size(), 2U);
    EXPECT_EQ(cases[0], (Case{"Suite.First", kPassed, ""}));
    EXPECT_EQ(cases[1].name, "Each/Suite.Second/1");
    EXPECT_EQ(cases[1].outcome, kFailed);
}

TEST(GoogleTestLog, KeepsTheReasonOfASkippedTest) {
    EXPECT_EQ(ReadGoogleTest("[ RUN      ] A.B\nfile.cpp:9: Skipped\nno engine\n[  SKIPPED ] A.B (0 ms)\n", {}),
              (Cases{{"A.B", kSkipped, "no engine"}}));
}

TEST(GoogleTestLog, BlamesACrashOnTheTestThatRan) {
    const Cases cases = ReadGoogleTest("[ RUN      ] A.B\n[       OK ] A.B (0 ms)\n[ RUN      ] A.C\nlast words\n",
                                       {0xC0000005, false});
    EXPECT_EQ(cases[1], (Case{"A.C", kFailed, "last words\nthe program ended with exit code 3221225477"}));
}

TEST(GoogleTestLog, TakesNoTestForAnotherWithALongerName) {
    const Cases cases = ReadGoogleTest("[ RUN      ] A.B\n[       OK ] A.BC (0 ms)\n", {3, false});
    EXPECT_EQ(cases[0].outcome, kFailed);
}

TEST(GoogleTestLog, BlamesABadEndOnTheProgram) {
    const std::string_view passed = "[ RUN      ] A.B\n[       OK ] A.B (0 ms)\n";
    EXPECT_EQ(ReadGoogleTest(passed, {3, false})[1],
              (Case{"(end of program)", kFailed, "the program ended with exit code 3"}));
    EXPECT_EQ(ReadGoogleTest(passed, {0, true})[1],
              (Case{"(end of program)", kFailed, "the program did not end within its time limit"}));
}

TEST(GoogleTestLog, NeedsATest) {
    EXPECT_EQ(ReadGoogleTest("", {}), (Cases{{"(end of program)", kFailed, "the program has no tests"}}));
}

TEST(PageScriptLog, GivesEachTest) {
    EXPECT_EQ(ReadPageScript("PASS one\r\nFAIL two: why\r\n    and more\r\nSKIP three: not here\r\nEND\r\n", {}),
              (Cases{{"one", kPassed, ""}, {"two", kFailed, "why\nand more"}, {"three", kSkipped, "not here"}}));
}

TEST(PageScriptLog, NeedsItsEnd) {
    const Cases cases = ReadPageScript("PASS one\nrun: no engine\n", {1, false});
    EXPECT_EQ(cases[1],
              (Case{"(end of program)", kFailed, "run: no engine\nthe program ended with exit code 1 before its end"}));
}

TEST(PageScriptLog, NeedsATest) { EXPECT_EQ(ReadPageScript("END\n", {})[0].outcome, kFailed); }

TEST(Counting, CountsEachOutcome) {
    Counts counts;
    for (const Outcome outcome : {kPassed, kPassed, kFailed}) {
        counts.Add({"x", outcome, ""});
    }
    EXPECT_EQ(CountText(counts), "2 passed, 1 failed");
    counts.Add({"x", kSkipped, ""});
    EXPECT_EQ(CountText(counts), "2 passed, 1 failed, 1 skipped");
}

}  // namespace
}  // namespace paylodge::kit
