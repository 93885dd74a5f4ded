"""What a filter selects, told from the sources before anything is built."""

from __future__ import annotations

import json
import sys
import tempfile
import unittest
from pathlib import Path

TESTRUN = Path(__file__).resolve().parents[2] / "tools" / "testrun"
sys.path.insert(0, str(TESTRUN))

from filters import Filter  # noqa: E402
from jobs import Jobs, Paths  # noqa: E402

SUM = """
TEST(Sum, Adds) {}
TEST_F(Sum,
       Takes) {}
"""
PARAMETERS = """
#include "tests/support/members.hpp"
TEST_P(EveryMember, IsFound) {}
INSTANTIATE_TEST_SUITE_P(Names, EveryMember, ::testing::ValuesIn(kMembers));
"""
MEMBERS = 'inline constexpr const char* kMembers[] = {"GetAccounts", "GetItems"};\n'


class Names(unittest.TestCase):
    def test_letter_case_does_not_count(self) -> None:
        self.assertTrue(Filter("sUM.a").selects("native/sum_tests/Sum.Adds"))
        self.assertFalse(Filter("sum.b").selects("native/sum_tests/Sum.Adds"))

    def test_nothing_selects_everything(self) -> None:
        self.assertTrue(Filter("").selects("native/sum_tests/Sum.Adds"))

    def test_the_name_of_a_source_selects_the_tests_named_after_it(self) -> None:
        file = Path("tests/unit/operations/payment_tests.cpp")
        for text in ("payment", "Payment.cpp", "payment.hpp", "operations/payment.cpp", "unit/operations/payment_tests"):
            self.assertTrue(Filter(text).selects_file(file), text)

    def test_a_folder_counts_only_in_a_path(self) -> None:
        file = Path("tests/unit/operations/payment_tests.cpp")
        self.assertFalse(Filter("operations").selects_file(file))
        self.assertFalse(Filter("bridge/payment.cpp").selects_file(file))


class Checkout(unittest.TestCase):
    """A checkout with test sources and what configuring leaves."""

    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        self.database: list[dict[str, str]] = []
        self.add("tests/support/members.hpp", MEMBERS)
        self.add_program("sum_tests", "tests/unit/arithmetic/sum_tests.cpp", SUM)
        self.add_program("member_tests", "tests/unit/parameters_tests.cpp", PARAMETERS)
        self.add("tests/script/day.js", 'test("a sale is recorded", function () {});\n')
        self.add("tests/commands/test_run.py", "class Run(unittest.TestCase):\n    def test_prints(self): pass\n")
        self.add("tests/package/test_zip.py", "class Zip(unittest.TestCase):\n    def test_unpacks(self): pass\n")
        self.add("tests/fuzz/words_fuzz.cpp", "")
        self.add("workbench/tests/day_tests.mjs", 'pageTest("a refund is recorded", async () => {});\n')
        self.add("workbench/tests/parts_tests.mjs", 'test("amounts are cents", () => {});\n')

    def add(self, path: str, text: str) -> Path:
        file = self.root / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)
        return file

    def add_program(self, name: str, path: str, text: str) -> None:
        file = self.add(path, text)
        # The folder of the precompiled headers looks like an object's.
        command = f"g++ -include /b/CMakeFiles/other_tests.dir/pch.hxx -o tests/CMakeFiles/{name}.dir/x.obj -c {file}"
        self.database.append({"file": str(file), "command": command})
        for preset in ("x64", "x86"):
            self.add(f"build/{preset}/compile_commands.json", json.dumps(self.database))

    def targets(self, text: str, kind: str = "x64") -> dict[str, list[str]]:
        return Jobs(Paths(self.root, self.root / "build"), Filter(text), [kind]).targets()

    def test_without_a_filter_everything_is_built(self) -> None:
        self.assertEqual(self.targets(""), {"x64": ["all", "tests/all"]})
        self.assertEqual(self.targets("", "script"), {"x64": ["all"], "x86": ["all"]})
        self.assertEqual(self.targets("", "package")["x86"], ["all", "package_test_programs"])
        self.assertEqual(self.targets("", "commands")["x86"], ["all", "workbench/all"])
        self.assertEqual(self.targets("", "fuzz"), {"native": ["words_fuzz"]})

    def test_a_fuzzer_begins_with_its_seeds_and_words_and_learns_elsewhere(self) -> None:
        seeds, words = self.add("tests/fuzz/corpus/words/one", "1").parent, self.add("tests/fuzz/words.dict", '"a"')
        paths = Paths(self.root, self.root / "build")
        (job,) = Jobs(paths, Filter(""), ["fuzz"]).collect()
        self.assertEqual(job.command[-3:], [f"-dict={words}", ".", str(seeds)])

    def test_only_the_programs_are_built_that_may_have_such_a_test(self) -> None:
        for text in ("sum.ADDS", "Takes", "sum", "arithmetic/sum.cpp", "x64/sum_tests/Sum.Takes", "x64/sum_tests"):
            with self.subTest(text=text):
                self.assertEqual(self.targets(text), {"x64": ["all", "sum_tests"]})

    def test_a_full_name_builds_its_flavour_only(self) -> None:
        self.assertEqual(self.targets("x86/sum_tests/Sum.Adds"), {})
        self.assertEqual(self.targets("x86/sum_tests/Sum.Adds", "script"), {})

    def test_names_made_of_parameters_are_found(self) -> None:
        for text in (
            "GetItems",
            "Names/EveryMember.IsFound/GetItems",
            "EveryMember.IsFound/1",
            "x64/member_tests/Names/EveryMember.IsFound/PutTogether",
            "ItemsGet",
        ):
            with self.subTest(text=text):
                self.assertEqual(self.targets(text), {"x64": ["all", "member_tests"]})

    def test_what_no_source_knows_builds_nothing(self) -> None:
        for kind in ("x64", "script", "commands", "package", "fuzz", "tools"):
            self.assertEqual(self.targets("nowhere", kind), {}, kind)

    def test_a_page_script_builds_what_it_runs_against(self) -> None:
        self.assertEqual(self.targets("sale is", "script"), {"x64": ["all"], "x86": ["all"]})
        self.assertEqual(self.targets("script/x86/day/a sale", "script"), {"x86": ["all"]})
        self.assertEqual(self.targets("sale is", "x64"), {})

    def test_a_test_in_the_browser_builds_the_workbench(self) -> None:
        for text in ("refund is", "amounts are", "workbench/day_tests", "day_tests.mjs", ""):
            with self.subTest(text=text):
                self.assertEqual(self.targets(text, "workbench"), {"x64": ["all", "workbench/all"]})
        self.assertEqual(self.targets("refund is", "script"), {})
        self.assertIn("a refund is recorded", self.near("a refund was recorded"))

    def test_python_tests_are_found_by_class_and_method(self) -> None:
        self.assertEqual(self.targets("Zip.test_unpacks", "package")["x64"], ["all", "package_test_programs"])

    def test_what_is_near_is_named(self) -> None:
        self.assertIn("Sum.Takes", self.near("Sum.Taks"))
        self.assertIn("a sale is recorded", self.near("a sale was recorded"))
        self.assertEqual(self.near("qqqq"), [])

    def near(self, text: str) -> list[str]:
        return Jobs(Paths(self.root, self.root / "build"), Filter(text)).suggestions()


if __name__ == "__main__":
    unittest.main()
