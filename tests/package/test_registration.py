"""The registry after the module was registered and unregistered, in a prefix that holds nothing but the platform."""

from __future__ import annotations

import unittest

from expected_registry import PAYLODGE, expected_machine, expected_type_library, expected_user
from package_support import (
    BUILDS,
    USER_CLASSES,
    clean_registry,
    deviations,
    end_prefix,
    needs,
    reg,
    regsvr32,
    run_program,
    windows_path,
)

CLASS_KEYS = {"x64": "HKLM\\Software\\Classes\\CLSID", "x86": "HKLM\\Software\\Classes\\Wow6432Node\\CLSID"}


def setUpModule() -> None:
    clean_registry()


def tearDownModule() -> None:
    end_prefix()


class Registration(unittest.TestCase):
    """The tests, once for each architecture."""

    architecture: str
    maxDiff = None

    def setUp(self) -> None:
        needs(self.architecture)
        self.module = BUILDS[self.architecture] / "Paylodge.dll"
        self.addCleanup(self.regsvr32, "/u")

    def regsvr32(self, *switches: str) -> None:
        self.assertEqual(regsvr32(self.architecture, self.module, *switches), 0)

    def check_clean(self) -> None:
        self.assertEqual(deviations(), {})

    def test_writes_for_the_machine_what_the_scripts_say_and_takes_it_back(self) -> None:
        expected = expected_machine(self.architecture, windows_path(self.module))
        for _ in ("first", "again"):
            self.regsvr32()
            self.assertEqual(deviations(expected), {})
        for _ in ("first", "again"):
            self.regsvr32("/u")
            self.check_clean()

    def test_removes_foreign_values_with_the_class_keys_and_keeps_foreign_keys_elsewhere(self) -> None:
        class_key = f"{CLASS_KEYS[self.architecture]}\\{PAYLODGE}"
        program_key = "HKLM\\Software\\Classes\\Paylodge.Paylodge"
        foreign = f"{program_key}\\Foreign"
        self.assertEqual(reg("add", class_key, "/v", "Foreign", "/d", "x", "/f"), 0)
        self.assertEqual(reg("add", foreign, "/f"), 0)
        self.addCleanup(reg, "delete", program_key, "/f")

        self.regsvr32()
        self.assertNotEqual(reg("query", class_key, "/v", "Foreign"), 0, "the class key is made anew")
        self.assertEqual(reg("query", foreign), 0)
        self.assertEqual(reg("add", f"{class_key}\\Foreign", "/f"), 0)

        self.regsvr32("/u")
        self.assertNotEqual(reg("query", class_key), 0, "the class key goes with all that is in it")
        self.assertEqual(reg("query", foreign), 0)
        self.assertNotEqual(reg("query", f"{program_key}\\CLSID"), 0)

    def test_writes_for_the_current_user_what_the_scripts_say_and_takes_it_back(self) -> None:
        program = BUILDS[self.architecture] / "tests" / "package" / "register_for_user.exe"
        own = expected_user(windows_path(program))
        # Wine registers a user's type library for the machine. The classes' root stays: the scripts never remove it.
        library = expected_type_library(self.architecture, windows_path(program))
        root = {USER_CLASSES: {}, USER_CLASSES + "\\clsid": {}}
        self.addCleanup(reg, "delete", "HKCU\\Software\\Classes", "/f")

        self.assertEqual(run_program(program).returncode, 0)
        self.assertEqual(deviations(own | library | root), {})
        self.assertEqual(run_program(program, "/u").returncode, 0)
        self.assertEqual(deviations(root), {})


class RegistrationX64(Registration):
    architecture = "x64"


class RegistrationX86(Registration):
    architecture = "x86"


# Only its kinds are run.
del Registration
