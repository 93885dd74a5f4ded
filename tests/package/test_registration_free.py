"""The component without registration: the manifest takes the registry's place."""

from __future__ import annotations

import shutil
import unittest

from package_support import (
    BUILDS,
    PREFIX,
    SCRATCH,
    SYSTEM_FOLDERS,
    TOP,
    clean_registry,
    deviations,
    end_prefix,
    fresh_folder,
    needs,
    regsvr32,
    run_program,
)

PROGRAM = "registration_free.exe"
SCRIPT = """
var paylodge = new ActiveXObject("Paylodge.Paylodge");
paylodge.ReconFeeData = "fees";
WScript.Echo(paylodge.ReconFeeData);
"""


def setUpModule() -> None:
    clean_registry()


def tearDownModule() -> None:
    # Nothing here may have registered the component by itself.
    try:
        if found := deviations():
            raise AssertionError(found)
    finally:
        end_prefix()


class RegistrationFree(unittest.TestCase):
    """The tests, once for each architecture."""

    architecture: str

    def setUp(self) -> None:
        needs(self.architecture)
        self.build = BUILDS[self.architecture]
        self.folder = fresh_folder(f"registration-free-{self.architecture}")
        for name in ("Paylodge.dll", "Paylodge.manifest", f"tests/package/{PROGRAM}"):
            shutil.copy(self.build / name, self.folder)
        self.copy_application_manifest(PROGRAM)

    def copy_application_manifest(self, program: str) -> None:
        example = TOP / "examples" / "registration-free"
        shutil.copy(example / f"{PROGRAM}.manifest", self.folder / f"{program}.manifest")

    def register_host(self) -> None:
        host = self.build / "refhost" / "refhost.dll"
        shutil.copy(TOP / "build" / "riverside.lhcompany", SCRATCH / "company.lhcompany")
        self.assertEqual(regsvr32(self.architecture, host), 0)
        self.addCleanup(regsvr32, self.architecture, host, "/u")

    def run_example(self) -> tuple[int, str]:
        result = run_program(self.folder / PROGRAM, architecture=self.architecture)
        return result.returncode, result.stdout

    def test_the_example_lists_the_bank_accounts(self) -> None:
        self.register_host()
        status, text = self.run_example()
        self.assertIn("<AccountName>Riverside Checking</AccountName>\n", text)
        self.assertEqual(status, 0)

    def test_the_manifest_in_the_module_serves_where_the_file_is_missing(self) -> None:
        (self.folder / "Paylodge.manifest").unlink()
        self.assertIn("is Ledgerhall there?", self.run_example()[1])

    def test_without_the_manifest_of_the_application_there_is_no_object(self) -> None:
        (self.folder / f"{PROGRAM}.manifest").unlink()
        self.assertEqual(self.run_example(), (1, "no object: 0x800401f3\n"))

    def test_a_script_creates_the_object(self) -> None:
        system = PREFIX / "drive_c" / "windows" / SYSTEM_FOLDERS[self.architecture]
        shutil.copy(system / "cscript.exe", self.folder)
        (self.folder / "page.js").write_text(SCRIPT)
        self.assertNotIn("fees", self.run_script())
        self.copy_application_manifest("cscript.exe")
        self.assertEqual(self.run_script(), "fees\n")

    def run_script(self) -> str:
        host = self.folder / "cscript.exe"
        return run_program(host, "//nologo", "page.js", architecture=self.architecture).stdout


class RegistrationFreeX64(RegistrationFree):
    architecture = "x64"


class RegistrationFreeX86(RegistrationFree):
    architecture = "x86"


# Only its kinds are run.
del RegistrationFree
