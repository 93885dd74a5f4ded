"""Runs clang-tidy over the sources of the given flavours, two or more at a time; exit status 0 when it finds nothing.

A source without findings is remembered by a digest of everything that it was compiled from.
"""

from __future__ import annotations

import hashlib
import json
import os
import shlex
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
CROSS_COMPILER = "x86_64-w64-mingw32-g++-posix"


@dataclass(frozen=True)
class Unit:
    """A source as one flavour compiles it."""

    preset: str
    source: Path
    output: str


def own_units(preset: str) -> list[Unit]:
    database = json.loads((ROOT / "build" / preset / "compile_commands.json").read_text())
    entries = [entry for entry in database if is_own_source(Path(entry["file"]))]
    return [Unit(preset, Path(entry["file"]), output_of(entry["command"])) for entry in entries]


def output_of(command: str) -> str:
    words = shlex.split(command)
    return words[words.index("-o") + 1]


def is_own_source(file: Path) -> bool:
    return file.suffix == ".cpp" and is_own(file)


def is_own(file: Path) -> bool:
    return file.is_relative_to(ROOT) and not file.is_relative_to(ROOT / "build")


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
    files = {unit.source, *rules, *(file for file in used if is_own(file.resolve()))}
    texts = [f"{file}\0".encode() + file.read_bytes() for file in sorted(files) if file.exists()]
    return hashlib.sha256(b"\0".join(texts)).hexdigest()


def cross_arguments() -> list[str]:
    """The cross compiler's own header folders and warnings, which clang does not know by itself."""
    command = [CROSS_COMPILER, "-E", "-x", "c++", "-v", os.devnull]
    text = subprocess.run(command, check=True, capture_output=True, text=True).stderr
    listed = text.split("#include <...> search starts here:")[1].split("End of search list.")[0]
    folders = [folder for folder in listed.split() if "include/c++" in folder]
    flags = ["--extra-arg=--target=x86_64-w64-mingw32", "--extra-arg=-Wno-unknown-warning-option"]
    return flags + [f"--extra-arg=-isystem{folder}" for folder in folders]


def check(unit: Unit, arguments: list[str]) -> str:
    """The findings, or an empty text."""
    command = ["clang-tidy-19", "--quiet", "-p", str(ROOT / "build" / unit.preset), *arguments, str(unit.source)]
    result = subprocess.run(command, check=False, capture_output=True, text=True)
    if result.returncode == 0 and not result.stdout.strip():
        return ""
    return result.stdout.strip() or result.stderr.strip() or f"clang-tidy ended with {result.returncode}"


def select_units(presets: list[str]) -> list[Unit]:
    """Each source once: the pure core natively."""
    units: dict[Path, Unit] = {}
    pure = {unit.source for unit in own_units("native")}
    for preset in presets:
        for unit in own_units(preset):
            if preset == "native" or unit.source not in pure:
                units.setdefault(unit.source, unit)
    return list(units.values())


def lint(unit: Unit, used: list[Path], arguments: list[str]) -> str:
    stamp = ROOT / "build" / "lint" / hashlib.sha256(f"{unit.preset} {unit.source}".encode()).hexdigest()
    now = digest(unit, used)
    if stamp.exists() and stamp.read_text() == now:
        return ""
    findings = check(unit, arguments)
    if not findings:
        stamp.write_text(now)
    print(f"{unit.preset} {unit.source.relative_to(ROOT)}: {'findings' if findings else 'clean'}", flush=True)
    return findings


def main(presets: list[str]) -> int:
    (ROOT / "build" / "lint").mkdir(parents=True, exist_ok=True)
    used = {preset: used_files(preset) for preset in presets}
    arguments = {preset: [] if preset == "native" else cross_arguments() for preset in presets}
    units = select_units(presets)
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        findings = pool.map(
            lambda unit: lint(unit, used[unit.preset].get(unit.output, []), arguments[unit.preset]), units
        )
        texts = [text for text in findings if text]
    print("\n".join(texts))
    print(f"{len(units)} sources, {len(texts)} with findings")
    return 1 if texts or not units else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
