"""What there is to run: test programs of each flavour, page scripts, and the checks of the sources."""

from __future__ import annotations

import functools
import sys
from collections.abc import Callable
from dataclasses import dataclass, field
from pathlib import Path

import wine_session
from test_results import Case, Ending, Outcome, read_gtest, read_lines, read_status
from wine_session import windows_path

KINDS = ("x64", "x86", "native", "script", "package", "fuzz", "tools", "format")
WINE_PACKAGES = {"x64": "wine64", "x86": "wine32:i386"}

SHORT_FUZZ_RUNS = 50_000


@dataclass(frozen=True)
class Paths:
    """Where things are: `root` holds the sources, `build` what was compiled and what the tests leave behind."""

    root: Path
    build: Path

    def log(self, job_name: str) -> Path:
        return self.build / "test-results" / f"{job_name}.log"

    def gtest_report(self, job_name: str) -> Path:
        return self.build / "test-results" / f"{job_name}.xml"

    def scratch(self, job_name: str) -> Path:
        return self.build / "test-scratch" / job_name

    def sample_company_file(self) -> Path | None:
        return next(iter(sorted((self.root / "examples").glob("*.lhcompany"))), None)


@dataclass(frozen=True)
class Job:
    """A program to run once. `read` gives its cases; `prepare` gives a case instead when the program cannot run."""

    name: str
    command: list[str]
    read: Callable[[Ending], list[Case]]
    prepare: Callable[[], Case | None] = lambda: None
    environment: dict[str, str] = field(default_factory=dict)
    under_wine: bool = False
    needs_display: bool = False
    # The name of its case when there is but one.
    only_case: str = ""


def collect_jobs(paths: Paths, kinds: list[str], pattern: str) -> list[Job]:
    """The jobs of the given kinds that may have a case with the pattern in its full name."""
    jobs = [job for kind in KINDS if kind in kinds for job in jobs_of_kind(paths, kind, pattern)]
    return [job for job in jobs if may_match(job.name, job.only_case, pattern)]


def jobs_of_kind(paths: Paths, kind: str, pattern: str) -> list[Job]:
    if kind == "script":
        return script_jobs(paths)
    if kind == "package":
        return package_jobs(paths)
    if kind == "fuzz":
        return fuzz_jobs(paths)
    if kind == "tools":
        return [tools_job(paths)]
    if kind == "format":
        return [format_job(paths)]
    return program_jobs(paths, kind, pattern)


def may_match(job_name: str, only_case: str, pattern: str) -> bool:
    """A pattern that begins like a full name names its job; any other may stand in the name of a case."""
    if only_case:
        return pattern in f"{job_name}/{only_case}"
    names_job = "/" in pattern and pattern.split("/")[0] in KINDS
    prefix = job_name + "/"
    return not names_job or pattern in prefix or pattern.startswith(prefix)


def program_jobs(paths: Paths, preset: str, pattern: str) -> list[Job]:
    suffix = "" if preset == "native" else ".exe"
    programs = sorted((paths.build / preset / "tests").glob(f"*_tests{suffix}"))
    return [program_job(paths, preset, program, pattern) for program in programs]


def program_job(paths: Paths, preset: str, program: Path, pattern: str) -> Job:
    name = f"{preset}/{program.stem}"
    report = paths.gtest_report(name)
    under_wine = preset != "native"
    options = [f"--gtest_output=xml:{windows_path(report) if under_wine else report}"]
    options += gtest_filter(name, pattern)
    return Job(
        name,
        (wine_session.wine_command(str(program)) if under_wine else [str(program)]) + options,
        lambda ending: read_gtest(ending, report, may_be_empty=len(options) > 1),
        lambda: prepare_program(preset, report),
        environment=wine_environment(paths, preset, name) if under_wine else {},
        under_wine=under_wine,
        needs_display=program.with_suffix(".needs-display").exists(),
    )


def gtest_filter(job_name: str, pattern: str) -> list[str]:
    """Spares a program the cases that were not asked for."""
    prefix = job_name + "/"
    if pattern in prefix:
        return []
    return [f"--gtest_filter=*{pattern.removeprefix(prefix)}*"]


def prepare_program(preset: str, report: Path) -> Case | None:
    report.unlink(missing_ok=True)
    return None if preset == "native" else check_wine(preset)


def check_wine(architecture: str) -> Case | None:
    if wine_session.works(architecture):
        return None
    package = WINE_PACKAGES[architecture]
    why = f"Wine does not run {architecture} programs here: the package {package} is missing or does not work"
    return Case("(all)", Outcome.SKIPPED, why)


def script_jobs(paths: Paths) -> list[Job]:
    folder = paths.root / "tests" / "script"
    scripts = sorted(file for file in folder.glob("*.js") if file.name != "harness.js")
    return [script_job(paths, architecture, script) for architecture in WINE_PACKAGES for script in scripts]


def script_job(paths: Paths, architecture: str, script: Path) -> Job:
    name = f"script/{architecture}/{script.stem}"
    host = wine_session.system_command(architecture, "cscript")
    harness = script.with_name("harness.js")
    return Job(
        name,
        [*host, "//nologo", windows_path(harness), windows_path(script)],
        read_lines,
        lambda: check_wine(architecture) or register_libraries(paths, architecture),
        environment={
            **wine_environment(paths, architecture, name),
            "OSKERIN_SCRIPT_FILE": windows_path(paths.scratch(name) / "page-scripts.txt"),
        },
        under_wine=True,
    )


@functools.cache
def register_libraries(paths: Paths, architecture: str) -> Case | None:
    """Registers what scripts create by name; in each run anew, since a test program may have unregistered it."""
    folder = paths.build / architecture
    for library in (folder / "refhost" / "refhost.dll", folder / "Paylodge.dll"):
        problem = wine_session.register(architecture, library)
        if problem:
            return Case("(start of program)", Outcome.FAILED, problem)
    return None


def wine_environment(paths: Paths, preset: str, job_name: str) -> dict[str, str]:
    """The host's libraries are found by name, each program has a company file of its own, BSTR counts are exact."""
    folders = [paths.build / preset / "refhost", paths.build / preset]
    environment = {"WINEPATH": ";".join(map(windows_path, folders)), "OANOCACHE": "1"}
    company_file = paths.sample_company_file()
    if company_file:
        environment["LEDGERHALL_COMPANY_FILE"] = windows_path(paths.scratch(job_name) / company_file.name)
    return environment


def package_jobs(paths: Paths) -> list[Job]:
    """They run Wine in a prefix of their own, beside the Wine programs of the other kinds."""
    files = sorted((paths.root / "tests" / "package").glob("test_*.py"))
    return [unittest_job(paths, f"package/{file.stem.removeprefix('test_')}", file.parent, file.name) for file in files]


def fuzz_jobs(paths: Paths) -> list[Job]:
    """A short run of each fuzzer, the same each time: whether the code stands it, not what more could be found."""
    fuzzers = sorted((paths.build / "native" / "fuzz").glob("*_fuzz"))
    return [fuzz_job(paths, fuzzer) for fuzzer in fuzzers]


def fuzz_job(paths: Paths, fuzzer: Path) -> Job:
    dictionary = paths.root / "tests" / "fuzz" / f"{fuzzer.name.removesuffix('_fuzz')}.dict"
    options = [f"-runs={SHORT_FUZZ_RUNS}", "-seed=1", "-timeout=10", "-verbosity=0"]
    options += [f"-dict={dictionary}"] if dictionary.exists() else []
    return status_job(f"fuzz/{fuzzer.name}", "short run", [str(fuzzer), *options])


def tools_job(paths: Paths) -> Job:
    return unittest_job(paths, "tools", paths.root / "tests" / "tools")


def unittest_job(paths: Paths, name: str, folder: Path, *file: str) -> Job:
    command = [sys.executable, str(paths.root / "tools/run_unittests.py"), str(folder), *file]
    return Job(name, command, read_lines)


def format_job(paths: Paths) -> Job:
    return status_job("format", "sources", ["bash", str(paths.root / "tools/format_sources.sh"), "--check"])


def status_job(name: str, case: str, command: list[str]) -> Job:
    """A program that is one test."""
    return Job(name, command, lambda ending: read_status(ending, case), only_case=case)
