"""What the commands of ./dev share, with commands, a cmake and a ninja of the tests' own."""

from __future__ import annotations

import os
import shutil
import signal
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]
SHARED = ("dev", "tools/common.sh", "tools/compile_database.py", "tools/wine.sh", "tools/commands/clean.sh")

CMAKE = """#!/bin/bash
[ "$1" != --version ] || { echo 'cmake 1'; exit; }
mkdir -p "build/$2"
[ ! -e broken ] || { echo "no compiler" >&2; exit 1; }
echo "$2" >>configured
"""
NINJA = """#!/bin/bash
[ ! -e ../../slow ] || { trap 'echo "ninja: build stopped: interrupted by user."; exit 130' INT; touch ../../ready; sleep 60; }
"""


def hear_ctrl_c() -> None:
    signal.signal(signal.SIGINT, signal.SIG_DFL)


class Checkout(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name, "check out")
        for name in SHARED:
            (self.folder / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(TOP / name, self.folder / name)
        self.add("CMakePresets.json", "{}")
        self.add("cmake/mingw.cmake", "")
        self.add("bin/cmake", CMAKE)
        self.add("bin/ninja", NINJA)
        self.add_command("make", "build_preset x64")
        self.add_command("hold", "lock_checkout; touch ready; sleep 60")

    def add(self, name: str, text: str) -> None:
        file = self.folder / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)
        file.chmod(0o755)

    def add_command(self, name: str, body: str) -> None:
        self.add(f"tools/commands/{name}.sh", f"# does it\nrun() {{\n{body}\n}}\n")

    def start(self, command: str, folder: Path | None = None) -> subprocess.Popen[str]:
        folder = folder or self.folder
        process = subprocess.Popen(
            [str(folder / "dev"), command],
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            env=os.environ | {"PATH": f"{folder / 'bin'}:{os.environ['PATH']}"},
            # Ctrl-C reaches the whole group, also when these tests run where nobody can press it.
            start_new_session=True,
            preexec_fn=hear_ctrl_c,
        )
        self.addCleanup(self.end, process)
        return process

    def end(self, process: subprocess.Popen[str]) -> None:
        if process.poll() is None:
            os.killpg(process.pid, signal.SIGKILL)
        process.communicate()

    def run_dev(self, command: str, folder: Path | None = None) -> str:
        process = self.start(command, folder)
        output, _ = process.communicate(timeout=30)
        self.assertEqual(process.returncode, 0, output)
        return output

    def wait_until_ready(self) -> None:
        give_up = time.monotonic() + 30
        while not (self.folder / "ready").exists():
            self.assertLess(time.monotonic(), give_up)
            time.sleep(0.02)

    def interrupt(self, process: subprocess.Popen[str]) -> str:
        os.killpg(process.pid, signal.SIGINT)
        output, _ = process.communicate(timeout=30)
        self.assertEqual(process.returncode, 130)
        with self.assertRaises(ProcessLookupError, msg="something of the group is still running"):
            os.killpg(process.pid, 0)
        return output


class Interrupting(Checkout):
    def test_ends_the_command_with_one_line(self) -> None:
        self.add_command("wait", "touch ready; sleep 60 || fail 'a failure that is none'")
        process = self.start("wait")
        self.wait_until_ready()
        self.assertEqual(self.interrupt(process), "stopped\n")

    def test_leaves_the_last_word_to_ninja(self) -> None:
        self.add("slow", "")
        (self.folder / "build").mkdir()
        process = self.start("make")
        self.wait_until_ready()
        expected = "configuring x64\nbuilding x64\nninja: build stopped: interrupted by user.\n"
        self.assertEqual(self.interrupt(process), expected)

    def test_still_cleans_up(self) -> None:
        self.add_command("wait", "at_exit clean_up; touch ready; sleep 60\n}\nclean_up() { touch cleaned; ")
        process = self.start("wait")
        self.wait_until_ready()
        self.interrupt(process)
        self.assertTrue((self.folder / "cleaned").exists())


class Waiting(Checkout):
    def test_clean_waits_for_a_running_command(self) -> None:
        (self.folder / "build").mkdir()
        holder = self.start("hold")
        self.wait_until_ready()
        cleaner = self.start("clean")
        assert cleaner.stdout
        self.assertIn("waiting for the ./dev command", cleaner.stdout.readline())
        self.assertTrue((self.folder / "build").exists())
        self.interrupt(holder)
        cleaner.communicate(timeout=30)
        self.assertEqual(cleaner.returncode, 0)
        self.assertFalse((self.folder / "build").exists())

    def test_a_command_waits_for_clean_and_the_next_one_for_it(self) -> None:
        """The lock outlives build/."""
        self.run_dev("clean")
        self.start("hold")
        self.wait_until_ready()
        self.expect_to_wait("clean")

    def expect_to_wait(self, command: str) -> None:
        process = self.start(command)
        assert process.stdout
        self.assertIn("waiting", process.stdout.readline())


class Configuring(Checkout):
    def setUp(self) -> None:
        super().setUp()
        (self.folder / "build").mkdir()

    def configured(self, folder: Path | None = None) -> int:
        return len(((folder or self.folder) / "configured").read_text().splitlines())

    def test_happens_once(self) -> None:
        self.run_dev("make")
        self.run_dev("make")
        self.assertEqual(self.configured(), 1)

    def test_a_copied_checkout_is_configured_anew(self) -> None:
        self.run_dev("make")
        (self.folder / "build/x64/left over").touch()
        copy = self.folder.with_name("copy")
        shutil.copytree(self.folder, copy)
        self.run_dev("make", copy)
        self.assertEqual(self.configured(copy), 2)
        self.assertFalse((copy / "build/x64/left over").exists())
        self.run_dev("make")
        self.assertEqual(self.configured(), 1)

    def test_a_moved_checkout_is_configured_anew(self) -> None:
        self.run_dev("make")
        moved = self.folder.rename(self.folder.with_name("moved"))
        self.run_dev("make", moved)
        self.assertEqual(self.configured(moved), 2)

    def test_changed_presets_are_configured_anew(self) -> None:
        self.run_dev("make")
        self.add("CMakePresets.json", '{"version": 6}')
        self.run_dev("make")
        self.assertEqual(self.configured(), 2)

    def test_a_failure_is_tried_again(self) -> None:
        self.add("broken", "")
        process = self.start("make")
        output, _ = process.communicate(timeout=30)
        self.assertEqual(process.returncode, 1)
        expected = "configuring x64\nno compiler\ndev: configuring x64 failed: the lines above say why\n"
        self.assertEqual(output, expected)
        (self.folder / "broken").unlink()
        self.run_dev("make")
        self.assertEqual(self.configured(), 1)


class WineServer(Checkout):
    def setUp(self) -> None:
        super().setUp()
        self.add_command("start", ". tools/wine.sh; start_wine; say 'went on'")

    def answer(self, status: int) -> tuple[int, str]:
        self.add("bin/wineserver", f"#!/bin/bash\nexit {status}\n")
        process = self.start("start")
        output, _ = process.communicate(timeout=30)
        return process.returncode, output

    def test_is_used_when_it_starts_or_runs_already(self) -> None:
        self.assertEqual(self.answer(0), (0, "went on\n"))
        self.assertEqual(self.answer(2), (0, "went on\n"))

    def test_that_does_not_start_fails_the_command(self) -> None:
        for status in (1, 3, 127):
            self.assertEqual(self.answer(status), (1, "dev: Wine's server does not start\n"), status)


if __name__ == "__main__":
    unittest.main()
