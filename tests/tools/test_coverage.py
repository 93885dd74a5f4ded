"""What ./dev coverage makes of the compiler's reports."""

from __future__ import annotations

import subprocess
import sys
import unittest
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(TOP / "tools"))

import coverage  # noqa: E402

SOURCE = "storage/log_text.cpp"


def report(counts: dict[int, int], name: str = SOURCE) -> dict[str, object]:
    lines = [{"line_number": number, "count": count} for number, count in counts.items()]
    return {"files": [{"file": name, "lines": lines}]}


def line_of(text: str) -> int:
    return next(n for n, line in enumerate((TOP / SOURCE).read_text().splitlines(), 1) if line == text)


class Reports(unittest.TestCase):
    def read(self, *reports: dict[str, object]) -> coverage.Counts:
        counts: coverage.Counts = {}
        for one in reports:
            coverage.read_report(one, TOP, counts)
        return counts

    def test_a_line_counts_once_however_often_it_was_compiled(self) -> None:
        counts = self.read(report({1: 0, 2: 0}), report({1: 3, 2: 0}), report({1: 0}, f"{TOP}/{SOURCE}"))
        self.assertEqual(counts, {Path(SOURCE): {1: 3, 2: 0}})
        self.assertIn("storage                      2        1    50.0 %", coverage.table(counts))

    def test_a_closing_brace_counts_for_nothing(self) -> None:
        self.assertEqual(self.read(report({1: 1, line_of("}"): 0})), {Path(SOURCE): {1: 1}})

    def test_only_the_product_is_measured(self) -> None:
        others = ("tests/unit/storage/log_text_tests.cpp", "/usr/include/stdio.h", "nowhere.cpp", "tools/lint.py")
        self.assertEqual(self.read(*(report({1: 1}, name) for name in others)), {})

    def test_missed_lines_are_named_as_ranges(self) -> None:
        counts = self.read(report({1: 0, 2: 0, 3: 0, 5: 1, 7: 0}))
        self.assertEqual(coverage.missed(counts), [f"{SOURCE}: 1-3, 7"])

    def test_rooms_within_rooms_have_rows_of_their_own(self) -> None:
        self.assertEqual(coverage.room(Path("refhost/books/a.cpp")), "refhost/books")
        self.assertEqual(coverage.room(Path("lhxml/a.cpp")), "lhxml")

    def test_the_parts_have_a_sum_each(self) -> None:
        lines = {1: 1, 2: 0}
        counts = {Path(name): lines for name in ("com/a.cpp", "frame/module/b.cpp", "refhost/books/c.cpp", "workbench/server/d.cpp")}
        self.assertEqual(
            ["the component                4        2    50.0 %", "the reference host           2        1    50.0 %",
             "the workbench                2        1    50.0 %", "all                          8        4    50.0 %"],
            coverage.table(counts)[-4:])


class Command(unittest.TestCase):
    def test_refuses_what_it_does_not_know(self) -> None:
        result = subprocess.run([str(TOP / "dev"), "coverage", "x86"], check=False, capture_output=True, text=True, timeout=60)
        self.assertEqual(result.returncode, 2)
        self.assertEqual(result.stderr, "dev: 'coverage' does not know 'x86'; './dev coverage --help' says what it knows\n")


if __name__ == "__main__":
    unittest.main()
