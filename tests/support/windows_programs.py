"""What the tests that start Windows programs from outside share."""

from __future__ import annotations

import shutil
import sys
import unittest
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(TOP / "tools" / "testrun"))

from wine_session import works  # noqa: E402


def needs(architecture: str) -> None:
    """Skips a test on a machine that does not run such programs."""
    if not works(architecture):
        raise unittest.SkipTest(f"Wine does not run {architecture} programs here")


def empty_folder(folder: Path) -> Path:
    """The folder, new or with nothing in it any more."""
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    return folder
