"""Finds the tests that check nothing: C++ tests, page scripts and Python tests without an assertion.

A test may assert through a function of the tests' own whose name begins with Expect (in Python: with check or expect).
A C++ test or page script that may return before its first assertion is named too: it would pass without a check. It
should be made only for the rows that it applies to, or say that it is skipped.
"""

from __future__ import annotations

import ast
import re
from collections.abc import Iterator
from pathlib import Path

CPP_TEST = re.compile(r"^[ \t]*(?:TYPED_)?TEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\s*\)\s*\{", re.MULTILINE)
CPP_ASSERTION = re.compile(r"\b(?:(?:EXPECT|ASSERT)_\w+|ADD_FAILURE|FAIL|GTEST_SKIP|Expect[A-Z]\w*)[(<]")
SCRIPT_TEST = re.compile(r'^test\("((?:[^"\\]|\\.)*)",\s*function \(\) \{', re.MULTILINE)
# Those of tests/script/harness.js.
SCRIPT_ASSERTION = re.compile(r"\b(?:equal|isTrue|contains|throwsHResult|skip|expect[A-Z]\w*)\(")
PYTHON_ASSERTION = re.compile(r"assert|check|expect|fail$|skipTest$")
RETURN = re.compile(r"\breturn;")
TEXTS_AND_COMMENTS = re.compile(
    r"""//[^\n]*|/\*.*?\*/|R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)"|"(?:[^"\\\n]|\\.)*"|(?<![0-9A-Fa-f])'(?:[^'\\\n]|\\.)+'""",
    re.DOTALL,
)


def without_texts(source: str) -> str:
    """The same source with blanks for comments and texts; offsets and lines stay."""
    return TEXTS_AND_COMMENTS.sub(lambda found: re.sub(r"[^\n]", " ", found.group()), source)


def body_from(source: str, start: int) -> str:
    """From behind an opening brace to the closing one."""
    depth = 1
    for offset in range(start, len(source)):
        depth += {"{": 1, "}": -1}.get(source[offset], 0)
        if depth == 0:
            return source[start:offset]
    return source[start:]


def text_problems(path: Path, text: str, test: re.Pattern[str], assertion: re.Pattern[str]) -> Iterator[str]:
    source = without_texts(text)
    # The names of page scripts' tests are texts, so that tests are looked for where these still stand.
    for found in test.finditer(text):
        name = f"{path}:{text.count(chr(10), 0, found.start()) + 1}: {'.'.join(found.groups())}"
        body = body_from(source, found.end())
        first = assertion.search(body)
        if first is None:
            yield f"{name} asserts nothing"
        elif RETURN.search(body, 0, first.start()):
            yield f"{name} may return before it asserts"


def python_problems(path: Path, text: str) -> Iterator[str]:
    for node in ast.walk(ast.parse(text)):
        if isinstance(node, ast.FunctionDef) and node.name.startswith("test_"):
            calls = (call.func for call in ast.walk(node) if isinstance(call, ast.Call))
            names = (call.attr for call in calls if isinstance(call, ast.Attribute) and is_self(call.value))
            if not any(PYTHON_ASSERTION.match(name) for name in names):
                yield f"{path}:{node.lineno}: {node.name} asserts nothing"


def is_self(value: ast.expr) -> bool:
    return isinstance(value, ast.Name) and value.id == "self"


def problems(root: Path) -> list[str]:
    """A line with file and line number for each test of the checkout at `root` that checks nothing."""
    lines: list[str] = []
    for file in sorted((root / "tests").rglob("*.*")):
        path = file.relative_to(root)
        if file.suffix == ".cpp":
            lines += text_problems(path, file.read_text(encoding="utf-8"), CPP_TEST, CPP_ASSERTION)
        elif file.suffix == ".js":
            lines += text_problems(path, file.read_text(encoding="utf-8"), SCRIPT_TEST, SCRIPT_ASSERTION)
        elif file.suffix == ".py":
            lines += python_problems(path, file.read_text(encoding="utf-8"))
    return lines
