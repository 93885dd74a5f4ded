"""Prints what has to be built for a run of tests: a line for each flavour, its name and the targets.

With a filter, only the test programs that may have a test that it selects; the flavours have to be configured then.
"""

from __future__ import annotations

import argparse
import sys
from pathlib import Path

from filters import Filter
from jobs import KINDS, Jobs, Paths


def main(arguments: list[str]) -> int:
    parser = argparse.ArgumentParser(description="Prints what has to be built for a run of tests.")
    parser.add_argument("kinds", nargs="+", choices=KINDS, metavar="KIND")
    parser.add_argument("--filter", default="", metavar="TEXT")
    options = parser.parse_args(arguments)
    root = Path(__file__).resolve().parents[2]
    for preset, names in Jobs(Paths(root, root / "build"), Filter(options.filter), options.kinds).targets().items():
        print(preset, *names)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
