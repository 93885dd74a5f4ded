"""The test kit, unpacked and run in a Wine prefix that has never seen the component, with a few of its programs."""

from __future__ import annotations

import functools
import re
import shutil
import subprocess
import unittest
from pathlib import Path

from package_support import (
    BUILDS,
    SCRATCH,
    TOP,
    clean_registry,
    deviations,
    end_prefix,
    fresh_folder,
    needs,
    run_program,
    run_wine,
    system_command,
    windows_path,
)
from test_kit import write_test_kit

# Built for the tests of the package; ./dev package --tests takes all of them.
PROGRAMS = ["com_tests", "kit_results_tests", "script_text_tests"]


def setUpModule() -> None:
    clean_registry()


def tearDownModule() -> None:
    end_prefix()


@functools.cache
def unpacked_kit() -> Path:
    folder = fresh_folder("A kit of tests (unpacked)")
    shutil.unpack_archive(write_test_kit(TOP, BUILDS, SCRATCH / "dist", PROGRAMS), folder)
    return next(folder.iterdir())


def run_kit(kit: Path, *words: str) -> subprocess.CompletedProcess[str]:
    """As a double-click does, in another folder; the environment has nothing of the checkout."""
    bare = dict.fromkeys(("WINEPATH", "LEDGERHALL_COMPANY_FILE", "OANOCACHE"), "")
    command = [*system_command("x64", "cmd"), "/d", "/c", "call", windows_path(kit / "run-tests.cmd"), "/q", *words]
    return run_wine(command, "x86", seconds=600, **bare)


class Kit(unittest.TestCase):
    def setUp(self) -> None:
        for architecture in BUILDS:
            needs(architecture)

    def check_left_nothing(self, kit: Path) -> None:
        self.assertEqual(deviations(), {})
        self.assertFalse((kit / "scratch").exists())

    def test_holds_the_programs_of_both_architectures_and_what_they_need(self) -> None:
        files = {file.relative_to(unpacked_kit()).as_posix() for file in unpacked_kit().rglob("*") if file.is_file()}
        for architecture in BUILDS:
            for name in ("Paylodge.dll", "refhost/refhost.dll", "refhost/run.exe", "tests/com_tests.exe"):
                self.assertIn(f"{architecture}/{name}", files)
        scripts = {file.relative_to(TOP).as_posix() for file in (TOP / "tests" / "script").rglob("*.js")}
        self.assertEqual(scripts - files, set())
        self.assertTrue({"run-tests.cmd", "run-tests.exe", "README.txt", "examples/riverside.xml"} <= files)

    def test_runs_everything_and_leaves_nothing(self) -> None:
        kit = unpacked_kit()
        result = run_kit(kit)
        lines = result.stdout.splitlines()
        self.assertRegex(lines[0], r"^Windows \d+\.\d+\.\d+, processor kind \d+, code page \d+")
        self.assertRegex(lines[-1], r"^\d+ passed, 0 failed(, \d+ skipped)?$", result.stdout)
        self.assertEqual(result.returncode, 0)
        names = [line.split()[0] for line in lines if re.search(r"\d passed, 0 failed", line)][:-1]
        scripts = sorted(file.stem for file in (TOP / "tests" / "script").glob("*.js") if file.stem != "harness")
        expected = [
            f"{architecture}/{name}"
            for architecture in ("x64", "x86")
            for name in [*PROGRAMS, *(f"script/{script}" for script in scripts)]
        ]
        self.assertEqual(names, expected)
        log = (kit / "test-log.txt").read_text(encoding="utf-8").replace("\r", "")
        self.assertEqual(log, result.stdout)
        self.check_left_nothing(kit)

    def test_a_failure_is_named_and_its_whole_output_is_in_the_log(self) -> None:
        kit = fresh_folder("failing-kit") / "kit"
        shutil.copytree(unpacked_kit(), kit)
        (kit / "tests" / "script" / "wrong.js").write_text(
            'WScript.Echo("on the way");\ntest("holds", function () {\n    equal(1, 1);\n});\n'
            'test("does not hold", function () {\n    equal(1, 2);\n});\n'
            'test("cannot tell", function () {\n    skip("no reason");\n});\n'
        )
        result = run_kit(kit, "x86/script/wrong")
        self.assertEqual(result.returncode, 1)
        self.assertIn("FAILED x86/script/wrong/does not hold\n    expected number 2\n", result.stdout)
        self.assertIn("skipped x86/script/wrong/cannot tell: no reason\n", result.stdout)
        self.assertTrue(result.stdout.endswith("1 passed, 1 failed, 1 skipped\n"), result.stdout)
        self.assertNotIn("on the way", result.stdout)
        self.assertIn("on the way", (kit / "test-log.txt").read_text(encoding="utf-8"))
        self.check_left_nothing(kit)

    def test_a_text_that_nothing_has_in_its_name_is_a_wrong_call(self) -> None:
        # Wine's command interpreter makes every failure a 1.
        self.assertNotEqual(run_kit(unpacked_kit(), "nothing-like-this").returncode, 0)
        runner = unpacked_kit() / "run-tests.exe"
        self.assertEqual(run_program(runner, "nothing-like-this", architecture="x86").returncode, 2)
        self.assertEqual(run_program(runner, "one", "two", architecture="x86").returncode, 2)

    def test_says_that_it_has_to_be_unpacked(self) -> None:
        folder = fresh_folder("not-unpacked")
        shutil.copy(unpacked_kit() / "run-tests.cmd", folder)
        result = run_kit(folder)
        self.assertIn("unpack the whole zip file first", result.stdout)
        self.assertNotEqual(result.returncode, 0)
