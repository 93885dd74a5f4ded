"""Runs clang-tidy over the sources that have changed since the upstream branch, as one test of ./dev test.

What is committed there has been looked at: without changes there is nothing to do. Prints the lines that run_tests.py
reads.
"""

from __future__ import annotations

import shutil
import subprocess
import sys
from pathlib import Path

import lint
from compile_database import ROOT

NAME = "changed sources"
PRESETS = ("native", "x64")
# More take longer than a test may.
MOST_SOURCES = 4


def git(root: Path, *words: str) -> list[str] | None:
    """The lines that git prints, or None when it fails."""
    try:
        result = subprocess.run(["git", *words], check=False, capture_output=True, text=True, cwd=root)
    except OSError:
        return None
    return result.stdout.splitlines() if result.returncode == 0 else None


def changed_files(root: Path) -> set[Path] | None:
    """C++ files that differ from where the branch left its upstream, also uncommitted ones; None outside of git."""
    base = ["HEAD"]
    for upstream in ("@{upstream}", "origin/main"):
        found = git(root, "merge-base", "HEAD", upstream)
        if found:
            base = found
            break
    tracked = git(root, "diff", "--name-only", "--diff-filter=d", base[0], "--")
    untracked = git(root, "ls-files", "--others", "--exclude-standard")
    if tracked is None or untracked is None:
        return None
    return {root / name for name in [*tracked, *untracked] if name.endswith((".cpp", ".hpp", ".h"))}


def affected(changed: set[Path]) -> list[tuple[lint.Unit, list[Path]]]:
    """What compiles a changed file, as far as it has been compiled."""
    presets = [preset for preset in PRESETS if (ROOT / "build" / preset / ".ninja_deps").exists()]
    used = {preset: lint.used_files(preset) for preset in presets}
    units = [(unit, used[unit.preset].get(unit.output, [])) for unit in lint.units(presets)]
    chosen = [(unit, files) for unit, files in units if unit.source in changed]
    headers = {file for file in changed if file.suffix != ".cpp"} - {
        file.resolve() for _, files in chosen for file in files
    }
    # One source that reads a header is enough to look into it.
    for unit, files in units:
        read = headers & {file.resolve() for file in files}
        if read:
            chosen.append((unit, files))
            headers -= read
    return chosen


def outcome() -> str:
    changed = changed_files(ROOT)
    if changed is None:
        return f"SKIP {NAME}: this is no git checkout, so that nothing tells what has changed"
    if not changed:
        print("no C++ source has changed since the upstream branch")
        return f"PASS {NAME}"
    if shutil.which("clang-tidy-19") is None:
        return f"SKIP {NAME}: clang-tidy-19 is not installed"
    chosen = affected(changed)
    if len(chosen) > MOST_SOURCES:
        return f"SKIP {NAME}: {len(chosen)} sources are to be looked at: './dev lint' does that"
    (ROOT / "build" / "lint").mkdir(parents=True, exist_ok=True)
    findings = [text for text in (lint.lint(unit, files) for unit, files in chosen) if text]
    if findings:
        return f"FAIL {NAME}: " + "\n".join(findings).replace("\n", "\n    ")
    return f"PASS {NAME}"


def main() -> int:
    line = outcome()
    print(line)
    print("END")
    return 1 if line.startswith("FAIL") else 0


if __name__ == "__main__":
    sys.exit(main())
