"""Which sources ./dev lint and the lint step of ./dev test look at, and what they print."""

from __future__ import annotations

import contextlib
import io
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

TOP = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(TOP / "tools"))

import lint  # noqa: E402
import lint_changed  # noqa: E402


@unittest.skipUnless(shutil.which("git"), "git is not installed")
class Changes(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name, "work")
        self.git("init", "--quiet", "--bare", str(Path(folder.name, "upstream")), folder=Path(folder.name))
        self.git("init", "--quiet", "--initial-branch=main", str(self.root), folder=Path(folder.name))
        self.add("sum.cpp", "old.hpp", "notes.md")
        self.git("commit", "--quiet", "--message=first")
        self.git("remote", "add", "origin", "../upstream")
        self.git("push", "--quiet", "--set-upstream", "origin", "main")

    def git(self, *words: str, folder: Path | None = None) -> None:
        name = ("-c", "user.name=Tester", "-c", "user.email=tester@example.invalid")
        subprocess.run(["git", *name, *words], check=True, capture_output=True, cwd=folder or self.root)

    def add(self, *names: str) -> None:
        for name in names:
            (self.root / name).write_text("int x;\n")
        self.git("add", *names)

    def changed(self) -> set[str]:
        return {file.name for file in lint_changed.changed_files(self.root) or set()}

    def test_nothing_has_changed_where_everything_is_upstream(self) -> None:
        self.assertEqual(self.changed(), set())

    def test_what_is_committed_edited_staged_or_new_has_changed(self) -> None:
        self.add("committed.cpp")
        self.git("commit", "--quiet", "--message=second")
        self.add("staged.hpp", "staged.py")
        (self.root / "sum.cpp").write_text("int y;\n")
        (self.root / "new.cpp").write_text("int z;\n")
        (self.root / "notes.md").write_text("more\n")
        self.assertEqual(self.changed(), {"committed.cpp", "staged.hpp", "sum.cpp", "new.cpp"})

    def test_what_was_removed_is_not_looked_at(self) -> None:
        self.git("rm", "--quiet", "sum.cpp")
        self.assertEqual(self.changed(), set())

    def test_without_an_upstream_the_last_commit_counts(self) -> None:
        self.git("branch", "--unset-upstream")
        self.git("remote", "remove", "origin")
        self.add("committed.cpp")
        self.git("commit", "--quiet", "--message=second")
        (self.root / "sum.cpp").write_text("int y;\n")
        self.assertEqual(self.changed(), {"sum.cpp"})

    def test_outside_of_git_nothing_is_known(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            self.assertIsNone(lint_changed.changed_files(Path(folder)))


class Outcome(unittest.TestCase):
    def outcome(self, changed: set[Path] | None, units: int = 0, findings: str = "") -> str:
        with (
            mock.patch.object(lint_changed, "changed_files", return_value=changed),
            mock.patch.object(lint_changed, "affected", return_value=[(None, [])] * units),
            mock.patch.object(lint_changed.lint, "lint", return_value=findings),
            mock.patch.object(lint_changed.shutil, "which", return_value="clang-tidy"),
        ):
            return lint_changed.outcome()

    def test_says_what_was_found(self) -> None:
        some = {Path("a.cpp")}
        self.assertEqual(self.outcome(set()), "PASS changed sources")
        self.assertEqual(self.outcome(some, 1), "PASS changed sources")
        self.assertEqual(self.outcome(some, 1, "a.cpp:1: bad\nhere"), "FAIL changed sources: a.cpp:1: bad\n    here")
        self.assertTrue(self.outcome(some, 5).startswith("SKIP changed sources: 5 sources"))
        self.assertTrue(self.outcome(None).startswith("SKIP changed sources: this is no git checkout"))


class Lint(unittest.TestCase):
    """What is remembered between two runs, with a checker of the test's own that dislikes the word "bad"."""

    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        self.sources = [self.add(name, "int x;\n") for name in ("first.cpp", "second.cpp")]
        self.header = self.add("shared.hpp", "int y;\n")
        checker = ("grep", "--line-number", "bad")
        units = [lint.Unit("native", "native", source, source.name, (*checker, str(source))) for source in self.sources]
        used = {source.name: [self.header] for source in self.sources[:1]}
        for name, value in {
            "ROOT": self.root,
            "units": lambda kinds: units,
            "used_files": lambda preset: used,
            "check": self.check,
        }.items():
            patch = mock.patch.object(lint, name, value)
            patch.start()
            self.addCleanup(patch.stop)
        patch = mock.patch.object(lint.compile_database, "ROOT", self.root)
        patch.start()
        self.addCleanup(patch.stop)

    def add(self, name: str, text: str) -> Path:
        file = self.root / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)
        return file

    def check(self, unit: lint.Unit) -> str:
        self.checked.add(unit.source.name)
        return subprocess.run(unit.command, check=False, capture_output=True, text=True).stdout.strip()

    def run_lint(self) -> tuple[int, list[str]]:
        """The exit status, and the lines that were printed."""
        self.checked: set[str] = set()
        output = io.StringIO()
        with contextlib.redirect_stdout(output):
            status = lint.main(["native"])
        return status, output.getvalue().splitlines()

    def test_sources_without_findings_are_not_looked_at_again(self) -> None:
        self.assertEqual(self.run_lint()[0], 0)
        self.assertEqual(self.checked, {"first.cpp", "second.cpp"})
        self.assertEqual(self.run_lint(), (0, ["2 sources, 0 with findings"]))
        self.assertEqual(self.checked, set())

    def test_findings_are_printed_and_come_again_until_they_are_mended(self) -> None:
        self.sources[1].write_text("int bad;\n")
        for _ in range(2):
            status, lines = self.run_lint()
            self.assertEqual(status, 1)
            self.assertIn("native second.cpp: findings", lines)
            self.assertIn("1:int bad;", lines)
            self.assertEqual(lines[-1], "2 sources, 1 with findings")
        self.assertEqual(self.checked, {"second.cpp"})
        self.sources[1].write_text("int good;\n")
        self.assertEqual(self.run_lint()[0], 0)

    def test_a_changed_header_or_rule_has_what_it_concerns_looked_at_again(self) -> None:
        self.run_lint()
        self.header.write_text("int z;\n")
        self.run_lint()
        self.assertEqual(self.checked, {"first.cpp"})
        self.add(".clang-tidy", "Checks: '*'\n")
        self.run_lint()
        self.assertEqual(self.checked, {"first.cpp", "second.cpp"})


if __name__ == "__main__":
    unittest.main()
