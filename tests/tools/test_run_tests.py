"""The test runner against programs that pass, fail, skip, crash, hang, or print nonsense, and what a filter selects."""

from __future__ import annotations

import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

TESTRUN = Path(__file__).resolve().parents[2] / "tools" / "testrun"
sys.path.insert(0, str(TESTRUN))

from results import Case, Ending, Outcome, read_gtest, read_gtest_list, read_lines, read_status, shorten  # noqa: E402

REPORT = """<?xml version="1.0" encoding="UTF-8"?>
<testsuites tests="4" name="AllTests">
  <testsuite name="Sum" tests="3">
    <testcase name="Adds" status="run" result="completed" classname="Sum" />
    <testcase name="Subtracts" status="run" result="completed" classname="Sum">
      <failure message="short"><![CDATA[sum.cpp:7
Expected <1> & more]]></failure>
      <failure message="short"><![CDATA[sum.cpp:9]]></failure>
    </testcase>
    <testcase name="Divides" status="run" result="skipped" classname="Sum">
      <skipped message="x"><![CDATA[sum.cpp:12
no numbers here]]></skipped>
    </testcase>
    <testcase name="DISABLED_Off" status="notrun" result="suppressed" classname="Sum" />
  </testsuite>
  <testsuite name="Some/Sum" tests="1">
    <testcase name="Odd/0" status="run" result="completed" classname="Some/Sum" />
  </testsuite>
</testsuites>
"""

LIST = """<?xml version="1.0" encoding="UTF-8"?>
<testsuites tests="2" name="AllTests">
  <testsuite name="Sum" tests="2">
    <testcase name="Adds" file="./tests/unit/sum_tests.cpp" line="3" />
    <testcase name="Takes" file="other.cpp" line="9" />
  </testsuite>
</testsuites>
"""

BROKEN_LOG = """[==========] Running 5 tests from 1 test suite.
[ RUN      ] Sum.Adds
[       OK ] Sum.Adds (0 ms)
[ RUN      ] Sum.Subtracts
sum.cpp:7: Failure
printed without a line end[  FAILED  ] Sum.Subtracts, where GetParam() = 7 (0 ms)
[ RUN      ] Sum.Divides
sum.cpp:12: Skipped
no numbers here
[  SKIPPED ] Sum.Divides (0 ms)
[ RUN      ] Sum.Falls
Unhandled exception: page fault
"""


def is_running(pid: int) -> bool:
    """A process that has ended and that nobody has asked for is not running."""
    try:
        return Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()[0] != "Z"
    except FileNotFoundError:
        return False


def has_ended(pid: int) -> bool:
    """On a busy machine a process that was killed is there for a moment longer."""
    give_up = time.monotonic() + 10
    while is_running(pid) and time.monotonic() < give_up:
        time.sleep(0.02)
    return not is_running(pid)


class Folder(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)


class GTestResults(Folder):
    def read(self, ending: Ending, report: str | None = None) -> list[Case]:
        file = self.folder / "report.xml"
        if report is not None:
            file.write_text(report)
        return read_gtest(ending, file)

    def test_reads_each_outcome_from_the_report(self) -> None:
        cases = self.read(Ending("", 1), REPORT)
        self.assertEqual(
            cases,
            [
                Case("Sum.Adds", Outcome.PASSED),
                Case("Sum.Subtracts", Outcome.FAILED, "sum.cpp:7\nExpected <1> & more\nsum.cpp:9"),
                Case("Sum.Divides", Outcome.SKIPPED, "no numbers here"),
                Case("Sum.DISABLED_Off", Outcome.SKIPPED, "disabled"),
                Case("Some/Sum.Odd/0", Outcome.PASSED),
            ],
        )

    def test_counts_what_ended_before_a_crash_and_names_the_case_that_crashed(self) -> None:
        cases = self.read(Ending(BROKEN_LOG, 5))
        self.assertEqual(
            [(case.name, case.outcome) for case in cases],
            [
                ("Sum.Adds", Outcome.PASSED),
                ("Sum.Subtracts", Outcome.FAILED),
                ("Sum.Divides", Outcome.SKIPPED),
                ("Sum.Falls", Outcome.FAILED),
            ],
        )
        self.assertEqual(cases[1].text, "sum.cpp:7: Failure")
        self.assertEqual(cases[2].text, "no numbers here")
        self.assertEqual(cases[3].text, "the program ended with exit code 5\nUnhandled exception: page fault")

    def test_names_the_case_that_hangs(self) -> None:
        cases = self.read(Ending("[ RUN      ] Sum.Waits\n", -9, time_limit_reached=2))
        self.assertEqual(cases, [Case("Sum.Waits", Outcome.FAILED, "the program did not end within 2 s")])

    def test_a_program_that_does_not_start_is_a_failure(self) -> None:
        cases = self.read(Ending("cannot load a library\n", 53))
        text = "the program ended with exit code 53\ncannot load a library"
        self.assertEqual(cases, [Case("(start of program)", Outcome.FAILED, text)])

    def test_a_bad_end_after_good_tests_is_a_failure(self) -> None:
        report = '<testsuites><testsuite name="Sum"><testcase name="Adds"/></testsuite></testsuites>'
        for ending in (Ending("leak", 23), Ending("", 0, time_limit_reached=1)):
            with self.subTest(ending=ending):
                cases = self.read(ending, report)
                self.assertEqual([case.outcome for case in cases], [Outcome.PASSED, Outcome.FAILED])
                self.assertEqual(cases[1].name, "(end of program)")

    def test_a_failure_outside_any_test_counts(self) -> None:
        case = '<testcase name=""><failure>f</failure></testcase>'
        report = f'<testsuites><testsuite name="Sum">{case}</testsuite></testsuites>'
        self.assertEqual(self.read(Ending("", 1), report), [Case("Sum.(set-up)", Outcome.FAILED, "f")])

    def test_a_program_without_tests_fails(self) -> None:
        self.assertEqual([case.outcome for case in self.read(Ending("", 0), "<testsuites/>")], [Outcome.FAILED])

    def test_reads_names_and_sources_from_a_list(self) -> None:
        file = self.folder / "report.xml"
        file.write_text(LIST)
        self.assertEqual(read_gtest_list(file), [("Sum.Adds", "./tests/unit/sum_tests.cpp"), ("Sum.Takes", "other.cpp")])

    def test_a_damaged_list_is_an_error(self) -> None:
        file = self.folder / "report.xml"
        file.write_text(LIST[:-20])
        self.assertRaises(ValueError, read_gtest_list, file)

    def test_a_damaged_report_does_not_pass(self) -> None:
        cases = self.read(Ending("[ RUN      ] Sum.Adds\n[       OK ] Sum.Adds (0 ms)\n", 0), "<testsuites><testsuite")
        self.assertEqual([case.outcome for case in cases], [Outcome.PASSED, Outcome.FAILED])


class LineResults(unittest.TestCase):
    def test_reads_each_outcome(self) -> None:
        log = "noise\r\nPASS a\r\nFAIL b: why: so\r\n    more\r\n      indented\r\nSKIP c: no host\r\nEND\r\n"
        self.assertEqual(
            read_lines(Ending(log, 0)),
            [
                Case("a", Outcome.PASSED),
                Case("b", Outcome.FAILED, "why: so\nmore\n  indented"),
                Case("c", Outcome.SKIPPED, "no host"),
            ],
        )

    def test_a_missing_end_is_a_failure_that_tells_what_came_last(self) -> None:
        cases = read_lines(Ending("PASS a\nPASS b\n", 0))
        self.assertEqual([case.outcome for case in cases], [Outcome.PASSED, Outcome.PASSED, Outcome.FAILED])
        self.assertIn("last came b", cases[2].text)

    def test_nothing_at_all_is_a_failure(self) -> None:
        for log in ("", "END\n", "something else\n"):
            with self.subTest(log=log):
                self.assertEqual([case.outcome for case in read_lines(Ending(log, 0))], [Outcome.FAILED])

    def test_a_hang_is_a_failure(self) -> None:
        cases = read_lines(Ending("PASS a\n", -9, time_limit_reached=3))
        self.assertEqual(cases[1].outcome, Outcome.FAILED)
        self.assertIn("did not end within 3 s", cases[1].text)

    def test_an_exit_code_that_no_case_explains_is_a_failure(self) -> None:
        self.assertEqual(len(read_lines(Ending("PASS a\nEND\n", 1))), 2)
        self.assertEqual(len(read_lines(Ending("FAIL a: x\nEND\n", 1))), 1)


class StatusResults(unittest.TestCase):
    def test_only_success_passes(self) -> None:
        self.assertEqual(read_status(Ending("", 0), "sources"), [Case("sources", Outcome.PASSED)])
        self.assertEqual(read_status(Ending("bad.cpp\n", 1), "sources")[0].outcome, Outcome.FAILED)
        self.assertEqual(read_status(Ending("", 0, time_limit_reached=1), "sources")[0].outcome, Outcome.FAILED)


class Texts(unittest.TestCase):
    def test_a_long_log_keeps_its_end(self) -> None:
        self.assertEqual(shorten("1\n2\n3\n4\n", shown_lines=2), "...\n3\n4")

    def test_a_backtrace_keeps_what_stands_before_the_module_list(self) -> None:
        self.assertEqual(shorten("Backtrace:\n=>0 main\nModules:\nModule a\n"), "Backtrace:\n=>0 main")


class WholeRuns(Folder):
    """run_tests.py itself, over a checkout whose native test programs are small scripts."""

    def add_program(self, name: str, body: str) -> None:
        program = self.folder / "build" / "native" / "tests" / name
        program.parent.mkdir(parents=True, exist_ok=True)
        program.write_text('#!/bin/bash\nreport=${1#--gtest_output=xml:}\n' + body)
        program.chmod(0o755)

    def add_passing_program(self, name: str) -> None:
        xml = '<testsuites><testsuite name="S"><testcase name="Good"/></testsuite></testsuites>'
        self.add_program(name, f"echo '{xml}' >\"$report\"\n")

    def run_tests(self, *arguments: str) -> subprocess.CompletedProcess[str]:
        return subprocess.run(self.command(*arguments), capture_output=True, text=True, check=False, timeout=60)

    def command(self, *arguments: str) -> list[str]:
        return [sys.executable, str(TESTRUN / "run_tests.py"), "--root", str(self.folder), *arguments]

    def test_success(self) -> None:
        self.add_passing_program("good_tests")
        result = self.run_tests("native")
        self.assertEqual(result.stdout.splitlines()[-1], "1 passed, 0 failed")
        self.assertEqual(result.returncode, 0)

    def test_a_failure_shows_its_name_and_text_and_fails_the_run(self) -> None:
        self.add_passing_program("good_tests")
        self.add_program("loud_tests", f"cat >\"$report\" <<'END'\n{REPORT}END\nexit 1\n")
        result = self.run_tests("native")
        lines = result.stdout.splitlines()
        self.assertEqual(lines[-1], "3 passed, 1 failed, 2 skipped")
        self.assertIn("FAILED native/loud_tests/Sum.Subtracts", lines)
        self.assertIn("    Expected <1> & more", lines)
        self.assertIn("  native/loud_tests/Sum.Divides: no numbers here", lines)
        self.assertEqual(result.returncode, 1)

    def test_a_crash_fails_the_run_and_the_others_still_run(self) -> None:
        self.add_program("a_tests", "echo '[ RUN      ] S.Falls'\nkill -SEGV $$\n")
        self.add_passing_program("b_tests")
        result = self.run_tests("native")
        self.assertIn("FAILED native/a_tests/S.Falls\n    the program ended by signal 11\n", result.stdout)
        self.assertEqual(result.stdout.splitlines()[-1], "1 passed, 1 failed")
        self.assertEqual(result.returncode, 1)

    def test_a_hang_ends_at_the_time_limit(self) -> None:
        self.add_program("a_tests", "echo '[ RUN      ] S.Waits'\nexec sleep 50\n")
        result = self.run_tests("native", "--time-limit", "0.3")
        self.assertIn("FAILED native/a_tests/S.Waits\n    the program did not end within 0.3 s\n", result.stdout)
        self.assertEqual(result.returncode, 1)

    def test_an_old_report_is_not_taken_for_a_new_one(self) -> None:
        self.add_passing_program("a_tests")
        self.run_tests("native")
        self.add_program("a_tests", "exit 0\n")
        result = self.run_tests("native")
        self.assertEqual(result.stdout.splitlines()[-1], "0 passed, 1 failed")

    def test_a_program_that_cannot_be_started_is_a_failure(self) -> None:
        self.add_passing_program("a_tests")
        (self.folder / "build/native/tests/a_tests").chmod(0o644)
        result = self.run_tests("native")
        self.assertIn("could not be started", result.stdout)
        self.assertEqual(result.returncode, 1)

    def add_listing_program(self, name: str) -> None:
        """Lists two tests, and reports as passed what it is told to run."""
        self.add_program(
            name,
            f"""
            if [ "$1" = --gtest_list_tests ]; then
                cat >"${{2#--gtest_output=xml:}}" <<'END'\n{LIST}END
                exit
            fi
            names=$(sed 's/--gtest_filter=//; s/:/ /g' "${{2#--gtest_flagfile=}}")
            for name in $names; do cases="$cases<testcase name='${{name#*.}}'/>"; done
            echo "<testsuites><testsuite name='Sum'>$cases</testsuite></testsuites>" >"$report"
            """,
        )

    def test_a_filter_runs_what_has_the_text_in_its_name_in_any_letter_case(self) -> None:
        self.add_listing_program("a_tests")
        for text in ("Adds", "adds", "sum.a", "NATIVE/A_TESTS/SUM.ADDS"):
            with self.subTest(text=text):
                result = self.run_tests("native", "--filter", text)
                self.assertEqual(result.stdout.splitlines()[-1], "1 passed, 0 failed")
                self.assertEqual((self.folder / "build/test-results/native/a_tests.flags").read_text().strip(),
                                 "--gtest_filter=Sum.Adds")

    def test_a_filter_runs_the_tests_of_a_source(self) -> None:
        self.add_listing_program("a_tests")
        for text in ("other", "unit/sum.cpp", "Other.cpp"):
            with self.subTest(text=text):
                result = self.run_tests("native", "--filter", text)
                self.assertEqual(result.stdout.splitlines()[-1], "1 passed, 0 failed")

    def test_a_filter_with_the_name_of_a_program_runs_all_of_it(self) -> None:
        self.add_passing_program("a_tests")
        self.add_listing_program("b_tests")
        result = self.run_tests("native", "--filter", "A_Tests")
        self.assertEqual(result.stdout.splitlines()[-1], "1 passed, 0 failed")

    def test_a_program_that_does_not_list_its_tests_is_a_failure(self) -> None:
        self.add_program("a_tests", "exit 3\n")
        result = self.run_tests("native", "--filter", "Sum")
        self.assertIn("did not list its tests", result.stdout)
        self.assertEqual(result.returncode, 1)

    def test_a_run_without_tests_is_not_a_success(self) -> None:
        result = self.run_tests("native")
        self.assertEqual(result.stdout, "There is no test\n0 passed, 0 failed\n")
        self.assertEqual(result.returncode, 1)

    def test_a_filter_that_finds_nothing_says_what_is_near(self) -> None:
        source = self.folder / "tests/unit/payment_tests.cpp"
        source.parent.mkdir(parents=True)
        source.write_text("TEST_F(SavePayment, KeepsCents) {}\n")
        result = self.run_tests("native", "--filter", "savepaymnt")
        expected = "There is no test with 'savepaymnt' in its name or in that of its file; near are: SavePayment"
        self.assertIn(expected, result.stdout)
        self.assertEqual(result.returncode, 1)

    def test_ctrl_c_ends_the_run_and_everything_that_it_runs(self) -> None:
        self.add_program("a_tests", "sleep 50 &\necho $! >\"$report\"\nwait\n")
        self.add_passing_program("b_tests")
        pid_file = self.folder / "build/test-results/native/a_tests.xml"
        run = subprocess.Popen(
            self.command("native"),
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            # Also when these tests run where nobody can press it.
            preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL),
        )
        self.addCleanup(run.communicate)
        self.addCleanup(run.kill)
        while not pid_file.exists() or not pid_file.read_text().strip():
            self.assertIsNone(run.poll())
            time.sleep(0.02)
        run.send_signal(signal.SIGINT)
        output, _ = run.communicate(timeout=20)
        self.assertEqual(output, "")
        self.assertEqual(run.returncode, 130)
        self.assertTrue(has_ended(int(pid_file.read_text())))

    def test_an_unknown_kind_is_refused(self) -> None:
        result = self.run_tests("x65")
        self.assertIn("there is no kind of test 'x65'", result.stderr)
        self.assertEqual(result.returncode, 2)


if __name__ == "__main__":
    unittest.main()
