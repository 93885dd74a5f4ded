"""Checks sources with clang's tools, two or more at a time; exit status 0 when nothing is found.

native and x64 are checked by clang-tidy as these flavours compile them; for clang, clang itself compiles everything that
x64 does, without writing anything. A source without findings is remembered by a digest of everything that it was compiled
from.
"""

from __future__ import annotations

import hashlib
import os
import signal
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path

import compile_database
from compile_database import ROOT


@dataclass(frozen=True)
class Unit:
    """A source as one flavour compiles it, and what checks it there."""

    kind: str
    preset: str
    source: Path
    output: str
    command: tuple[str, ...]


def units(kinds: list[str]) -> list[Unit]:
    """Each source once for clang-tidy, and all that is compiled for Windows for clang."""
    tidy = ("clang-tidy-19", "--quiet", "-p", str(ROOT / "build"))
    found = [unit(folder_of(entry).name, entry, (*tidy, str(entry["file"]))) for entry in compile_database.write()]
    for entry in compile_database.read("x64"):
        found.append(unit("clang", entry, (*entry["arguments"], "-fsyntax-only")))
    return [unit for unit in found if unit.kind in kinds]


def unit(kind: str, entry: compile_database.Entry, command: tuple[str, ...]) -> Unit:
    arguments = list(entry["arguments"])
    output = arguments[arguments.index("-o") + 1]
    return Unit(kind, folder_of(entry).name, Path(str(entry["file"])), output, command)


def folder_of(entry: compile_database.Entry) -> Path:
    return Path(str(entry["directory"]))


def used_files(preset: str) -> dict[str, list[Path]]:
    """For each object file, the files that it was compiled from."""
    folder = ROOT / "build" / preset
    listing = subprocess.run(["ninja", "-C", str(folder), "-t", "deps"], check=True, capture_output=True, text=True)
    files: dict[str, list[Path]] = {}
    current: list[Path] = []
    for line in listing.stdout.splitlines():
        if line.startswith("    "):
            current.append(folder / line.strip())
        elif ":" in line:
            current = files.setdefault(line.split(":")[0], [])
    return files


def digest(unit: Unit, used: list[Path]) -> str:
    """What decides over the findings; system headers only change together with the tools."""
    rules = {ROOT / ".clang-tidy", ROOT / "tests" / ".clang-tidy", Path(__file__)}
    files = {unit.source, *rules, *(file for file in used if compile_database.is_own(file.resolve()))}
    texts = [f"{file}\0".encode() + file.read_bytes() for file in sorted(files) if file.exists()]
    return hashlib.sha256(b"\0".join(texts)).hexdigest()


def check(unit: Unit) -> str:
    """The findings, or an empty text."""
    folder = ROOT / "build" / unit.preset
    result = subprocess.run(unit.command, check=False, capture_output=True, text=True, cwd=folder)
    if result.returncode == -signal.SIGINT:
        raise KeyboardInterrupt
    if result.returncode == 0 and not result.stdout.strip():
        return ""
    return result.stdout.strip() or result.stderr.strip() or f"{unit.command[0]} ended with {result.returncode}"


def lint(unit: Unit, used: list[Path]) -> str:
    stamp = ROOT / "build" / "lint" / hashlib.sha256(f"{unit.kind} {unit.source}".encode()).hexdigest()
    now = digest(unit, used)
    if stamp.exists() and stamp.read_text() == now:
        return ""
    findings = check(unit)
    if not findings:
        stamp.write_text(now)
    print(f"{unit.kind} {unit.source.relative_to(ROOT)}: {'findings' if findings else 'clean'}", flush=True)
    return findings


def lint_and_show(unit: Unit, used: list[Path]) -> str:
    """Prints the findings at once: a whole run takes long."""
    findings = lint(unit, used)
    if findings:
        print(findings, flush=True)
    return findings


def main(kinds: list[str]) -> int:
    (ROOT / "build" / "lint").mkdir(parents=True, exist_ok=True)
    chosen = units(kinds)
    used = {preset: used_files(preset) for preset in {unit.preset for unit in chosen}}
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        findings = pool.map(lambda unit: lint_and_show(unit, used[unit.preset].get(unit.output, [])), chosen)
        try:
            count = sum(bool(text) for text in findings)
        except KeyboardInterrupt:
            pool.shutdown(wait=False, cancel_futures=True)
            return 130
    print(f"{len(chosen)} sources, {count} with findings")
    return 1 if count or not chosen else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
