"""Makes paylodge-VERSION-tests.zip of what was built: the tests for a machine with Windows and nothing else.

It is laid out as the tests expect: a folder for each architecture as in build/, the page scripts and what they read as in
the sources.
"""

from __future__ import annotations

import argparse
import subprocess
import sys
import tempfile
from collections.abc import Iterable
from pathlib import Path
from zipfile import ZipFile

from manifest import class_element, write_manifest
from package import TRIPLETS, Content, entries, read_version, run
from registry_script import read_script

SOURCES = ("tests/script/*.js", "tests/script/pages/*.js", "examples/*.js", "examples/riverside.xml", "docs/*.md")
# Beside the test programs, what they load and start.
PROGRAMS = ("tests/*.exe", "tests/*.dll", "tests/*.xml", "tests/*.needs-display", "tests/bridge/*/*.dll", "host-program.exe")
PRODUCT = ("Paylodge.dll", "Paylodge.tlb", "refhost/*.dll", "refhost/*.exe")
RUNNER = "tests/package/run-tests.exe"
TEXTS = ("run-tests.cmd", "README.txt")
MANIFEST = "refhost/run.exe.manifest"
PROCESSORS = {"x64": "AMD64", "x86": "X86"}


def stripped(architecture: str, file: Path) -> bytes:
    """The program without its debug information, which is most of it."""
    if file.suffix not in (".exe", ".dll"):
        return file.read_bytes()
    with tempfile.TemporaryDirectory() as folder:
        copy = Path(folder, file.name)
        run(f"{TRIPLETS[architecture]}-objcopy", "--preserve-dates", "--strip-debug", str(file), str(copy))
        return copy.read_bytes()


def files(top: Path, patterns: Iterable[str]) -> list[Path]:
    found = [file for pattern in patterns for file in sorted(top.glob(pattern))]
    return [file for file in found if file.is_file()]


def script_host_manifest(top: Path) -> bytes:
    """Lets run.exe create the objects of the component and of the reference host, none of which is registered."""
    classes = read_script(top / "refhost" / "refhost.rgs").at("CLSID").keys.items()
    return (
        '<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\n'
        '<assembly xmlns="urn:schemas-microsoft-com:asm.v1" manifestVersion="1.0">\n'
        '    <assemblyIdentity type="win32" name="run" version="1.0.0.0" processorArchitecture="*"/>\n'
        "    <dependency>\n"
        "        <dependentAssembly>\n"
        '            <assemblyIdentity type="win32" name="Paylodge" version="1.0.0.0" processorArchitecture="*"/>\n'
        "        </dependentAssembly>\n"
        "    </dependency>\n"
        '    <file name="refhost.dll">\n'
        + "".join(class_element(class_id, key, "") for class_id, key in classes)
        + "    </file>\n"
        "</assembly>\n"
    ).encode()


def architecture_content(top: Path, architecture: str, build: Path, programs: list[str]) -> Content:
    wanted = [file for file in files(build, PROGRAMS) if is_wanted(file, programs)]
    if not any(file.stem.endswith("_tests") for file in wanted):
        raise ValueError(f"{build} has no test programs")
    content = {
        file.relative_to(build).as_posix(): stripped(architecture, file) for file in (*files(build, PRODUCT), *wanted)
    }
    content[MANIFEST] = script_host_manifest(top)
    # A private assembly lies in a folder of its name beside the program that uses it.
    content["refhost/Paylodge/Paylodge.dll"] = content["Paylodge.dll"]
    content["refhost/Paylodge/Paylodge.manifest"] = write_manifest(PROCESSORS[architecture], top).encode()
    return {f"{architecture}/{name}": data for name, data in content.items()}


def is_wanted(file: Path, programs: list[str]) -> bool:
    return not programs or not file.stem.endswith("_tests") or file.stem in programs


def collect(top: Path, builds: dict[str, Path], version: str, programs: list[str]) -> Content:
    content = {file.relative_to(top).as_posix(): file.read_bytes() for file in files(top, SOURCES)}
    for architecture, build in builds.items():
        content |= architecture_content(top, architecture, build, programs)
    # The 32-bit one runs on every Windows.
    content["run-tests.exe"] = stripped("x86", builds["x86"] / RUNNER)
    for name in TEXTS:
        text = (top / "tools/package/test-kit" / name).read_text(encoding="utf-8").replace("@VERSION@", version)
        content[name] = text.replace("\n", "\r\n").encode()
    return content


def write_test_kit(top: Path, builds: dict[str, Path], output: Path, programs: list[str]) -> Path:
    """The kit with these test programs, or with all of them when none is named."""
    version = read_version(builds["x64"])
    name = f"paylodge-{version}-tests"
    output.mkdir(parents=True, exist_ok=True)
    kit = output / f"{name}.zip"
    with ZipFile(kit, "w") as archive:
        for entry, data in entries(collect(top, builds, version, programs), name):
            archive.writestr(entry, data)
    return kit


def main() -> int:
    parser = argparse.ArgumentParser(description="Makes paylodge-VERSION-tests.zip of what was built.")
    parser.add_argument("--top", type=Path, default=Path(__file__).resolve().parents[2], help="the top of the sources")
    parser.add_argument("programs", nargs="*", metavar="PROGRAM", help="only these test programs")
    options = parser.parse_args()
    builds = {name: options.top / "build" / name for name in TRIPLETS}
    try:
        kit = write_test_kit(options.top, builds, options.top / "dist", options.programs)
    except (OSError, ValueError, subprocess.CalledProcessError) as error:
        print(f"the test kit could not be made: {error}", file=sys.stderr)
        return 1
    print(kit)
    return 0


if __name__ == "__main__":
    sys.exit(main())
