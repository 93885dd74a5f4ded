"""What ./dev run, workbench, company and package say to words that make no sense: one sentence, exit status 2, nothing built."""

from __future__ import annotations

import subprocess
import tempfile
import unittest
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]


def dev(*words: str, folder: Path = TOP) -> subprocess.CompletedProcess[str]:
    command = [str(TOP / "dev"), *words]
    return subprocess.run(command, check=False, capture_output=True, text=True, cwd=folder, timeout=60)


class WrongWords(unittest.TestCase):
    def check(self, words: list[str], sentence: str) -> None:
        with self.subTest(" ".join(words)):
            result = dev(*words)
            self.assertEqual((result.returncode, result.stdout, result.stderr), (2, "", sentence + "\n"))

    def test_of_run(self) -> None:
        script = str(TOP / "examples/first-steps.js")
        self.check(["run"], "dev: 'run' needs a script: ./dev run FILE.js")
        self.check(["run", "nowhere.js"], "dev: there is no script 'nowhere.js'")
        self.check(["run", "--arch", "arm", script], "dev: --arch takes x64 or x86, not 'arm'")
        self.check(["run", "--arch"], "dev: --arch takes x64 or x86, not ''")
        self.check(["run", "--company"], "dev: --company needs a company file")
        self.check(["run", "--fast"], "dev: 'run' does not know '--fast'; './dev run --help' says what it knows")
        self.check(["run", script, script], "dev: 'run' takes one script; words for it stand behind --")
        self.check(
            ["run", script, "--company", "nowhere.lhcompany"],
            "dev: there is no company file 'nowhere.lhcompany'; './dev company import' makes one",
        )

    def test_of_workbench(self) -> None:
        self.check(["workbench", "page"], "dev: 'workbench' does not know 'page'; './dev workbench --help' says what it knows")
        self.check(["workbench", "--arch", "arm"], "dev: --arch takes x64 or x86, not 'arm'")
        for port in ("65536", "-1", "http", "", "123456"):
            self.check(["workbench", "--port", port], f"dev: --port takes a number from 0 to 65535, not '{port}'")
        self.check(["workbench", "--port"], "dev: --port takes a number from 0 to 65535, not ''")
        self.check(["workbench", "--company"], "dev: --company needs a company file")
        self.check(["workbench", "--page"], "dev: --page needs a folder")
        self.check(["workbench", "--page", "nowhere"], "dev: there is no folder 'nowhere'")
        self.check(
            ["workbench", "--company", "nowhere.lhcompany"],
            "dev: there is no company file 'nowhere.lhcompany'; './dev company import' makes one",
        )

    def test_of_company(self) -> None:
        result = dev("company")
        self.assertEqual(result.returncode, 2)
        self.assertTrue(result.stderr.startswith("Usage: ./dev company import TEXT FILE"))

    def test_of_package(self) -> None:
        self.check(
            ["package", "--fast"], "dev: 'package' does not know '--fast'; './dev package --help' says what it knows"
        )
        self.check(["package", "--tests", "--verify"], "dev: --verify builds the package twice, not the test kit")

    def test_of_run_in_another_folder_names_the_script_there(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            result = dev("run", "page.js", folder=Path(folder))
            self.assertEqual(result.stderr, f"dev: there is no script '{Path(folder).resolve()}/page.js'\n")

    def test_help_is_at_hand(self) -> None:
        for command in ("run", "workbench", "company", "package"):
            result = dev(command, "--help")
            self.assertEqual(result.returncode, 0)
            self.assertTrue(result.stdout.startswith(f"Usage: ./dev {command} "))


if __name__ == "__main__":
    unittest.main()
