"""No test of the project checks nothing, no file of them is too long, and tools/testrun/assertions.py would find one that does."""

from __future__ import annotations

import sys
import tempfile
import unittest
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(TOP / "tools" / "testrun"))

from assertions import problems  # noqa: E402


class ThisCheckout(unittest.TestCase):
    def test_has_no_test_that_checks_nothing(self) -> None:
        self.assertEqual(problems(TOP), [])

    def test_has_no_test_file_of_more_than_600_lines(self) -> None:
        long = [f for f in (TOP / "tests").rglob("*_tests.cpp") if f.read_text(encoding="utf-8").count("\n") > 600]
        self.assertEqual(long, [])


class Check(unittest.TestCase):
    def found(self, name: str, text: str) -> list[str]:
        """What it finds in a file of tests, without the place."""
        with tempfile.TemporaryDirectory() as folder:
            file = Path(folder) / "tests" / name
            file.parent.mkdir()
            file.write_text(text)
            return [line.removeprefix(f"tests/{name}:") for line in problems(Path(folder))]

    def found_in(self, *bodies: str) -> list[str]:
        """What it finds in C++ tests with these bodies."""
        tests = (f"TEST_F(Suite, Test{number}) {{{body}}}\n" for number, body in enumerate(bodies))
        return self.found("some_tests.cpp", "".join(tests))

    def test_names_file_line_and_test(self) -> None:
        self.assertEqual(self.found_in(" EXPECT_EQ(1, One()); ", " Run(); "), ["2: Suite.Test1 asserts nothing"])

    def test_takes_every_kind_of_assertion(self) -> None:
        self.assertEqual(
            self.found_in(
                "if (a) { ASSERT_TRUE(b); }",
                "EXPECT_HRESULT(S_OK, Run());",
                "EXPECT_CALL(fake, Run());",
                "ADD_FAILURE() << 1;",
                "GTEST_SKIP() << 1;",
                "ExpectRefused(file);",
                "ExpectNotLoaded<Type>(file);",
            ),
            [],
        )

    def test_does_not_take_comments_and_texts_for_code(self) -> None:
        bodies = ("// EXPECT_EQ(1, 2);\n", "/* EXPECT_EQ(1, 2); */", 'Run("EXPECT_EQ(1, 2)");', 'Run(R"(EXPECT_EQ(1))");')
        self.assertEqual(len(self.found_in(*bodies)), len(bodies))
        self.assertEqual(self.found_in("Run('}', \"}\" /* } */, 1'000); EXPECT_TRUE(a);"), [])

    def test_takes_assertions_of_other_tests_for_theirs(self) -> None:
        self.assertEqual(self.found_in("Run();", "EXPECT_TRUE(a);"), ["1: Suite.Test0 asserts nothing"])

    def test_finds_a_return_before_the_first_assertion(self) -> None:
        self.assertEqual(
            self.found_in("if (!applies) { return; } EXPECT_TRUE(a);"), ["1: Suite.Test0 may return before it asserts"]
        )
        self.assertEqual(self.found_in("EXPECT_TRUE(a); if (b) { return; } EXPECT_TRUE(c);"), [])

    def test_reads_page_scripts(self) -> None:
        script = 'test("a sale", function () {\n    equal(1, 1);\n});\ntest("a \\"day\\"", function () {\n    run("equal(");\n});\n'
        self.assertEqual(self.found("day.js", script), ['4: a \\"day\\" asserts nothing'])

    def test_reads_python_tests(self) -> None:
        tests = (
            "class Some(TestCase):\n"
            "    def test_one(self):\n        self.assertTrue(a)\n"
            "    def test_two(self):\n        self.check_all()\n"
            "    def test_three(self):\n        subprocess.check_call(a)\n"
        )
        self.assertEqual(self.found("test_some.py", tests), ["6: test_three asserts nothing"])


if __name__ == "__main__":
    unittest.main()
