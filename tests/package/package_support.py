"""What the tests of the package share: a Wine prefix that holds nothing but the platform, its registry, the package."""

from __future__ import annotations

import functools
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(TOP / folder) for folder in ("tools/testrun", "tools/package", "tests/support")]

from package import TRIPLETS, write_package  # noqa: E402, F401
from windows_programs import empty_folder, needs  # noqa: E402, F401
from wine_session import SYSTEM_FOLDERS, system_command, windows_path, wine_command  # noqa: E402

BUILDS = {architecture: TOP / "build" / architecture for architecture in SYSTEM_FOLDERS}
SCRATCH = TOP / "build" / "test-scratch" / "package"
PREFIX = TOP / "build" / "wine-package"
# A prefix of its own: the other tests of a run use theirs at the same time, and register what they need in it.
PREPARE_PREFIX = ". tools/common.sh && . tools/wine.sh && WINEPREFIX=$PWD/build/wine-package && prepare_wine"
# Everything that registering could touch.
REGISTRATIONS = ("HKLM\\Software\\Classes", "HKCU\\Software")

# Where Wine keeps notes of its own.
WINE_SETTINGS = "hkey_current_user\\software\\wine"
# A new user has none.
USER_CLASSES = "hkey_current_user\\software\\classes"

# Lower-case key to name to data; the name of a default value is empty.
Registry = dict[str, dict[str, str]]


@functools.cache
def package() -> Path:
    """The package of what is built."""
    return write_package(TOP, BUILDS, SCRATCH / "dist")


def fresh_folder(name: str) -> Path:
    return empty_folder(SCRATCH / name)


@functools.cache
def unpacked() -> Path:
    """The package unpacked into a folder with a blank and other odd characters in its name."""
    folder = fresh_folder("Programs & tools (x86)")
    shutil.unpack_archive(package(), folder)
    return next(folder.iterdir())


def prepare_prefix() -> None:
    SCRATCH.mkdir(parents=True, exist_ok=True)
    subprocess.run(["bash", "-c", PREPARE_PREFIX], cwd=TOP, check=True, capture_output=True)


@functools.cache
def clean_registry() -> Registry:
    """The registry without the component. Each test leaves it like that."""
    registry = read_prepared_registry()
    if is_used(registry):
        # A former run was broken off.
        end_prefix()
        shutil.rmtree(PREFIX)
        registry = read_prepared_registry()
    return registry


def read_prepared_registry() -> Registry:
    prepare_prefix()
    # Wine's script host registers a type library of its own whenever it starts.
    for architecture in SYSTEM_FOLDERS:
        run_system(architecture, "cscript", "//nologo", "none.js")
    return read_registry()


def is_used(registry: Registry) -> bool:
    return USER_CLASSES in registry or any("paylodge" in key for key in registry)


def end_prefix() -> None:
    for option in ("-k", "-w"):
        subprocess.run(["wineserver", option], env=environment("x64"), check=False, capture_output=True)


def environment(architecture: str) -> dict[str, str]:
    """The host's libraries are found by name, as on a machine where Ledgerhall is installed."""
    host = BUILDS[architecture] / "refhost"
    company = SCRATCH / "company.lhcompany"
    return os.environ | {
        "WINEPREFIX": str(PREFIX),
        "WINEPATH": windows_path(host),
        "LEDGERHALL_COMPANY_FILE": windows_path(company),
    }


def run_wine(
    command: list[str], architecture: str = "x64", folder: Path = SCRATCH, seconds: int = 100, **variables: str
) -> subprocess.CompletedProcess[str]:
    """Runs a Windows program to its end; what it prints comes without carriage returns."""
    result = subprocess.run(
        command,
        env=environment(architecture) | variables,
        cwd=folder,
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.DEVNULL,
        encoding="utf-8",
        errors="replace",
        check=False,
        timeout=seconds,
    )
    result.stdout = result.stdout.replace("\r", "")
    return result


def run_program(
    program: Path, *arguments: str, architecture: str = "x64", **variables: str
) -> subprocess.CompletedProcess[str]:
    return run_wine([*wine_command(str(program)), *arguments], architecture, program.parent, **variables)


def run_system(architecture: str, name: str, *arguments: str) -> subprocess.CompletedProcess[str]:
    return run_wine([*system_command(architecture, name), *arguments], architecture)


def regsvr32(architecture: str, module: Path, *switches: str) -> int:
    return run_system(architecture, "regsvr32", "/s", *switches, windows_path(module)).returncode


def reg(*arguments: str) -> int:
    return run_system("x64", "reg", *arguments).returncode


# --- the registry


def read_registry() -> Registry:
    registry: Registry = {}
    for root in REGISTRATIONS:
        file = SCRATCH / "export.reg"
        file.unlink(missing_ok=True)
        if reg("export", root, windows_path(file), "/y") == 0:
            registry |= parse_export(file.read_text(encoding="utf-16"))
    return {key: values for key, values in registry.items() if not key.startswith(WINE_SETTINGS)}


def parse_export(text: str) -> Registry:
    registry: Registry = {}
    key: dict[str, str] = {}
    for line in re.sub(r"\\\n\s*", "", text.replace("\r\n", "\n")).splitlines():
        if line.startswith("["):
            key = registry.setdefault(line[1:-1].lower(), {})
        elif match := re.match(r'(?:@|"((?:[^"\\]|\\.)*)")=(.*)', line):
            key[unescape(match[1] or "")] = text_of(match[2])
    return registry


def text_of(data: str) -> str:
    """The text of a value of that type; any other data as it stands in the export, which no text begins like."""
    return unescape(data[1:-1]) if data.startswith('"') else data


def unescape(text: str) -> str:
    return re.sub(r"\\(.)", r"\1", text)


def changes(before: Registry, after: Registry) -> Registry:
    """The keys that came, whole, and of the others the values that came or changed."""
    result = {key: values for key, values in after.items() if key not in before}
    for key, values in before.items():
        if key in after and after[key] != values:
            result[key] = {name: data for name, data in after[key].items() if values.get(name) != data}
    return result


def deviations(expected: Registry | None = None) -> dict[str, Registry]:
    """What is there beyond the clean registry and the expected additions to it, and what of those is not."""
    wanted, found = clean_registry() | (expected or {}), read_registry()
    result = {"not expected": changes(wanted, found), "missing": changes(found, wanted)}
    return {name: registry for name, registry in result.items() if registry}
