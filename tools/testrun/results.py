"""Test results: what a case is, and how the cases of a program are read from what the program left behind."""

from __future__ import annotations

import re
import xml.etree.ElementTree as ElementTree
from collections.abc import Iterator
from dataclasses import dataclass
from enum import Enum
from pathlib import Path

SHOWN_LINES = 60


class Outcome(Enum):
    PASSED = "passed"
    FAILED = "failed"
    SKIPPED = "skipped"


@dataclass(frozen=True)
class Case:
    """One test; `text` says why it failed or was skipped."""

    name: str
    outcome: Outcome
    text: str = ""


@dataclass(frozen=True)
class Ending:
    """How a program ended, and what it printed until then."""

    log: str
    exit_code: int
    time_limit_reached: float | None = None

    def describe(self) -> str:
        if self.time_limit_reached is not None:
            return f"did not end within {self.time_limit_reached:g} s"
        if self.exit_code < 0:
            return f"ended by signal {-self.exit_code}"
        return f"ended with exit code {self.exit_code}"


def shorten(text: str, shown_lines: int = SHOWN_LINES) -> str:
    """The last lines of a log, without the lists that Wine's debugger prints after a backtrace."""
    lines = text.rstrip().splitlines()
    if "Modules:" in lines:
        lines = lines[: lines.index("Modules:")]
    if len(lines) > shown_lines:
        lines = ["..."] + lines[-shown_lines:]
    return "\n".join(lines)


def read_status(ending: Ending, name: str) -> list[Case]:
    """A program that is one test: it passes when the program succeeds."""
    if ending.exit_code == 0 and ending.time_limit_reached is None:
        return [Case(name, Outcome.PASSED)]
    return [Case(name, Outcome.FAILED, f"{shorten(ending.log)}\n{ending.describe()}".strip())]


# --- GoogleTest programs


def read_gtest(ending: Ending, report: Path) -> list[Case]:
    """The cases of a GoogleTest program: from its report, or from its log when it did not live to write one."""
    try:
        cases = list(read_gtest_report(report.read_text(encoding="utf-8", errors="replace")))
    except (OSError, ElementTree.ParseError):
        return read_broken_gtest_log(ending)
    failed = any(case.outcome is Outcome.FAILED for case in cases)
    if ending.time_limit_reached is not None or (ending.exit_code != 0 and not failed):
        text = f"the program {ending.describe()} after its last test\n{shorten(ending.log)}"
        cases.append(Case("(end of program)", Outcome.FAILED, text))
    if not cases:
        cases.append(Case("(all)", Outcome.FAILED, "the program has no tests"))
    return cases


def read_gtest_report(xml: str) -> Iterator[Case]:
    for suite in ElementTree.fromstring(xml).iter("testsuite"):
        for element in suite.iter("testcase"):
            # A failure outside any test, for example in a suite's own set-up, is a test case without a name.
            name = f"{suite.get('name')}.{element.get('name') or '(set-up)'}"
            yield read_gtest_element(name, element)


def read_gtest_list(report: Path) -> list[tuple[str, str]]:
    """Name and source of each test, from the report of a program that was asked to list them."""
    try:
        suites = ElementTree.parse(report).iter("testsuite")
    except ElementTree.ParseError as error:
        raise ValueError(f"{report}: {error}") from error
    return [
        (f"{suite.get('name')}.{test.get('name')}", test.get("file", ""))
        for suite in suites
        for test in suite.iter("testcase")
    ]


def read_gtest_element(name: str, element: ElementTree.Element) -> Case:
    failures = [failure.text or failure.get("message", "") for failure in element.iter("failure")]
    if failures:
        return Case(name, Outcome.FAILED, "\n".join(failures))
    skipped = element.find("skipped")
    if skipped is not None or element.get("result") == "skipped":
        return Case(name, Outcome.SKIPPED, without_location(skipped.text or "" if skipped is not None else ""))
    if element.get("status") == "notrun":
        return Case(name, Outcome.SKIPPED, "disabled")
    return Case(name, Outcome.PASSED)


def without_location(text: str) -> str:
    """The reason of a skipped test: GoogleTest puts the place in the source on a line before it."""
    lines = text.strip().splitlines()
    if lines and re.search(r":\d+(: Skipped)?$", lines[0]):
        lines = lines[1:]
    return " ".join(line.strip() for line in lines) or "no reason given"


def read_broken_gtest_log(ending: Ending) -> list[Case]:
    """The cases that ended before the program broke off, and a failure in the name of the one that was running."""
    cases: list[Case] = []
    running = ""
    text: list[str] = []
    for line in ending.log.splitlines():
        started = re.search(r"\[ RUN      \] (\S+)", line)
        ended = re.search(r"\[ *(OK|FAILED|SKIPPED) *\] " + re.escape(running) + r"[ ,]", line) if running else None
        if started:
            running, text = started[1], []
        elif ended:
            cases.append(case_from_log(running, ended[1], text))
            running, text = "", []
        else:
            text.append(line)
    where = running or ("(end of program)" if cases else "(start of program)")
    broken = f"the program {ending.describe()}\n{shorten(chr(10).join(text))}".strip()
    return cases + [Case(where, Outcome.FAILED, broken)]


def case_from_log(name: str, word: str, text: list[str]) -> Case:
    if word == "OK":
        return Case(name, Outcome.PASSED)
    if word == "SKIPPED":
        return Case(name, Outcome.SKIPPED, without_location("\n".join(text)))
    return Case(name, Outcome.FAILED, shorten("\n".join(text)))


# --- programs that print a line for each case


def read_lines(ending: Ending) -> list[Case]:
    """The cases of a program that prints `PASS name`, `FAIL name: why`, `SKIP name: why`, and `END` when it is through.

    Lines after a FAIL that are indented by four spaces continue its text. Without the END the program broke off, which
    counts as a failure of its own: the script host does not report an error in its exit code.
    """
    cases: list[Case] = []
    reached_end = False
    for line in ending.log.splitlines():
        case = case_from_line(line)
        if case:
            cases.append(case)
        elif line.startswith("    ") and cases and cases[-1].outcome is Outcome.FAILED:
            last = cases.pop()
            cases.append(Case(last.name, last.outcome, f"{last.text}\n{line[4:]}"))
        reached_end = reached_end or line.strip() == "END"
    problem = find_problem(ending, cases, reached_end)
    return cases + ([Case("(end of program)", Outcome.FAILED, problem)] if problem else [])


def case_from_line(line: str) -> Case | None:
    match = re.match(r"(PASS|FAIL|SKIP) (.*)", line)
    if not match:
        return None
    word, rest = match[1], match[2].rstrip()
    if word == "PASS":
        return Case(rest, Outcome.PASSED)
    name, _, why = rest.partition(": ")
    outcome = Outcome.FAILED if word == "FAIL" else Outcome.SKIPPED
    return Case(name, outcome, why or "no reason given")


def find_problem(ending: Ending, cases: list[Case], reached_end: bool) -> str:
    if ending.time_limit_reached is not None or not reached_end:
        last = cases[-1].name if cases else "nothing"
        return f"the program {ending.describe()} before its end; last came {last}\n{shorten(ending.log)}".strip()
    if not cases:
        return "the program has no tests"
    if ending.exit_code != 0 and all(case.outcome is not Outcome.FAILED for case in cases):
        return f"the program {ending.describe()}\n{shorten(ending.log)}".strip()
    return ""
