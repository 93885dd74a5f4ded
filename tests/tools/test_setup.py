"""Set-up and tools/try-release, with package tools of the tests' own: nothing is installed."""

from __future__ import annotations

import os
import platform
import subprocess
import tempfile
import unittest
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]
FAKES = {
    "id": "echo 0",
    "dpkg": '[ "$1" != --print-architecture ] || echo amd64; [ "$1" != --print-foreign-architectures ] || echo i386',
    "dpkg-query": 'cat "$FOLDER/installed" 2>/dev/null',
    # Simulated, an install fits only where `fits` matches what it was asked for.
    "apt-get": """echo "$*" >>"$FOLDER/calls"
        for argument in "$@"; do
            [[ $argument != Dir::Etc::Preferences=* ]] || cp "${argument#*=}" "$FOLDER/preferences"
        done
        [[ $* != *--simulate* ]] || grep -qf "$FOLDER/fits" <<<"$*"
    """,
}


class WithFakes(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        for name, body in FAKES.items():
            file = self.folder / "bin" / name
            file.parent.mkdir(exist_ok=True)
            file.write_text(f"#!/bin/bash\n{body}\n")
            file.chmod(0o755)

    def run_script(self, script: str, *arguments: str) -> subprocess.CompletedProcess[str]:
        environment = os.environ | {"PATH": f"{self.folder / 'bin'}:{os.environ['PATH']}", "FOLDER": str(self.folder)}
        return subprocess.run(
            ["bash", str(TOP / script), *arguments],
            env=environment,
            capture_output=True,
            text=True,
            check=False,
            timeout=60,
        )


class SetUp(WithFakes):
    def install(self, fits: str) -> str:
        """Returns the last call of apt-get."""
        (self.folder / "fits").write_text(fits)
        result = self.run_script("tools/setup.sh")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.output = result.stderr
        return (self.folder / "calls").read_text().splitlines()[-1]

    def test_installs_everything_at_once_where_it_fits(self) -> None:
        last = self.install("wine32:i386")
        for package in ("cmake", "clang-format-19", "wine64", "wine32:i386"):
            self.assertIn(f" {package}", last)
        self.assertIn("--no-remove", last)
        self.assertNotIn("Preferences", last)

    def test_takes_the_versions_of_this_machines_release_where_the_newest_do_not_fit(self) -> None:
        last = self.install("Preferences")
        self.assertIn("wine32:i386", last)
        release = platform.freedesktop_os_release()["VERSION_CODENAME"]
        preferences = (self.folder / "preferences").read_text()
        self.assertIn(f"Pin: release n={release}-security\nPin-Priority: -10\n", preferences)
        self.assertIn(f"Pin: release n={release}\nPin-Priority: 1001\n", preferences)

    def test_goes_on_without_32_bit_wine_where_nothing_fits(self) -> None:
        last = self.install("nothing does")
        self.assertNotIn("i386", last)
        self.assertIn("wine64", last)
        self.assertIn("wine32:i386 cannot be installed", self.output)


class TryRelease(WithFakes):
    def test_says_how_it_is_used(self) -> None:
        result = self.run_script("tools/try-release", "--help")
        self.assertEqual(result.returncode, 0)
        self.assertIn("Usage: tools/try-release", result.stdout)

    def test_refuses_what_it_does_not_know_in_one_sentence(self) -> None:
        for arguments, message in (
            ([], "which release: bookworm trixie?"),
            (["woody"], "there is no release 'woody' to try: bookworm trixie"),
            (["bookworm", "trixie"], "one release at a time: 'bookworm' or 'trixie'"),
            (["--quick", "trixie"], "there is no option '--quick'"),
            (["trixie", "--"], "a command has to follow the --"),
        ):
            with self.subTest(arguments=arguments):
                result = self.run_script("tools/try-release", *arguments)
                self.assertEqual(result.returncode, 2)
                self.assertEqual(result.stderr, f"try-release: {message}; 'tools/try-release --help' says more\n")

    def test_needs_root(self) -> None:
        (self.folder / "bin/id").write_text("#!/bin/bash\necho 1000\n")
        result = self.run_script("tools/try-release", "trixie")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stderr, "try-release: making a system needs root: try again as root\n")


if __name__ == "__main__":
    unittest.main()
