"""The example programs, built from the unpacked package alone, as a customer builds them."""

from __future__ import annotations

import shutil
import subprocess
import unittest
from pathlib import Path

from package_support import (
    BUILDS,
    PREFIX,
    TRIPLETS,
    end_prefix,
    fresh_folder,
    needs,
    prepare_prefix,
    run_program,
    unpacked,
)

SYSTEM_PROCESSORS = {"x64": "AMD64", "x86": "X86"}
# What the reference host's bridge library prints of the last push.
LAST_SCRIPT = '$.fn.CustomerSearchResultFromLH("[{\\"name\\":\\"Alder Court\\"}]")\n'


def setUpModule() -> None:
    prepare_prefix()


def tearDownModule() -> None:
    if PREFIX.exists():
        end_prefix()


def copy_package(name: str) -> Path:
    """The package in a folder of its own, which has nothing of the sources around it."""
    package = fresh_folder(name) / "paylodge"
    shutil.copytree(unpacked(), package)
    return package


def run_in(folder: Path, *command: str) -> None:
    result = subprocess.run(command, cwd=folder, capture_output=True, check=False, encoding="utf-8")
    if result.returncode != 0:
        raise AssertionError(f"{' '.join(command)}\n{result.stdout}{result.stderr}")


class Examples(unittest.TestCase):
    """The tests, once for each architecture."""

    architecture: str

    def compiler(self, language: str) -> str:
        return f"{TRIPLETS[self.architecture]}-{language}"

    def check_programs(self, package: Path, folder: Path) -> None:
        """They run beside the component of the package."""
        needs(self.architecture)
        for name in ("Paylodge.dll", "Paylodge.manifest"):
            shutil.copy(package / self.architecture / name, folder)
        shutil.copy(BUILDS[self.architecture] / "refhost" / "Oskerin.dll", folder)
        shutil.copy(package / "examples/registration-free/registration_free.exe.manifest", folder)

        pushes = run_program(folder / "host-program.exe", architecture=self.architecture, OSKERIN_SCRIPT_ECHO="1")
        self.assertIn("As events:\nevent 5: \"R-1001\"\n", pushes.stdout)
        self.assertTrue(pushes.stdout.endswith(LAST_SCRIPT), pushes.stdout)
        self.assertEqual(pushes.returncode, 0)
        # The object is created; the host, without which it cannot answer, is not registered here.
        accounts = run_program(folder / "registration_free.exe", architecture=self.architecture)
        self.assertIn("no accounts, is Ledgerhall there?", accounts.stdout)

    def test_build_with_cmake(self) -> None:
        package = copy_package(f"built with cmake {self.architecture}")
        build = package.parent / "build"
        run_in(
            package.parent,
            "cmake", "-G", "Ninja", "-S", str(package / "examples"), "-B", str(build), "-DCMAKE_SYSTEM_NAME=Windows",
            f"-DCMAKE_SYSTEM_PROCESSOR={SYSTEM_PROCESSORS[self.architecture]}",
            f"-DCMAKE_C_COMPILER={self.compiler('gcc')}", f"-DCMAKE_CXX_COMPILER={self.compiler('g++')}",
            "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Werror",
        )  # fmt: skip
        run_in(build, "cmake", "--build", ".")
        self.check_programs(package, build)

    def test_build_by_hand(self) -> None:
        package = copy_package(f"built by hand {self.architecture}")
        folder = package.parent / "programs"
        folder.mkdir()
        sources = {"host-program": "host-program/main.cpp", "registration_free": "registration-free/registration_free.cpp"}
        for program, source in sources.items():
            entry = ["-municode"] if program == "host-program" else []
            run_in(
                package,
                self.compiler("g++"), "-std=c++17", "-static", *entry, "-I", "include", "-o", str(folder / f"{program}.exe"),
                f"examples/{source}", "include/paylodge_i.c", "-lole32", "-loleaut32", "-luuid",
            )  # fmt: skip
        self.check_programs(package, folder)

    def test_ids_and_interfaces_serve_c_programs(self) -> None:
        package = copy_package(f"built as C {self.architecture}")
        (package / "ids.c").write_text(
            '#define COBJMACROS\n#include "paylodge.h"\n#include "event_ids.h"\n'
            "const IID* const ids[] = {&IID_IPaylodge8, &IID_IPaylodgeCtrl10, &DIID__IPaylodgeCtrlEvents,\n"
            "    &CLSID_Paylodge, &CLSID_PaylodgeCtrl, &LIBID_PAYLODGELib};\n"
            "HRESULT Ask(IPaylodge8* object, BSTR* names) { return IPaylodge8_GetItems(object, names); }\n"
            "int main(void) { return ids[0]->Data1 == 0 || DISPID_TRANSACTION_ID != 5; }\n"
        )
        run_in(package, self.compiler("gcc"), "-static", "-I", "include", "-o", "ids.exe", "ids.c", "include/paylodge_i.c")
        needs(self.architecture)
        self.assertEqual(run_program(package / "ids.exe", architecture=self.architecture).returncode, 0)


class ExamplesX64(Examples):
    architecture = "x64"


class ExamplesX86(Examples):
    architecture = "x86"


# Only its kinds are run.
del Examples
