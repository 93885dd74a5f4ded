"""How clang's tools are told to compile what the cross compiler compiles."""

from __future__ import annotations

import sys
import unittest
from pathlib import Path

TOOLS = Path(__file__).resolve().parents[2] / "tools"
sys.path.insert(0, str(TOOLS))

from compile_database import arguments  # noqa: E402


class Arguments(unittest.TestCase):
    def test_the_target_stands_for_the_cross_compiler(self) -> None:
        words = arguments("x64", "/usr/bin/x86_64-w64-mingw32-g++-posix -DX -c a.cpp")
        self.assertIn("--target=x86_64-w64-mingw32", words)
        self.assertEqual(words[-3:], ["-DX", "-c", "a.cpp"])

    def test_precompiled_headers_are_left_out(self) -> None:
        command = "g++ -Winvalid-pch -include '/a b/CMakeFiles/test_headers.dir/cmake_pch.hxx' -c a.cpp"
        self.assertEqual(arguments("native", command), ["g++", "-Winvalid-pch", "-c", "a.cpp"])

    def test_other_headers_stay(self) -> None:
        self.assertEqual(arguments("native", "g++ -include own.hpp -c a.cpp")[1:3], ["-include", "own.hpp"])

    def test_options_that_only_the_cross_compiler_knows_are_left_out(self) -> None:
        self.assertNotIn("-fno-allocation-dce", arguments("x64", "g++ -fno-allocation-dce -c a.cpp"))


if __name__ == "__main__":
    unittest.main()
