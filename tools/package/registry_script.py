"""Reads the registry scripts of the component: which keys a script creates, and what stands in them."""

from __future__ import annotations

import re
from collections.abc import Iterator
from dataclasses import dataclass, field
from pathlib import Path

WORD = re.compile(r"'(?P<quoted>(?:[^']|'')*)'|(?P<plain>[^\s']+)")


@dataclass
class Key:
    """A key with its default value and its named values; all data is text, as in the scripts."""

    text: str | None = None
    values: dict[str, str] = field(default_factory=dict)
    keys: dict[str, Key] = field(default_factory=dict)

    def at(self, *path: str) -> Key:
        """The key under this path; one without content when the script does not have it."""
        return self.keys.get(path[0], Key()).at(*path[1:]) if path else self


def read_script(file: Path) -> Key:
    """The classes root of a script."""
    words = list(words_of(file.read_text(encoding="ascii")))
    if words[:2] != ["HKCR", "{"]:
        raise ValueError(f"{file} does not begin with the classes root")
    root = Key()
    rest = iter(words[2:])
    read_entries(rest, root)
    if next(rest, None) is not None:
        raise ValueError(f"{file} does not end with its root")
    return root


def words_of(script: str) -> Iterator[str]:
    for match in WORD.finditer(script):
        quoted = match["quoted"]
        yield match["plain"] if quoted is None else quoted.replace("''", "'")


def read_entries(words: Iterator[str], key: Key) -> None:
    """Reads up to the closing brace of the key. A key that stands there twice is one key."""
    latest = key
    for word in words:
        if word == "}":
            return
        if word == "{":
            read_entries(words, latest)
        elif word == "Val":
            name = next(words)
            key.values[name] = read_text(words)
        elif word == "=":
            latest.text = read_data(words)
        elif word not in ("NoRemove", "ForceRemove"):
            latest = key.keys.setdefault(word, Key())
    raise ValueError("a brace is not closed")


def read_text(words: Iterator[str]) -> str:
    if next(words) != "=":
        raise ValueError("a value has no equals sign")
    return read_data(words)


def read_data(words: Iterator[str]) -> str:
    kind = next(words)
    if kind != "s":
        raise ValueError(f"data of the type '{kind}' has no place in a manifest")
    return next(words)
