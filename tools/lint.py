"""Runs clang-tidy over the sources of the given flavours, two or more at a time; exit status 0 when it finds nothing.

A source without findings is remembered by a digest of everything that it was compiled from.
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
    """A source as one flavour compiles it."""

    preset: str
    source: Path
    output: str


def units(presets: list[str]) -> list[Unit]:
    """Each source once; of those, what the given flavours compile."""
    found = [
        Unit(Path(str(entry["directory"])).name, Path(str(entry["file"])), output_of(entry["arguments"]))
        for entry in compile_database.write()
    ]
    return [unit for unit in found if unit.preset in presets]


def output_of(arguments: list[str]) -> str:
    return arguments[arguments.index("-o") + 1]


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
    command = ["clang-tidy-19", "--quiet", "-p", str(ROOT / "build"), str(unit.source)]
    result = subprocess.run(command, check=False, capture_output=True, text=True)
    if result.returncode == -signal.SIGINT:
        raise KeyboardInterrupt
    if result.returncode == 0 and not result.stdout.strip():
        return ""
    return result.stdout.strip() or result.stderr.strip() or f"clang-tidy ended with {result.returncode}"


def lint(unit: Unit, used: list[Path]) -> str:
    stamp = ROOT / "build" / "lint" / hashlib.sha256(f"{unit.preset} {unit.source}".encode()).hexdigest()
    now = digest(unit, used)
    if stamp.exists() and stamp.read_text() == now:
        return ""
    findings = check(unit)
    if not findings:
        stamp.write_text(now)
    print(f"{unit.preset} {unit.source.relative_to(ROOT)}: {'findings' if findings else 'clean'}", flush=True)
    return findings


def main(presets: list[str]) -> int:
    (ROOT / "build" / "lint").mkdir(parents=True, exist_ok=True)
    used = {preset: used_files(preset) for preset in presets}
    chosen = units(presets)
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        findings = pool.map(lambda unit: lint(unit, used[unit.preset].get(unit.output, [])), chosen)
        try:
            texts = [text for text in findings if text]
        except KeyboardInterrupt:
            pool.shutdown(wait=False, cancel_futures=True)
            return 130
    print("\n".join(texts))
    print(f"{len(chosen)} sources, {len(texts)} with findings")
    return 1 if texts or not chosen else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
