"""What there is to run: test programs of each flavour, page scripts, and the checks of the sources."""

from __future__ import annotations

import functools
import os
import shutil
import subprocess
import sys
from collections.abc import Callable, Iterable
from dataclasses import dataclass, field, replace
from pathlib import Path

import wine_session
from filters import Filter
from results import Case, Ending, Outcome, read_gtest, read_gtest_list, read_lines, read_status
from sources import Sources, TestFile
from wine_session import windows_path

KINDS = (
    *("x64", "x86", "x64-checked", "native"),
    *("script", "workbench", "server", "commands", "package"),
    *("fuzz", "tools", "format", "lint"),
)
# The flavours of which ./dev coverage counts the lines that run; no run of tests has them without being asked.
COVERAGE_KINDS = ("native-coverage", "x64-coverage", "script-coverage", "server-coverage")
PROGRAM_KINDS = ("x64", "x86", "x64-checked", "native", "native-coverage", "x64-coverage")
NATIVE_KINDS = ("native", "native-coverage")
# What a flavour for Windows is compiled for.
ARCHITECTURES = {"x64": "x64", "x86": "x86", "x64-checked": "x64", "x64-coverage": "x64"}
WINE_PACKAGES = {"x64": "wine64", "x86": "wine32:i386"}

# The workbench is the same program on both; the tests in the browser run with one of them.
WORKBENCH_ARCHITECTURE = "x64"
# The target with the component and the reference host; natively the pure core.
PRODUCT = "all"
SHORT_RUN = "short run"
SHORT_FUZZ_RUNS = 20_000
# Inputs that take long are fewer.
SHORT_FUZZ_SECONDS = 8
LISTING_SECONDS = 60


@dataclass(frozen=True)
class Paths:
    """Where things are: `root` holds the sources, `build` what was compiled and what the tests leave behind."""

    root: Path
    build: Path

    def log(self, job_name: str) -> Path:
        return self.build / "test-results" / f"{job_name}.log"

    def gtest_report(self, job_name: str) -> Path:
        return self.build / "test-results" / f"{job_name}.xml"

    def gtest_flags(self, job_name: str) -> Path:
        return self.build / "test-results" / f"{job_name}.flags"

    def scratch(self, job_name: str) -> Path:
        return self.build / "test-scratch" / job_name

    def sample_company_file(self) -> Path | None:
        """The sample company as wine.sh has made it of its text."""
        file = self.build / "riverside.lhcompany"
        return file if file.exists() else None


@dataclass(frozen=True)
class Job:
    """A program to run once.

    `prepare` returns cases when there is nothing to run, for example since this machine cannot; otherwise None. `read`
    returns the cases of the run, of which those count whose names (without the job's) `keeps` accepts.
    """

    name: str
    command: list[str]
    read: Callable[[Ending], list[Case]]
    prepare: Callable[[], list[Case] | None] = lambda: None
    keeps: Callable[[str], bool] = lambda name: True
    environment: dict[str, str] = field(default_factory=dict)
    under_wine: bool = False
    needs_display: bool = False


class Jobs:
    """Everything that there is to build and run for the given kinds, as far as it may have a test that is selected."""

    def __init__(self, paths: Paths, chosen: Filter, kinds: Iterable[str] = KINDS) -> None:
        self._paths = paths
        self._filter = chosen
        self._kinds = [kind for kind in (*KINDS, *COVERAGE_KINDS) if kind in kinds]
        self.sources = Sources(paths.root, paths.build)
        if not self.targets() and not self.collect():
            self._filter = replace(chosen, loose=True)

    def collect(self) -> list[Job]:
        return [job for kind in self._kinds for job in self._jobs_of(kind)]

    def targets(self) -> dict[str, list[str]]:
        """What has to be built, for each flavour."""
        targets: dict[str, list[str]] = {}
        for kind in self._kinds:
            for preset, names in self._targets_of(kind).items():
                known = targets.setdefault(preset, [])
                known += [name for name in names if name not in known]
        return targets

    def suggestions(self) -> list[str]:
        """What may have been meant when nothing is selected."""
        return self._filter.suggestions(self.sources.known_names())

    def _jobs_of(self, kind: str) -> list[Job]:
        makers = {
            "script": lambda: self._script_jobs("script", WINE_PACKAGES),
            "script-coverage": lambda: self._script_jobs("script-coverage", ["x64-coverage"]),
            "workbench": self._workbench_jobs,
            "server": lambda: self._server_jobs("server", {}),
            "server-coverage": lambda: self._server_jobs("server-coverage", {"WORKBENCH_FLAVOUR": "x64-coverage"}),
            "commands": self._commands_jobs,
            "package": self._package_jobs,
            "fuzz": self._fuzz_jobs,
            "tools": self._tools_jobs,
            "format": self._format_jobs,
            "lint": self._lint_jobs,
        }
        return makers[kind]() if kind in makers else self._program_jobs(kind)

    def _targets_of(self, kind: str) -> dict[str, list[str]]:
        if kind in PROGRAM_KINDS:
            return self._program_targets(kind)
        jobs = self._jobs_of(kind)
        if kind == "script":
            return {name: [PRODUCT] for name in WINE_PACKAGES if any(f"script/{name}/" in job.name for job in jobs)}
        if kind == "workbench" and jobs:
            return {WORKBENCH_ARCHITECTURE: [PRODUCT, "workbench/all"]}
        if kind in ("server", "commands") and jobs:
            return dict.fromkeys(WINE_PACKAGES, [PRODUCT, "workbench/all"])
        if kind == "package" and jobs:
            return dict.fromkeys(WINE_PACKAGES, [PRODUCT, "package_test_programs"])
        if kind == "fuzz" and jobs:
            return {"native": [job.name.removeprefix("fuzz/") for job in jobs]}
        return {}

    def _program_targets(self, preset: str) -> dict[str, list[str]]:
        if not self._filter.text:
            return {preset: [PRODUCT, "tests/all"]}
        programs = [name for name in sorted(self.sources.programs(preset)) if self._may_run(preset, name)]
        return {preset: [PRODUCT, *programs]} if programs else {}

    def _may_run(self, preset: str, program: str) -> bool:
        return self._may_select(f"{preset}/{program}", self.sources.program(preset, program))

    def _may_select(self, job_name: str, files: list[TestFile]) -> bool:
        return self._filter.may_select(job_name, files, KINDS)

    def _program_jobs(self, preset: str) -> list[Job]:
        suffix = "" if preset in NATIVE_KINDS else ".exe"
        programs = sorted((self._paths.build / preset / "tests").glob(f"*_tests{suffix}"))
        return [
            program_job(self._paths, preset, program, self._filter)
            for program in programs
            if self.sources.knows(preset, program.stem) and self._may_run(preset, program.stem)
        ]

    def _script_jobs(self, kind: str, flavours: Iterable[str]) -> list[Job]:
        scripts = self._files("tests/script", "*.js")
        return [
            self._with_filter(script_job(self._paths, kind, flavour, self._paths.root / file.path), file)
            for flavour in flavours
            for file in scripts
            if self._may_select(f"{kind}/{flavour}/{file.path.stem}", [file])
        ]

    def _workbench_jobs(self) -> list[Job]:
        return [
            self._with_filter(workbench_job(self._paths, self._paths.root / file.path), file)
            for file in self._files("workbench/tests", "*_tests.mjs")
            if self._may_select(f"workbench/{file.path.stem}", [file])
        ]

    def _commands_jobs(self) -> list[Job]:
        """They run ./dev in a checkout of their own, with a Wine prefix of its own."""
        return self._unittest_jobs("commands", "tests/commands")

    def _package_jobs(self) -> list[Job]:
        """They run Wine in a prefix of their own, beside the Wine programs of the other kinds."""
        return self._unittest_jobs("package", "tests/package")

    def _server_jobs(self, kind: str, environment: dict[str, str]) -> list[Job]:
        """They start the workbench themselves, each time with a company file of its own."""
        jobs = self._unittest_jobs(kind, "tests/workbench")
        return [replace(job, under_wine=True, environment=environment) for job in jobs]

    def _tools_jobs(self) -> list[Job]:
        return self._unittest_jobs("tools", "tests/tools")

    def _unittest_jobs(self, kind: str, folder: str) -> list[Job]:
        files = {f"{kind}/{file.path.stem.removeprefix('test_')}": file for file in self._files(folder, "test_*.py")}
        return [
            self._with_filter(unittest_job(self._paths, name, file.path), file)
            for name, file in files.items()
            if self._may_select(name, [file])
        ]

    def _fuzz_jobs(self) -> list[Job]:
        """A short run of each fuzzer, the same each time: whether the code stands it, not what more could be found."""
        fuzzers = [file.path.stem for file in self._files("tests/fuzz", "*_fuzz.cpp")]
        jobs = [fuzz_job(self._paths, self._paths.build / "native" / "fuzz" / fuzzer) for fuzzer in fuzzers]
        return [job for job in jobs if self._filter.selects(f"{job.name}/{SHORT_RUN}")]

    def _format_jobs(self) -> list[Job]:
        job = status_job("format", "sources", ["bash", str(self._paths.root / "tools/format_sources.sh"), "--check"])
        return [job] if self._filter.selects("format/sources") else []

    def _lint_jobs(self) -> list[Job]:
        """Looks at what has been compiled, and builds nothing for it."""
        command = [sys.executable, str(self._paths.root / "tools/lint_changed.py")]
        return [Job("lint", command, read_lines)] if self._filter.selects("lint/changed sources") else []

    def _files(self, folder: str, pattern: str) -> list[TestFile]:
        paths = sorted((self._paths.root / folder).glob(pattern))
        return [self.sources.file(path.relative_to(self._paths.root)) for path in paths if path.name != "harness.js"]

    def _with_filter(self, job: Job, file: TestFile) -> Job:
        if self._filter.selects_file(file.path):
            return job
        return replace(job, keeps=lambda name: self._filter.selects(f"{job.name}/{name}"))


def program_job(paths: Paths, preset: str, program: Path, chosen: Filter) -> Job:
    name = f"{preset}/{program.stem}"
    under_wine = preset not in NATIVE_KINDS
    command = wine_session.wine_command(str(program)) if under_wine else [str(program)]
    environment = wine_environment(paths, preset, name) if under_wine else {}
    report = GTestReport(paths, name, windows_path if under_wine else str)
    options = [report.option()]
    all_of_them = chosen.selects_all_of(name)
    if not all_of_them:
        options.append(f"--gtest_flagfile={report.in_command(paths.gtest_flags(name))}")

    def prepare() -> list[Case] | None:
        instead = check_wine(ARCHITECTURES[preset]) if under_wine else None
        report.file.unlink(missing_ok=True)
        if instead or all_of_them:
            return [instead] if instead else None
        return choose_tests(paths, report, [*command, "--gtest_list_tests", report.option()], environment, chosen)

    return Job(
        name,
        command + options,
        lambda ending: read_gtest(ending, report.file),
        prepare,
        environment=environment,
        under_wine=under_wine,
        needs_display=program.with_suffix(".needs-display").exists(),
    )


@dataclass(frozen=True)
class GTestReport:
    """Where a program reports to, and how it is told."""

    paths: Paths
    job_name: str
    in_command: Callable[[Path], str]

    @property
    def file(self) -> Path:
        return self.paths.gtest_report(self.job_name)

    def option(self) -> str:
        return f"--gtest_output=xml:{self.in_command(self.file)}"


def choose_tests(
    paths: Paths, report: GTestReport, list_command: list[str], environment: dict[str, str], chosen: Filter
) -> list[Case] | None:
    """Asks the program for its tests and writes down which of them it is to run."""
    name = report.job_name
    paths.scratch(name).mkdir(parents=True, exist_ok=True)
    try:
        subprocess.run(
            list_command,
            check=False,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
            cwd=paths.scratch(name),
            env=os.environ | environment,
            timeout=LISTING_SECONDS,
        )
        tests = read_gtest_list(report.file)
    except (OSError, ValueError, subprocess.TimeoutExpired) as error:
        return [Case("(start of program)", Outcome.FAILED, f"did not list its tests: {error}")]
    report.file.unlink()
    wanted = [test for test, file in tests if chosen.selects(f"{name}/{test}") or chosen.selects_file(Path(file))]
    paths.gtest_flags(name).write_text(f"--gtest_filter={':'.join(wanted)}\n")
    return None if wanted else []


def check_wine(architecture: str) -> Case | None:
    if wine_session.works(architecture):
        return None
    package = WINE_PACKAGES[architecture]
    why = f"Wine does not run {architecture} programs here: the package {package} is missing or does not work"
    return Case("(all)", Outcome.SKIPPED, why)


def script_job(paths: Paths, kind: str, flavour: str, script: Path) -> Job:
    name = f"{kind}/{flavour}/{script.stem}"
    architecture = ARCHITECTURES[flavour]
    host = wine_session.system_command(architecture, "cscript")
    harness = script.with_name("harness.js")

    def prepare() -> list[Case] | None:
        instead = check_wine(architecture) or register_libraries(paths, flavour)
        return [instead] if instead else None

    return Job(
        name,
        [*host, "//nologo", windows_path(harness), windows_path(script)],
        lambda ending: read_lines(ending) + check_books(paths, flavour, name),
        prepare,
        environment={
            **wine_environment(paths, flavour, name),
            "OSKERIN_SCRIPT_FILE": windows_path(paths.scratch(name) / "page-scripts.txt"),
        },
        under_wine=True,
    )


def workbench_job(paths: Paths, file: Path) -> Job:
    """Drives a browser, and in it pages of the workbench, which the test itself starts under Wine."""
    name = f"workbench/{file.stem}"
    reporter = file.with_name("support") / "line_reporter.mjs"

    def prepare() -> list[Case] | None:
        if not shutil.which("node"):
            return [Case("(all)", Outcome.SKIPPED, "node is missing: tools/setup.sh installs it")]
        instead = check_wine(WORKBENCH_ARCHITECTURE)
        return [instead] if instead else None

    return Job(
        name,
        ["node", f"--test-reporter={reporter}", "--test-reporter-destination=stdout", str(file)],
        read_lines,
        prepare,
        environment={
            **wine_environment(paths, WORKBENCH_ARCHITECTURE, name),
            "PAYLODGE_BUILD": str(paths.build),
            "PAYLODGE_ARCHITECTURE": WORKBENCH_ARCHITECTURE,
        },
        under_wine=True,
    )


def check_books(paths: Paths, flavour: str, job_name: str) -> list[Case]:
    """Whatever a page did, the books that it leaves are true."""
    sample = paths.sample_company_file()
    if not sample:
        return []
    program = paths.build / flavour / "refhost" / "company.exe"
    company_file = paths.scratch(job_name) / sample.name
    command = [*wine_session.wine_command(str(program)), "check", windows_path(company_file)]
    try:
        result = wine_session.run_and_read(command)
    except subprocess.TimeoutExpired:
        return [Case("the books are true afterwards", Outcome.FAILED, "the check did not end")]
    outcome = Outcome.PASSED if result.returncode == 0 else Outcome.FAILED
    return [Case("the books are true afterwards", outcome, "" if outcome is Outcome.PASSED else result.stdout)]


@functools.cache
def register_libraries(paths: Paths, flavour: str) -> Case | None:
    """Registers what scripts create by name; in each run anew, since a test program may have unregistered it."""
    folder = paths.build / flavour
    for library in (folder / "refhost" / "refhost.dll", folder / "Paylodge.dll"):
        problem = wine_session.register(ARCHITECTURES[flavour], library)
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


def fuzz_job(paths: Paths, fuzzer: Path) -> Job:
    folder, name = paths.root / "tests" / "fuzz", fuzzer.name.removesuffix("_fuzz")
    dictionary, seeds = folder / f"{name}.dict", folder / "corpus" / name
    options = [f"-runs={SHORT_FUZZ_RUNS}", f"-max_total_time={SHORT_FUZZ_SECONDS}"]
    options += ["-seed=1", "-timeout=10", "-verbosity=0"]
    options += [f"-dict={dictionary}"] if dictionary.exists() else []
    # What it learns goes to the first folder: the one that it runs in.
    options += [".", str(seeds)] if seeds.exists() else []
    return status_job(f"fuzz/{fuzzer.name}", SHORT_RUN, [str(fuzzer), *options])


def unittest_job(paths: Paths, name: str, file: Path) -> Job:
    program = Path(__file__).with_name("run_unittests.py")
    return Job(name, [sys.executable, str(program), str(paths.root / file.parent), file.name], read_lines)


def status_job(name: str, case: str, command: list[str]) -> Job:
    """A program that is one test."""
    return Job(name, command, lambda ending: read_status(ending, case))
