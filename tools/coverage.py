"""Prints which lines of the sources the tests reach, from what a flavour that was compiled for it has counted.

The compiler's own gcov reads the counts, natively and for Windows. A line counts once, however many programs, templates
and flavours it was compiled for; one that holds a closing brace alone counts for nothing.
"""

from __future__ import annotations

import argparse
import functools
import json
import os
import re
import subprocess
import sys
from collections import defaultdict
from collections.abc import Iterable, Iterator
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
GCOV = {"native-coverage": "gcov", "x64-coverage": "x86_64-w64-mingw32-gcov-posix"}
# What is delivered or stands in for the host; the tests themselves are not measured.
MEASURED = ("bridge", "com", "control", "frame", "hostapi", "lhxml", "operations", "refhost", "storage", "workbench")
# Rooms with rooms of their own.
DIVIDED = ("frame", "refhost", "workbench")

# What the rooms are parts of; all others are parts of the component.
PARTS = {"refhost": "the reference host", "workbench": "the workbench"}

# For each file, how often each of its lines ran.
Counts = dict[Path, dict[int, int]]


def source(name: str, folder: Path) -> Path | None:
    """The measured source, from the top of the checkout, that a report names; None for what is not measured."""
    # The compilers for Windows are told to name files by where they lie in the checkout.
    for start in (folder, ROOT):
        path = (start / name).resolve()
        if path.is_file() and path.is_relative_to(ROOT):
            relative = path.relative_to(ROOT)
            return relative if relative.parts[0] in MEASURED and "tests" not in relative.parts else None
    return None


@functools.cache
def closing_lines(path: Path) -> frozenset[int]:
    """Lines with nothing but a closing brace: what the compiler counts there is how an exception leaves."""
    text = (ROOT / path).read_text(encoding="utf-8").splitlines()
    return frozenset(number for number, line in enumerate(text, 1) if re.fullmatch(r"\s*}[;)]*\s*", line))


def read_report(report: dict[str, object], folder: Path, counts: Counts) -> None:
    for file in report["files"]:  # type: ignore[attr-defined]
        path = source(file["file"], folder)
        if path:
            lines = counts.setdefault(path, {})
            for line in file["lines"]:
                number = line["line_number"]
                if number not in closing_lines(path):
                    lines[number] = lines.get(number, 0) + line["count"]


def run_gcov(preset: str, data: Path) -> list[dict[str, object]]:
    """gcov prints one report for each object."""
    command = [GCOV[preset], "--json-format", "--stdout", str(data)]
    output = subprocess.run(command, check=True, capture_output=True, text=True, cwd=data.parent).stdout
    return [json.loads(line) for line in output.splitlines() if line.strip()]


def read_counts(presets: Iterable[str]) -> Counts:
    counts: Counts = {}
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        for preset in presets:
            folder = ROOT / "build" / preset
            # Also objects that no program ran, whose lines count as not reached, and those of the tests: what stands in a
            # header is counted where it was compiled.
            notes = [file for file in folder.rglob("*.gcno") if "googletest" not in file.parts]
            data = [file.with_suffix(".gcda") if file.with_suffix(".gcda").exists() else file for file in notes]
            for reports in pool.map(lambda file, preset=preset: run_gcov(preset, file), data):
                for report in reports:
                    read_report(report, folder, counts)
    return counts


def room(path: Path) -> str:
    return "/".join(path.parts[: 2 if path.parts[0] in DIVIDED and len(path.parts) > 2 else 1])


def part(path: Path) -> str:
    return PARTS.get(path.parts[0], "the component")


def ranges(lines: Iterable[int]) -> Iterator[str]:
    """7, 8, 9, 12 as 7-9, 12."""
    first = last = None
    for line in [*sorted(lines), None]:
        if line is None or last is None or line != last + 1:
            if last is not None:
                yield str(first) if first == last else f"{first}-{last}"
            first = line
        last = line


def table(counts: Counts) -> list[str]:
    rooms: dict[str, list[int]] = defaultdict(lambda: [0, 0])
    parts: dict[str, list[int]] = defaultdict(lambda: [0, 0])
    for path, lines in counts.items():
        for total in (rooms[room(path)], parts[part(path)], parts["all"]):
            total[0] += len(lines)
            total[1] += sum(1 for count in lines.values() if count)
    text = [f"{'folder':22}{'lines':>8}{'reached':>9}{'percent':>9}"]
    for name, (total, reached) in [*sorted(rooms.items()), *sorted(parts.items(), key=lambda row: (row[0] == "all", row[0]))]:
        if total:
            text.append(f"{name:22}{total:8}{reached:9}{100 * reached / total:8.1f} %")
    return text


def missed(counts: Counts) -> list[str]:
    text = []
    for path, lines in sorted(counts.items()):
        not_reached = [line for line, count in lines.items() if not count]
        if not_reached:
            text.append(f"{path}: {', '.join(ranges(not_reached))}")
    return text


def main(arguments: list[str]) -> int:
    parser = argparse.ArgumentParser(description="Prints which lines of the sources the tests reach.")
    parser.add_argument("presets", nargs="+", choices=GCOV, metavar="PRESET")
    parser.add_argument("--missed", action="store_true", help="also print the lines that no test reaches")
    options = parser.parse_args(arguments)
    counts = read_counts(options.presets)
    if not counts:
        print("nothing was counted: the tests have to be built and run first", file=sys.stderr)
        return 1
    print("\n".join(table(counts) + (missed(counts) if options.missed else [])))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
