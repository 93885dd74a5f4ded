"""What ./dev build builds: the component and the reference host, and nothing else."""

from __future__ import annotations

import subprocess
import unittest
from pathlib import Path

BUILD = Path(__file__).resolve().parents[2] / "build"
FOLDERS = "idl com control hostapi frame/browser frame/registrar lhxml storage bridge operations frame/module refhost".split()


def default_folders(preset: str) -> list[str]:
    """Asks ninja, which knows the targets of a flavour once it is configured."""
    if not (BUILD / preset / "build.ninja").exists():
        raise unittest.SkipTest(f"{preset} is not configured: './dev build' does that")
    command = ["ninja", "-C", str(BUILD / preset), "-t", "query", "all"]
    lines = subprocess.run(command, capture_output=True, check=True, encoding="utf-8").stdout.splitlines()
    inputs = lines[lines.index("  input: phony") + 1 : lines.index("  outputs:")]
    return [line.strip().removesuffix("/all") for line in inputs]


class DefaultTarget(unittest.TestCase):
    def test_is_the_component_and_the_reference_host(self) -> None:
        for preset in ("x64", "x86"):
            with self.subTest(preset):
                self.assertEqual(default_folders(preset), FOLDERS)
