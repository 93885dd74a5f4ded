"""Takes the time out of a type library that widl made, so that the same interfaces give the same bytes."""

from __future__ import annotations

import re
import sys
from pathlib import Path

# Two entries of custom data: a text that ends in the time, and the time as a number (VT_UI4).
DATED = re.compile(rb"(Created by WIDL version [0-9.]+ at ).{24}(\nW*\x13\x00).{4}", re.DOTALL)
UNDATED = rb"\1Thu Jan  1 00:00:00 1970\2\0\0\0\0"


def main() -> int:
    file = Path(sys.argv[1])
    content, found = DATED.subn(UNDATED, file.read_bytes())
    if found != 1:
        print(f"{file}: the time that widl leaves in a type library is not where it used to be", file=sys.stderr)
        return 1
    file.write_bytes(content)
    return 0


if __name__ == "__main__":
    sys.exit(main())
