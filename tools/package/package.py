"""Makes paylodge-VERSION.zip of what was built. The same content gives the same bytes."""

from __future__ import annotations

import argparse
import hashlib
import re
import subprocess
import sys
import tempfile
import zipfile
from collections.abc import Iterator
from pathlib import Path

TRIPLETS = {"x64": "x86_64-w64-mingw32", "x86": "i686-w64-mingw32"}
DOCUMENTS = ("docs/host-integration.md", "docs/script-reference.md")
PAGE_KIT = "docs/page-kit/paylodge.d.ts"
COMMANDS = ("register.cmd", "unregister.cmd")
EXAMPLES = ("examples/CMakeLists.txt", "examples/host-program/*", "examples/registration-free/*")
GENERATED_HEADERS = ("paylodge.h", "paylodge_i.c")
EVENT_IDS = "idl/event_ids.h"
# The first moment that a zip file can name.
NO_TIME = (1980, 1, 1, 0, 0, 0)

Content = dict[str, bytes]


def read_version(build: Path) -> str:
    cache = (build / "CMakeCache.txt").read_text(encoding="utf-8")
    match = re.search(r"^CMAKE_PROJECT_VERSION:STATIC=(.+)$", cache, re.MULTILINE)
    if not match:
        raise ValueError(f"{build} names no version of the project")
    return match[1]


def split_module(architecture: str, module: Path) -> Content:
    """The module without its debug information, and the file that keeps it: a debugger finds it by its name."""
    objcopy = f"{TRIPLETS[architecture]}-objcopy"
    with tempfile.TemporaryDirectory() as folder:
        stripped, debug = Path(folder, module.name), Path(folder, module.name + ".debug")
        # Otherwise objcopy writes the present time into the header.
        keep_time = "--preserve-dates"
        run(objcopy, keep_time, "--only-keep-debug", str(module), str(debug))
        run(objcopy, keep_time, "--strip-all", f"--add-gnu-debuglink={debug}", str(module), str(stripped))
        return {file.name: file.read_bytes() for file in (stripped, debug)}


def run(*command: str) -> None:
    subprocess.run(command, check=True)


def architecture_content(architecture: str, build: Path) -> Content:
    content = split_module(architecture, build / "Paylodge.dll")
    content |= {name: (build / name).read_bytes() for name in ("Paylodge.tlb", "Paylodge.manifest")}
    return {f"{architecture}/{name}": data for name, data in content.items()}


def with_version(document: str, version: str) -> str:
    """A document that names the release under its title."""
    title, rest = document.split("\n", 1)
    return f"{title}\n\nPaylodge {version}\n{rest}"


def document_content(top: Path, version: str) -> Content:
    documents = {name: with_version((top / name).read_text(encoding="utf-8"), version) for name in DOCUMENTS}
    readme = (top / "tools/package/README.md").read_text(encoding="utf-8").replace("@VERSION@", version)
    changes = (top / "CHANGELOG.md").read_text(encoding="utf-8")
    texts = documents | {"README.md": readme, "CHANGELOG.md": changes}
    return {name: text.encode() for name, text in texts.items()}


def command_content(top: Path) -> Content:
    """Command files, which Windows wants with its own line ends."""
    return {name: (top / "tools/package" / name).read_bytes().replace(b"\n", b"\r\n") for name in COMMANDS}


def example_content(top: Path) -> Content:
    files = [file for pattern in EXAMPLES for file in top.glob(pattern)]
    return {file.relative_to(top).as_posix(): file.read_bytes() for file in files}


def header_content(top: Path, build: Path) -> Content:
    """What a host includes, and the ids that it links."""
    files = [build / "idl" / "paylodge_idl" / name for name in GENERATED_HEADERS]
    return {f"include/{file.name}": file.read_bytes() for file in (*files, top / EVENT_IDS)}


def collect(top: Path, builds: dict[str, Path], version: str) -> Content:
    content = header_content(top, builds["x64"])
    content |= {PAGE_KIT: (top / PAGE_KIT).read_bytes()}
    for architecture, build in builds.items():
        content |= architecture_content(architecture, build)
    content |= document_content(top, version) | command_content(top) | example_content(top)
    sums = "".join(f"{hashlib.sha256(content[name]).hexdigest()}  {name}\n" for name in sorted(content))
    return content | {"SHA256SUMS": sums.encode()}


def entries(content: Content, folder: str) -> Iterator[tuple[zipfile.ZipInfo, bytes]]:
    for name in sorted(content):
        entry = zipfile.ZipInfo(f"{folder}/{name}", NO_TIME)
        entry.external_attr = 0o644 << 16
        entry.compress_type = zipfile.ZIP_DEFLATED
        yield entry, content[name]


def write_package(top: Path, builds: dict[str, Path], output: Path) -> Path:
    """The package, and its checksum beside it."""
    version = read_version(builds["x64"])
    name = f"paylodge-{version}"
    output.mkdir(parents=True, exist_ok=True)
    package = output / f"{name}.zip"
    with zipfile.ZipFile(package, "w") as archive:
        for entry, data in entries(collect(top, builds, version), name):
            archive.writestr(entry, data)
    sum_line = f"{hashlib.sha256(package.read_bytes()).hexdigest()}  {package.name}\n"
    package.with_suffix(".zip.sha256").write_text(sum_line)
    return package


def main() -> int:
    parser = argparse.ArgumentParser(description="Makes paylodge-VERSION.zip of what was built.")
    parser.add_argument("--top", type=Path, default=Path(__file__).resolve().parents[2], help="the top of the sources")
    parser.add_argument("--builds", type=Path, help="the folder with the builds x64 and x86; default: TOP/build")
    parser.add_argument("--output", type=Path, help="the folder for the package; default: TOP/dist")
    options = parser.parse_args()
    builds = options.builds or options.top / "build"
    output = options.output or options.top / "dist"
    try:
        package = write_package(options.top, {name: builds / name for name in TRIPLETS}, output)
    except (OSError, ValueError, subprocess.CalledProcessError) as error:
        print(f"the package could not be made: {error}", file=sys.stderr)
        return 1
    print(package)
    return 0


if __name__ == "__main__":
    sys.exit(main())
