"""The TypeScript declarations: made from the interface definitions, and true for the compiler."""

from __future__ import annotations

import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(TOP / "tools" / "page_kit"))

from declarations import PAGE, make_declarations, read_interfaces  # noqa: E402

COMPILER = TOP / "build" / "third-party" / "typescript" / "lib" / "tsc.js"
NODE = shutil.which("node")

PAGE_SCRIPT = """
const lh = new ActiveXObject("Paylodge.Paylodge");
const names: string = lh.GetAccounts("Bank");
const taxable: boolean = lh.IsTaxableItem("Lavender, 2 litre");
lh.IsScanTxnCreated = taxable;
lh.ReconBatchData = lh.ProcessLHRequest("<AccountQueryRq/>") + names;
const token: string = paylodgeControl.GetCardBasedToken2(1, "header", "body");
paylodgeControl.StartEMV(token);
const connected: boolean = paylodgeControl.EMVIsDeviceConnected();
const sink: Partial<PaylodgeControlEvents> = { TransactionID(id: string) { WScript.Echo(id + connected); } };
"""

MISTAKES = {
    "lh.GetAccount('Bank');": "GetAccount",
    "lh.GetAccounts(1);": "number",
    "lh.CreateAccount('a', 'b');": "Expected 3 arguments",
    "const n: number = lh.TransactionID;": "string",
    "paylodgeControl.HandleAidSelection();": "HandleAidSelection",
}


class Declarations(unittest.TestCase):
    def test_are_those_that_the_interface_definitions_make(self) -> None:
        self.assertEqual(
            (TOP / PAGE).read_text(encoding="utf-8"),
            make_declarations(TOP),
            f"{PAGE} is out of date: tools/page_kit/declarations.py writes it anew",
        )

    def test_hold_every_member(self) -> None:
        text = (TOP / PAGE).read_text(encoding="utf-8")
        interfaces = read_interfaces((TOP / "idl/paylodge.idl").read_text(encoding="utf-8"))
        members = {member.name for each in interfaces.values() for member in each}
        self.assertGreater(len(members), 90)
        for name in members:
            self.assertRegex(text, rf"\n    (readonly )?{re.escape(name)}[(:]")


@unittest.skipUnless(NODE, "node is missing: the TypeScript compiler cannot run")
class Compiler(unittest.TestCase):
    def compile(self, name: str, text: str, *options: str) -> subprocess.CompletedProcess[str]:
        with tempfile.TemporaryDirectory() as folder:
            file = Path(folder, name)
            file.write_text(text, encoding="utf-8")
            fixed = ["--noEmit", "--lib", "es5,scripthost", *options]
            command = [str(NODE), str(COMPILER), *fixed, str(TOP / PAGE), str(file)]
            return subprocess.run(command, check=False, capture_output=True, text=True)

    def test_accepts_a_page_that_uses_both_objects(self) -> None:
        result = self.compile("page.ts", PAGE_SCRIPT, "--strict")
        self.assertEqual(result.returncode, 0, result.stdout)

    def test_finds_what_is_no_member_or_has_other_types(self) -> None:
        for mistake, words in MISTAKES.items():
            with self.subTest(mistake):
                page = 'const lh = new ActiveXObject("Paylodge.Paylodge");\n' + mistake
                result = self.compile("page.ts", page, "--strict")
                self.assertNotEqual(result.returncode, 0)
                self.assertIn(words, result.stdout)

    def test_accepts_the_examples(self) -> None:
        for example in sorted((TOP / "examples").glob("*.js")):
            with self.subTest(example.name):
                text = example.read_text(encoding="utf-8")
                result = self.compile(example.name, text, "--allowJs", "--checkJs")
                self.assertEqual(result.returncode, 0, result.stdout)


if __name__ == "__main__":
    unittest.main()
