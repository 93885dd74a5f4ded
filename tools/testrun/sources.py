"""The sources of the tests: which program they are compiled into, and the names of the tests in them."""

from __future__ import annotations

import functools
import json
import re
from collections.abc import Iterator
from dataclasses import dataclass
from pathlib import Path

GTEST = re.compile(r"^\s*(?:TYPED_)?TEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\s*\)", re.MULTILINE)
# Tests whose names are made of more than what stands in such a line.
GTEST_MAKER = re.compile(r"^\s*(?:INSTANTIATE_|TYPED_)", re.MULTILINE)
SCRIPT_TEST = re.compile(r'^\w*[tT]est\("((?:[^"\\]|\\.)*)"', re.MULTILINE)
PYTHON_TEST = re.compile(r"^class (\w+)|^ +def (test_\w+)", re.MULTILINE)
INCLUDE = re.compile(r'^#include "(tests/[^"]+)"', re.MULTILINE)
# The target that an object file belongs to.
TARGET = re.compile(r" -o \S*CMakeFiles/([^/ ]+)\.dir/")


@dataclass(frozen=True)
class TestFile:
    """`path` starts at the top of the checkout; `names` are those of its tests without kind and program."""

    path: Path
    text: str
    names: tuple[str, ...]
    makes_names: bool


def test_names(suffix: str, text: str) -> Iterator[str]:
    if suffix == ".cpp":
        yield from (f"{suite}.{name}" for suite, name in GTEST.findall(text))
    elif suffix in (".js", ".mjs"):
        yield from SCRIPT_TEST.findall(text)
    elif suffix == ".py":
        suite = ""
        for name, test in PYTHON_TEST.findall(text):
            suite = name or suite
            if test:
                yield f"{suite}.{test}"


class Sources:
    """The test sources of the checkout at `root`, compiled in `build`."""

    def __init__(self, root: Path, build: Path) -> None:
        self._root = root
        self._build = build

    @functools.cache
    def file(self, path: Path) -> TestFile:
        text = (self._root / path).read_text(encoding="utf-8", errors="replace")
        return TestFile(path, text, tuple(test_names(path.suffix, text)), bool(GTEST_MAKER.search(text)))

    @functools.cache
    def programs(self, preset: str) -> dict[str, list[TestFile]]:
        """What each test program of a flavour is compiled from, as it was configured."""
        database = self._build / preset / "compile_commands.json"
        programs: dict[str, list[TestFile]] = {}
        for entry in json.loads(database.read_text()) if database.exists() else []:
            target, path = TARGET.search(entry["command"]), Path(entry["file"])
            if target and target[1].endswith("_tests") and path.is_relative_to(self._root / "tests"):
                programs.setdefault(target[1], []).append(self.file(path.relative_to(self._root)))
        return programs

    def knows(self, preset: str, name: str) -> bool:
        """Whether there still is such a program; of a flavour that was not configured here, every one."""
        programs = self.programs(preset)
        return not programs or name in programs

    def program(self, preset: str, name: str) -> list[TestFile]:
        """The sources of a program, the headers of tests that they include, and the sources of those."""
        files: dict[Path, TestFile] = {}
        waiting = list(self.programs(preset).get(name, []))
        while waiting:
            file = waiting.pop()
            if file.path not in files:
                files[file.path] = file
                included = [Path(path) for path in INCLUDE.findall(file.text)]
                used = included + [path.with_suffix(".cpp") for path in included]
                waiting += [self.file(path) for path in used if (self._root / path).exists()]
        return list(files.values())

    def known_names(self) -> set[str]:
        """Everything by which tests can be selected."""
        names: set[str] = set()
        for path in [*(self._root / "tests").rglob("*"), *(self._root / "workbench").rglob("*_tests.*")]:
            if path.suffix in (".cpp", ".js", ".mjs", ".py"):
                file = self.file(path.relative_to(self._root))
                suites = {name.split(".")[0] for name in file.names if path.suffix in (".cpp", ".py")}
                names |= {file.path.stem, *file.names, *suites} if file.names else set()
        return names
