"""A checkout in which ./dev runs what has been built here, with a lock and a Wine prefix of its own.

In this checkout ./dev would wait for the run of tests to end, and then end the Wine programs of the others.
"""

from __future__ import annotations

import os
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(TOP / "tests" / "support"))

from windows_programs import needs  # noqa: E402, F401

# It stays, since making its Wine prefix takes longer than the tests.
FOLDER = TOP / "build" / "own-checkout"
PREFIX = FOLDER / "build" / "wine"
# The first command makes the prefix.
SECONDS = 300
MOMENT_SECONDS = 5

NOTHING = "#!/bin/bash\n"
# A flavour is configured when what was built of it is there.
CMAKE = f"""#!/bin/bash
[ "$1" != --version ] || exit 0
mkdir -p "build/$2"
cd '{TOP}'/build/"$2" && cp --parents --preserve=timestamps Paylodge.dll refhost/*.dll refhost/*.exe workbench/*.exe "$OLDPWD/build/$2" &&
    cp -r --parents workbench/page workbench/bridge "$OLDPWD/build/$2"
"""


def make() -> None:
    """Everything but the Wine prefix anew."""
    for name in ("tools", "examples", "cmake", "bin", "build/x64", "build/x86", "build/run", "build/workbench"):
        shutil.rmtree(FOLDER / name, ignore_errors=True)
    for name in ("tools", "examples", "cmake"):
        shutil.copytree(TOP / name, FOLDER / name, ignore=shutil.ignore_patterns("__pycache__"))
    for name in ("dev", "CMakePresets.json"):
        shutil.copy(TOP / name, FOLDER / name)
    add("tools/setup.sh", NOTHING)
    add("tools/third-party.sh", NOTHING)
    add("bin/cmake", CMAKE)
    add("bin/ninja", NOTHING)


def add(name: str, text: str) -> Path:
    file = FOLDER / name
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_text(text, encoding="utf-8")
    file.chmod(0o755)
    return file


def start(*words: str, folder: Path = FOLDER) -> subprocess.Popen[str]:
    """A command, in a process group of its own, which hears Ctrl-C wherever these tests run."""
    return subprocess.Popen(
        [str(FOLDER / "dev"), *words],
        cwd=folder,
        env=os.environ | {"PATH": f"{FOLDER / 'bin'}:{os.environ['PATH']}"},
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        encoding="utf-8",
        start_new_session=True,
        preexec_fn=hear_ctrl_c,
    )


def hear_ctrl_c() -> None:
    signal.signal(signal.SIGINT, signal.SIG_DFL)


def end(process: subprocess.Popen[str]) -> None:
    """Ends a command that a failed test has left running."""
    if process.poll() is None:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()
        subprocess.run(["wineserver", "-k"], check=False, capture_output=True, env=os.environ | {"WINEPREFIX": str(PREFIX)})
    if process.stdout:
        process.stdout.close()


def run(*words: str, folder: Path = FOLDER) -> tuple[int, str]:
    """The exit status of a command, and what it printed. It has to leave nothing running."""
    process = start(*words, folder=folder)
    try:
        output, _ = process.communicate(timeout=SECONDS)
    finally:
        end(process)
    left = left_running(process)
    assert not left, f"still running: {left}"
    return process.returncode, output.replace("\r", "")


def left_running(process: subprocess.Popen[str]) -> list[str]:
    """What a command that has ended leaves running for longer than a moment."""
    give_up = time.monotonic() + MOMENT_SECONDS
    while (found := running(process.pid)) and time.monotonic() < give_up:
        time.sleep(0.05)
    return found


def running(group: int) -> list[str]:
    """The commands of what runs in a process group or in the Wine prefix."""
    found = []
    for folder in Path("/proc").glob("[0-9]*"):
        try:
            # Behind the name, which stands in parentheses and may be anything.
            state, _, own_group = (folder / "stat").read_text().rpartition(")")[2].split()[:3]
            environment = (folder / "environ").read_bytes().split(b"\0")
            words = (folder / "cmdline").read_bytes().replace(b"\0", b" ").decode(errors="replace")
        except OSError:
            # It has ended meanwhile, or is another user's.
            continue
        # What has ended stays until its parent has asked how.
        if state != "Z" and (int(own_group) == group or f"WINEPREFIX={PREFIX}".encode() in environment):
            found.append(words)
    return found
