"""Wine as the tests use it; expects the environment of wine.sh."""

from __future__ import annotations

import contextlib
import functools
import os
import subprocess
from collections.abc import Iterator
from pathlib import Path

# The folder with the system's programs of each architecture.
SYSTEM_FOLDERS = {"x64": "system32", "x86": "syswow64"}
SERVER_LINGERS_SECONDS = 600
TIME_LIMIT_SECONDS = 60


def windows_path(path: Path) -> str:
    """The name under which Windows programs see a file of this machine."""
    return "Z:" + str(path.resolve()).replace("/", "\\")


def wine_command(program: str) -> list[str]:
    """The beginning of a command that runs a Windows program."""
    return [os.environ.get("PAYLODGE_WINE", "wine"), program]


def system_command(architecture: str, name: str) -> list[str]:
    """The same for a program of the system."""
    return wine_command(f"C:\\windows\\{SYSTEM_FOLDERS[architecture]}\\{name}.exe")


def run_quietly(command: list[str]) -> int:
    """The exit code of a short program; raises OSError or subprocess.TimeoutExpired when there is none."""
    return subprocess.run(
        command,
        check=False,
        stdin=subprocess.DEVNULL,
        stdout=subprocess.DEVNULL,
        stderr=subprocess.DEVNULL,
        timeout=TIME_LIMIT_SECONDS,
    ).returncode


def run_and_read(command: list[str]) -> subprocess.CompletedProcess[str]:
    """A short program with what it printed; raises OSError or subprocess.TimeoutExpired when there is no end of it."""
    return subprocess.run(
        command,
        check=False,
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        encoding="utf-8",
        errors="replace",
        timeout=TIME_LIMIT_SECONDS,
    )


@functools.cache
def works(architecture: str) -> bool:
    """Whether programs of this architecture can run on this machine."""
    try:
        return run_quietly([*system_command(architecture, "cmd"), "/c", "exit 7"]) == 7
    except (OSError, subprocess.TimeoutExpired):
        return False


def register(architecture: str, library: Path) -> str:
    """Registers a component library; returns what went wrong, or an empty text."""
    if not library.exists():
        return f"{library} is missing"
    try:
        exit_code = run_quietly([*system_command(architecture, "regsvr32"), "/s", windows_path(library)])
    except subprocess.TimeoutExpired:
        return f"registering {library} did not end within {TIME_LIMIT_SECONDS} s"
    return f"registering {library} failed with exit code {exit_code}" if exit_code != 0 else ""


def stop_server() -> None:
    """Ends every program of the prefix."""
    with contextlib.suppress(OSError, subprocess.TimeoutExpired):
        run_quietly(["wineserver", "-k"])
        run_quietly(["wineserver", "-w"])


@contextlib.contextmanager
def session() -> Iterator[None]:
    """One Wine server for all programs in between: starting it anew for each costs more than most programs do."""
    stop_server()
    with contextlib.suppress(OSError):
        run_quietly(["wineserver", f"-p{SERVER_LINGERS_SECONDS}"])
    try:
        yield
    finally:
        stop_server()


@contextlib.contextmanager
def virtual_display() -> Iterator[dict[str, str]]:
    """A display of its own, as the environment that selects it."""
    reading, writing = os.pipe()
    command = ["Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x1024x24", "-nolisten", "tcp"]
    server = subprocess.Popen(command, pass_fds=[writing], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    os.close(writing)
    try:
        with os.fdopen(reading) as number:
            yield {"DISPLAY": ":" + number.readline().strip()}
    finally:
        server.terminate()
        server.wait()
