"""Writes build/compile_commands.json for clang's tools, clangd among them, which look for it there.

It has each source once, as clang compiles it: natively what is compiled natively, which is the pure core, and everything
else for 64-bit Windows. Precompiled headers are left out, so that a source has to include what it uses.
"""

from __future__ import annotations

import json
import shlex
import sys
from pathlib import Path
from typing import Any

ROOT = Path(__file__).resolve().parent.parent
PRESETS = ("native", "x64")
# The options with which clang compiles as the cross compiler does, and which of that one's options it does not know.
CROSS_COMPILER = ["clang++-19", "--target=x86_64-w64-mingw32", "-Wno-unknown-warning-option"]
CROSS_COMPILER_ONLY = ("-fno-allocation-dce",)

Entry = dict[str, Any]


def is_own(file: Path) -> bool:
    return file.is_relative_to(ROOT) and not file.is_relative_to(ROOT / "build")


def arguments(preset: str, command: str) -> list[str]:
    words = shlex.split(command)
    if "-include" in words and words[words.index("-include") + 1].endswith("cmake_pch.hxx"):
        where = words.index("-include")
        del words[where : where + 2]
    if preset == "native":
        return words
    return CROSS_COMPILER + [word for word in words[1:] if word not in CROSS_COMPILER_ONLY]


def read(preset: str) -> list[Entry]:
    file = ROOT / "build" / preset / "compile_commands.json"
    entries = json.loads(file.read_text()) if file.exists() else []
    return [
        {
            "directory": entry["directory"],
            "file": entry["file"],
            "arguments": arguments(preset, entry["command"]),
        }
        for entry in entries
        if Path(entry["file"]).suffix == ".cpp" and is_own(Path(entry["file"]))
    ]


def write() -> list[Entry]:
    """Returns what it wrote."""
    entries: dict[object, Entry] = {}
    for preset in PRESETS:
        for entry in read(preset):
            entries.setdefault(entry["file"], entry)
    file = ROOT / "build" / "compile_commands.json"
    file.write_text(json.dumps(list(entries.values()), indent=1))
    return list(entries.values())


if __name__ == "__main__":
    write()
    sys.exit(0)
