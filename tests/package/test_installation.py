"""The package on a machine that has never seen the component: it registers, works and unregisters."""

from __future__ import annotations

import shutil
import unittest

from expected_registry import expected_machine
from package_support import (
    BUILDS,
    SCRATCH,
    TOP,
    clean_registry,
    deviations,
    end_prefix,
    needs,
    regsvr32,
    run_system,
    unpacked,
    windows_path,
)

SCRIPT = 'WScript.Echo(new ActiveXObject("Paylodge.Paylodge").GetAccounts("Bank"));'


def setUpModule() -> None:
    clean_registry()


def tearDownModule() -> None:
    end_prefix()


class Installation(unittest.TestCase):
    maxDiff = None

    def setUp(self) -> None:
        for architecture in BUILDS:
            needs(architecture)

    def run_command(self, name: str) -> str:
        # A command line of its own: the name has characters that the command interpreter knows.
        result = run_system("x64", "cmd", "/d", "/c", "call", windows_path(unpacked() / name))
        self.assertEqual(result.returncode, 0, result.stdout)
        return result.stdout

    def list_bank_accounts(self, architecture: str) -> str:
        """What a script of the given architecture gets, on a machine with Ledgerhall."""
        host = BUILDS[architecture] / "refhost" / "refhost.dll"
        shutil.copy(TOP / "build" / "riverside.lhcompany", SCRATCH / "company.lhcompany")
        script = SCRATCH / "accounts.js"
        script.write_text(SCRIPT)
        self.assertEqual(regsvr32(architecture, host), 0)
        try:
            return run_system(architecture, "cscript", "//nologo", windows_path(script)).stdout
        finally:
            self.assertEqual(regsvr32(architecture, host, "/u"), 0)

    def test_registers_works_and_unregisters(self) -> None:
        expected = {}
        for architecture in BUILDS:
            expected |= expected_machine(architecture, windows_path(unpacked() / architecture / "Paylodge.dll"))
        self.addCleanup(self.run_command, "unregister.cmd")

        self.assertEqual(self.run_command("register.cmd"), "Registered: x64\\Paylodge.dll\nRegistered: x86\\Paylodge.dll\n")
        self.assertEqual(deviations(expected), {})
        for architecture in BUILDS:
            self.assertIn("<AccountName>Riverside Checking</AccountName>\n", self.list_bank_accounts(architecture))
        self.assertEqual(
            self.run_command("unregister.cmd"), "Unregistered: x64\\Paylodge.dll\nUnregistered: x86\\Paylodge.dll\n"
        )
        self.assertEqual(deviations(), {})

    def test_a_module_that_cannot_be_registered_is_named(self) -> None:
        folder = SCRATCH / "incomplete"
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir()
        shutil.copy(unpacked() / "register.cmd", folder)
        result = run_system("x64", "cmd", "/d", "/c", windows_path(folder / "register.cmd"))
        self.assertIn("x64\\Paylodge.dll failed.", result.stdout)
        self.assertIn("x86\\Paylodge.dll failed.", result.stdout)
        self.assertEqual(result.returncode, 1)
        self.assertEqual(deviations(), {})
