"""What a text selects of the tests: those with the text in their full name, and those of a file with that name.

Letter case does not count. A full name is KIND/PROGRAM/SUITE.TEST, as a failure prints it. The name of a source selects
the tests named after it: operations/payment.cpp those of tests/unit/operations/payment_tests.cpp.
"""

from __future__ import annotations

import difflib
import re
from collections.abc import Iterable
from dataclasses import dataclass
from pathlib import Path

from sources import TestFile

SOURCE_SUFFIXES = (".cpp", ".hpp", ".js", ".mjs", ".py")
SUGGESTIONS = 5


@dataclass(frozen=True)
class Filter:
    """An empty text selects everything. A loose filter also expects names that tests with parameters put together."""

    text: str = ""
    loose: bool = False

    def selects(self, full_name: str) -> bool:
        return self.text.casefold() in full_name.casefold()

    def selects_file(self, file: Path) -> bool:
        """A name selects files that have it in theirs; with folders before it, in their path."""
        text = self.text.casefold()
        for suffix in SOURCE_SUFFIXES:
            text = text.removesuffix(suffix)
        path = file.with_suffix("").as_posix().casefold()
        return text in (path if "/" in text else file.stem.casefold())

    def selects_all_of(self, job_name: str) -> bool:
        return self.text.casefold() in f"{job_name}/".casefold()

    def may_select(self, job_name: str, files: list[TestFile], kinds: tuple[str, ...]) -> bool:
        """Whether a job, which has its tests in these files, may have one that is selected. Unknown files may have any."""
        if self.selects_all_of(job_name) or any(self.selects_file(file.path) for file in files):
            return True
        wanted = self._rest_of_full_name(job_name, kinds)
        if not wanted or not files:
            return bool(wanted)
        names = [name.casefold() for file in files for name in file.names]
        if any(wanted.casefold() in name or name in wanted.casefold() for name in names):
            return True
        return any(file.makes_names for file in files) and self._stands_in(files, wanted)

    def _rest_of_full_name(self, job_name: str, kinds: tuple[str, ...]) -> str:
        """What has to stand in the name of a test of this job; nothing when the text begins like another job's name."""
        text, prefix = self.text, f"{job_name}/"
        if "/" in text and text.split("/")[0].casefold() in kinds:
            return text[len(prefix) :] if text.casefold().startswith(prefix.casefold()) else ""
        return text

    def _stands_in(self, files: list[TestFile], wanted: str) -> bool:
        """Parameters stand somewhere in the sources, and are numbers where they have no name."""
        words = [word for word in re.split(r"[/.]", wanted) if word and not word.isdigit()]
        if self.loose:
            words = [part for word in words for part in re.findall(r"[A-Z]?[a-z]+|[A-Z]+(?![a-z])", word)]
        return all(any(word.casefold() in file.text.casefold() for file in files) for word in words)

    def suggestions(self, known: Iterable[str]) -> list[str]:
        """The names that are nearest to the text."""
        names = {name.casefold(): name for name in known}
        wanted = self.text.casefold().rsplit("/", 1)[-1]
        return [names[near] for near in difflib.get_close_matches(wanted, names, SUGGESTIONS)]
