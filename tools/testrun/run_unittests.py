"""Runs the tests of a folder, or of one file in it, with Python's unittest and prints the lines that run_tests.py reads."""

from __future__ import annotations

import sys
import unittest


class LineResult(unittest.TestResult):
    """Prints PASS, FAIL or SKIP for each test."""

    def addSuccess(self, test: unittest.TestCase) -> None:
        super().addSuccess(test)
        print(f"PASS {short_name(test)}", flush=True)

    def addFailure(self, test: unittest.TestCase, err: object) -> None:
        super().addFailure(test, err)  # type: ignore[arg-type]
        print_failure(test, self.failures[-1][1])

    def addError(self, test: unittest.TestCase, err: object) -> None:
        super().addError(test, err)  # type: ignore[arg-type]
        print_failure(test, self.errors[-1][1])

    def addSubTest(self, test: unittest.TestCase, subtest: unittest.TestCase, err: object) -> None:
        super().addSubTest(test, subtest, err)  # type: ignore[arg-type]
        if err is not None:
            print_failure(subtest, (self.failures + self.errors)[-1][1])

    def addSkip(self, test: unittest.TestCase, reason: str) -> None:
        super().addSkip(test, reason)
        print(f"SKIP {short_name(test)}: {reason}", flush=True)


def short_name(test: unittest.TestCase) -> str:
    """Class and method; what cannot be loaded has only a name of unittest's own."""
    return ".".join(test.id().split(".")[-2:])


def print_failure(test: unittest.TestCase, text: str) -> None:
    print(f"FAIL {short_name(test)}: " + text.rstrip().replace("\n", "\n    "), flush=True)


def main() -> int:
    if len(sys.argv) not in (2, 3):
        print("usage: run_unittests.py FOLDER [FILE]", file=sys.stderr)
        return 2
    result = LineResult()
    unittest.defaultTestLoader.discover(sys.argv[1], *sys.argv[2:]).run(result)
    print("END")
    return 0 if result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main())
