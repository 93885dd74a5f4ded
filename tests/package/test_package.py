"""The package: what is in it, that it is the same each time, and how the modules in it are made."""

from __future__ import annotations

import hashlib
import re
import struct
import subprocess
import unittest
import xml.etree.ElementTree as ElementTree
import zipfile

from expected_registry import CONTROL, DISPATCH, DUAL, EVENTS, INTERFACES, LIBRARY, PAYLODGE
from package import NO_TIME, TRIPLETS, write_package
from package_support import BUILDS, TOP, fresh_folder, package, unpacked

FILES = """CHANGELOG.md README.md SHA256SUMS docs/host-integration.md docs/page-kit/paylodge.d.ts docs/script-reference.md
examples/CMakeLists.txt examples/host-program/main.cpp
examples/registration-free/registration_free.cpp examples/registration-free/registration_free.exe.manifest
include/event_ids.h include/paylodge.h include/paylodge_i.c register.cmd unregister.cmd
x64/Paylodge.dll x64/Paylodge.dll.debug x64/Paylodge.manifest x64/Paylodge.tlb
x86/Paylodge.dll x86/Paylodge.dll.debug x86/Paylodge.manifest x86/Paylodge.tlb""".split()

# Windows itself ships these.
SYSTEM_LIBRARIES = {"advapi32", "gdi32", "kernel32", "msvcrt", "ole32", "oleaut32", "urlmon", "user32"}
ASSEMBLY = "{urn:schemas-microsoft-com:asm.v1}"

HIGH_ENTROPY_ADDRESSES = 0x20
DYNAMIC_BASE = 0x40
NO_EXECUTE = 0x100
RELOCATIONS_STRIPPED = 0x1
BASE_RELOCATIONS = 5


def project_version() -> str:
    text = (TOP / "CMakeLists.txt").read_text(encoding="utf-8")
    match = re.search(r"project\(Paylodge VERSION ([0-9.]+)", text)
    assert match, "CMakeLists.txt names no version"
    return match[1]


def objdump(architecture: str, *arguments: str) -> str:
    command = [f"{TRIPLETS[architecture]}-objdump", *arguments]
    return subprocess.run(command, capture_output=True, check=True, encoding="utf-8").stdout


class Module:
    """The headers of a module."""

    def __init__(self, architecture: str) -> None:
        self.architecture = architecture
        self.file = unpacked() / architecture / "Paylodge.dll"
        self.bytes = self.file.read_bytes()
        header = self.number("<I", 0x3C) + 4
        optional = header + 20
        self.machine = self.number("<H", header)
        self.time = self.number("<I", header + 4)
        self.characteristics = self.number("<H", header + 18)
        self.dll_characteristics = self.number("<H", optional + 70)
        directories = optional + (112 if architecture == "x64" else 96)
        self.relocations_size = self.number("<I", directories + 8 * BASE_RELOCATIONS + 4)

    def number(self, kind: str, offset: int) -> int:
        return int(struct.unpack_from(kind, self.bytes, offset)[0])

    def imports(self) -> set[str]:
        listing = objdump(self.architecture, "--private-headers", str(self.file))
        return {name.lower().removesuffix(".dll") for name in re.findall(r"DLL Name: (\S+)", listing)}

    def version(self) -> str:
        """The file version of the version resource."""
        minor_major, rest = struct.unpack_from("<II", self.bytes, self.bytes.index(struct.pack("<I", 0xFEEF04BD)) + 8)
        return f"{minor_major >> 16}.{minor_major & 0xFFFF}.{rest >> 16}"


class Content(unittest.TestCase):
    def test_has_each_file_and_no_other(self) -> None:
        root = unpacked()
        self.assertEqual(sorted(str(file.relative_to(root)) for file in root.rglob("*") if file.is_file()), FILES)

    def test_checksums_are_those_of_the_files(self) -> None:
        root = unpacked()
        lines = [line.split("  ") for line in (root / "SHA256SUMS").read_text().splitlines()]
        self.assertEqual([name for _, name in lines], [name for name in FILES if name != "SHA256SUMS"])
        for digest, name in lines:
            with self.subTest(name):
                self.assertEqual(hashlib.sha256((root / name).read_bytes()).hexdigest(), digest)

    def test_the_packages_own_checksum_lies_beside_it(self) -> None:
        digest, name = package().with_suffix(".zip.sha256").read_text().split()
        self.assertEqual(name, package().name)
        self.assertEqual(hashlib.sha256(package().read_bytes()).hexdigest(), digest)

    def test_one_version_reaches_everything(self) -> None:
        version = project_version()
        self.assertEqual(package().name, f"paylodge-{version}.zip")
        self.assertEqual(unpacked().name, f"paylodge-{version}")
        self.assertEqual({Module(architecture).version() for architecture in BUILDS}, {version})
        for name in ("README.md", "docs/host-integration.md", "docs/script-reference.md"):
            self.assertIn(f"Paylodge {version}\n", (unpacked() / name).read_text(encoding="utf-8"), name)

    def test_the_changelog_begins_with_this_version(self) -> None:
        headings = re.findall(r"^## (.*)$", (TOP / "CHANGELOG.md").read_text(encoding="utf-8"), re.MULTILINE)
        self.assertEqual(headings[0], project_version())

    def test_links_lead_to_files_of_the_package(self) -> None:
        for document in unpacked().rglob("*.md"):
            for target in re.findall(r"\]\(([^)#:]+)\)", document.read_text(encoding="utf-8")):
                with self.subTest(f"{document.name}: {target}"):
                    self.assertTrue((document.parent / target).exists())

    def test_files_that_the_documents_name_are_in_the_package(self) -> None:
        named = {
            (document.name, name)
            for document in unpacked().rglob("*.md")
            for name in re.findall(r"`((?:[\w.-]+/)+[\w.-]*)`", document.read_text(encoding="utf-8"))
        }
        self.assertIn(("host-integration.md", "examples/host-program/"), named)
        self.assertEqual([(document, name) for document, name in named if not (unpacked() / name).exists()], [])

    def test_commands_have_the_line_ends_of_windows(self) -> None:
        for name in ("register.cmd", "unregister.cmd"):
            content = (unpacked() / name).read_bytes()
            self.assertEqual(content.count(b"\r\n"), content.count(b"\n"), name)


class Size(unittest.TestCase):
    # The library of newer compilers, which is linked in, is larger: on x86 by 42 KB with version 14.
    LIMIT_OF_OLDER_COMPILERS = 500 * 1024
    LIMIT_OF_NEWER_COMPILERS = 540 * 1024

    def test_modules_are_small(self) -> None:
        for architecture in BUILDS:
            compiler = f"{TRIPLETS[architecture]}-g++-posix"
            version = subprocess.run([compiler, "-dumpversion"], check=True, capture_output=True, text=True).stdout
            is_newer = int(version.split(".")[0].split("-")[0]) > 12
            limit = self.LIMIT_OF_NEWER_COMPILERS if is_newer else self.LIMIT_OF_OLDER_COMPILERS
            self.assertLess(len(Module(architecture).bytes), limit, f"{architecture}, version {version.strip()}")


class Reproducibility(unittest.TestCase):
    def test_the_same_build_gives_the_same_bytes(self) -> None:
        again = write_package(TOP, BUILDS, fresh_folder("dist-again"))
        self.assertEqual(again.read_bytes(), package().read_bytes())

    def test_entries_have_a_fixed_order_and_no_time(self) -> None:
        with zipfile.ZipFile(package()) as archive:
            entries = archive.infolist()
        self.assertEqual([entry.filename for entry in entries], sorted(entry.filename for entry in entries))
        self.assertEqual({entry.date_time for entry in entries}, {NO_TIME})

    def test_nothing_tells_where_it_was_built(self) -> None:
        for file in unpacked().rglob("*"):
            if file.is_file():
                self.assertNotIn(str(TOP).encode(), file.read_bytes(), file.name)

    def test_nothing_tells_when_it_was_built(self) -> None:
        for architecture in BUILDS:
            with self.subTest(architecture):
                self.assertEqual(Module(architecture).time, 0)
                library = (unpacked() / architecture / "Paylodge.tlb").read_bytes()
                self.assertIn(b"at Thu Jan  1 00:00:00 1970\n", library)


class Modules(unittest.TestCase):
    def each(self) -> list[Module]:
        return [Module(architecture) for architecture in BUILDS]

    def test_are_of_their_architecture(self) -> None:
        self.assertEqual({module.architecture: module.machine for module in self.each()}, {"x64": 0x8664, "x86": 0x14C})

    def test_name_their_architecture(self) -> None:
        for module in self.each():
            description = f"Paylodge component for Ledgerhall ({module.architecture})"
            self.assertIn(description.encode("utf-16-le"), module.bytes)

    def test_import_system_libraries_only(self) -> None:
        for module in self.each():
            self.assertEqual(module.imports() - SYSTEM_LIBRARIES, set(), module.architecture)

    def test_may_be_loaded_anywhere_and_run_no_data(self) -> None:
        for module in self.each():
            with self.subTest(module.architecture):
                self.assertEqual(module.dll_characteristics & DYNAMIC_BASE, DYNAMIC_BASE)
                self.assertEqual(module.dll_characteristics & NO_EXECUTE, NO_EXECUTE)
                self.assertEqual(module.characteristics & RELOCATIONS_STRIPPED, 0)
                self.assertGreater(module.relocations_size, 8)
        self.assertEqual(Module("x64").dll_characteristics & HIGH_ENTROPY_ADDRESSES, HIGH_ENTROPY_ADDRESSES)

    def test_guard_their_stacks(self) -> None:
        for architecture in BUILDS:
            symbols = objdump(architecture, "--syms", str(unpacked() / architecture / "Paylodge.dll.debug"))
            self.assertTrue("__stack_chk_fail" in symbols, f"{architecture} has no stack guard")

    def test_keep_their_debug_information_in_a_file_of_its_own(self) -> None:
        for module in self.each():
            with self.subTest(module.architecture):
                debug = str(module.file) + ".debug"
                self.assertNotIn(".debug_info", objdump(module.architecture, "--section-headers", str(module.file)))
                self.assertIn(".debug_line", objdump(module.architecture, "--section-headers", debug))
                self.assertIn("DllGetClassObject", objdump(module.architecture, "--syms", debug))
                link = objdump(module.architecture, "--full-contents", "--section=.gnu_debuglink", str(module.file))
                self.assertIn("Paylodge.dll.deb", link)

    def test_carry_the_type_library_and_the_manifest_that_lie_beside_them(self) -> None:
        for module in self.each():
            for name in ("Paylodge.tlb", "Paylodge.manifest"):
                self.assertIn((module.file.parent / name).read_bytes(), module.bytes, f"{module.architecture} {name}")


class Manifest(unittest.TestCase):
    def read(self, architecture: str) -> ElementTree.Element:
        return ElementTree.parse(unpacked() / architecture / "Paylodge.manifest").getroot()

    def attributes(self, name: str) -> list[dict[str, str]]:
        return [element.attrib for element in self.read("x64").iter(ASSEMBLY + name)]

    def test_names_the_assembly_and_its_architecture(self) -> None:
        for architecture, name in {"x64": "amd64", "x86": "x86"}.items():
            identity = self.read(architecture).find(ASSEMBLY + "assemblyIdentity")
            assert identity is not None
            self.assertEqual(
                identity.attrib,
                {"type": "win32", "name": "Paylodge", "version": "1.0.0.0", "processorArchitecture": name},
            )

    def test_differs_between_architectures_in_nothing_else(self) -> None:
        x64, x86 = ((unpacked() / name / "Paylodge.manifest").read_text() for name in ("x64", "x86"))
        self.assertEqual(x64.replace('"amd64"', '"x86"'), x86)

    def test_has_the_classes_of_the_scripts(self) -> None:
        self.assertEqual(
            self.attributes("comClass"),
            [
                {
                    "description": "Paylodged Class",
                    "clsid": PAYLODGE,
                    "progid": "Paylodge.Paylodge",
                    "tlbid": LIBRARY,
                },
                {
                    "description": "PaylodgeCtrl Class",
                    "clsid": CONTROL,
                    "threadingModel": "Apartment",
                    "tlbid": LIBRARY,
                    "miscStatusContent": "recomposeonresize,cantlinkinside,insideout,activatewhenvisible,"
                    "setclientsitefirst",
                },
            ],
        )

    def test_has_the_type_library(self) -> None:
        self.assertEqual(self.attributes("typelib"), [{"tlbid": LIBRARY, "version": "1.0", "helpdir": ""}])

    def test_has_every_interface(self) -> None:
        marshaled = {(name, id, DUAL) for name, id in INTERFACES.items()}
        marshaled |= {(name, id, DISPATCH) for name, id in EVENTS.items()}
        found = self.attributes("comInterfaceExternalProxyStub")
        self.assertEqual({(item["name"], item["iid"], item["proxyStubClsid32"]) for item in found}, marshaled)
        self.assertEqual({item["tlbid"] for item in found}, {LIBRARY})
        self.assertEqual(len(found), len(marshaled))
