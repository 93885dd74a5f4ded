"""Runs the tests of this checkout.

Prints a line for each program, every failure with its text, the reason of everything that was skipped, and at the end
"N passed, N failed" (", N skipped"). Exit status 0 only when something ran and nothing failed. Expects the environment
of wine.sh. Ctrl-C ends the run, and everything that it runs.
"""

from __future__ import annotations

import argparse
import contextlib
import os
import shutil
import signal
import subprocess
import sys
import threading
import time
from dataclasses import replace
from pathlib import Path
from typing import BinaryIO

import wine_session
from filters import Filter
from jobs import COVERAGE_KINDS, KINDS, Job, Jobs, Paths
from results import Case, Ending, Outcome

DEFAULT_TIME_LIMIT_SECONDS = 120
INTERRUPTED = 130


class Report:
    """Prints results as they come and keeps what the end of the run needs. Used by several threads."""

    def __init__(self, paths: Paths) -> None:
        self._paths = paths
        self._lock = threading.Lock()
        self._cases: list[Case] = []

    def add(self, job: Job, cases: list[Case], seconds: float) -> None:
        # A name in parentheses stands for the program as a whole, whose tests nobody can name.
        kept = [case for case in cases if case.name.endswith(")") or job.keeps(case.name)]
        if not kept:
            return
        named = [replace(case, name=f"{job.name}/{case.name}") for case in kept]
        with self._lock:
            self._cases += named
            print(f"  {job.name:<32} {count_text(named)}  ({seconds:.1f} s)")
            self._print_failures(job, [case for case in named if case.outcome is Outcome.FAILED])
            sys.stdout.flush()

    def _print_failures(self, job: Job, failed: list[Case]) -> None:
        for case in failed:
            print(f"FAILED {case.name}")
            print("".join(f"    {line}\n" for line in case.text.splitlines()), end="")
        if failed:
            print(f"    (the whole output: {self._paths.log(job.name)})")

    def finish(self, nothing_found: str) -> int:
        """Prints the end of the run, with a text of its own when there was no test; returns the exit status."""
        self._list("Skipped:", Outcome.SKIPPED, with_text=True)
        self._list("Failed:", Outcome.FAILED, with_text=False)
        if not self._cases:
            print(nothing_found)
        print(count_text(self._cases))
        return 0 if self._cases and count(self._cases, Outcome.FAILED) == 0 else 1

    def _list(self, title: str, outcome: Outcome, with_text: bool) -> None:
        cases = [case for case in self._cases if case.outcome is outcome]
        if cases:
            print(title)
        for case in cases:
            print(f"  {case.name}" + (f": {case.text}" if with_text else ""))


def count(cases: list[Case], outcome: Outcome) -> int:
    return sum(case.outcome is outcome for case in cases)


def count_text(cases: list[Case]) -> str:
    text = f"{count(cases, Outcome.PASSED)} passed, {count(cases, Outcome.FAILED)} failed"
    skipped = count(cases, Outcome.SKIPPED)
    return text + (f", {skipped} skipped" if skipped else "")


class Programs:
    """Runs programs, each in a process group of its own, so that all that it started ends with it. Used by several threads."""

    def __init__(self) -> None:
        self._lock = threading.Lock()
        self._running: set[subprocess.Popen[bytes]] = set()
        self._stopped = False

    @property
    def stopped(self) -> bool:
        return self._stopped

    def stop(self) -> None:
        """Ends those that are running; no other is started."""
        with self._lock:
            self._stopped = True
            for program in self._running:
                end_group(program)

    def run(self, paths: Paths, job: Job, time_limit: float) -> Ending:
        log = paths.log(job.name)
        # The output goes to a file: processes that Wine leaves behind would keep a pipe open.
        with log.open("wb") as output:
            program = self._start(job, output, make_scratch_folder(paths, job))
            ended = ends_within(program, time_limit)
            if not ended:
                end_group(program)
                program.wait()
                if job.under_wine:
                    # What was started here may be no more than a launcher. No other program of the prefix is running.
                    wine_session.stop_server()
        with self._lock:
            self._running.discard(program)
        text = log.read_text(encoding="utf-8", errors="replace")
        return Ending(text, program.returncode, None if ended else time_limit)

    def _start(self, job: Job, output: BinaryIO, folder: Path) -> subprocess.Popen[bytes]:
        with self._lock:
            if self._stopped:
                raise InterruptedError("the run was stopped")
            program = subprocess.Popen(
                job.command,
                stdin=subprocess.DEVNULL,
                stdout=output,
                stderr=subprocess.STDOUT,
                cwd=folder,
                env={**os.environ, **job.environment},
                start_new_session=True,
            )
            self._running.add(program)
            return program


def end_group(program: subprocess.Popen[bytes]) -> None:
    with contextlib.suppress(ProcessLookupError):
        os.killpg(program.pid, signal.SIGKILL)


def run_job(programs: Programs, paths: Paths, job: Job, time_limit: float) -> list[Case]:
    paths.log(job.name).parent.mkdir(parents=True, exist_ok=True)
    instead = job.prepare()
    if instead is not None:
        return instead
    try:
        return job.read(programs.run(paths, job, time_limit))
    except OSError as error:
        return [Case("(start of program)", Outcome.FAILED, f"could not be started: {error}")]


def make_scratch_folder(paths: Paths, job: Job) -> Path:
    """An empty folder to run in; a Windows program finds a fresh copy of the sample company file there."""
    folder = paths.scratch(job.name)
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    company_file = paths.sample_company_file()
    if job.under_wine and company_file:
        shutil.copy(company_file, folder)
    return folder


def ends_within(program: subprocess.Popen[bytes], seconds: float) -> bool:
    try:
        program.wait(seconds)
    except subprocess.TimeoutExpired:
        return False
    return True


class Run:
    """One run of the given jobs."""

    def __init__(self, paths: Paths, time_limit: float, report: Report) -> None:
        self._paths = paths
        self._time_limit = time_limit
        self._report = report
        self._programs = Programs()

    def run(self, jobs: list[Job]) -> None:
        """Wine programs on one side, everything else beside them."""
        beside = [job for job in jobs if not job.under_wine]
        thread = threading.Thread(target=self._run_in_order, args=(beside,))
        thread.start()
        try:
            self._run_under_wine([job for job in jobs if job.under_wine])
            thread.join()
        except KeyboardInterrupt:
            self._programs.stop()
            thread.join()
            raise

    def _run_in_order(self, jobs: list[Job]) -> None:
        for job in jobs:
            started = time.monotonic()
            cases = run_job(self._programs, self._paths, job, self._time_limit)
            if self._programs.stopped:
                return
            self._report.add(job, cases, time.monotonic() - started)

    def _run_under_wine(self, jobs: list[Job]) -> None:
        """One after the other, since they share a registry; those with windows in a session that has a display."""
        without_display = [job for job in jobs if not job.needs_display]
        if without_display:
            with wine_session.session():
                self._run_in_order(without_display)
        with_display = [job for job in jobs if job.needs_display]
        if with_display:
            with wine_session.virtual_display() as display, wine_session.session():
                self._run_in_order([replace(job, environment=job.environment | display) for job in with_display])


def parse_arguments(arguments: list[str]) -> argparse.Namespace:
    kinds = ", ".join(KINDS)
    parser = argparse.ArgumentParser(description="Runs the tests of this checkout.")
    parser.add_argument("kinds", nargs="*", metavar="KIND", help=f"what to run, of {kinds}; default: everything")
    parser.add_argument("--filter", default="", metavar="TEXT", help="only tests with TEXT in their name or file's name")
    parser.add_argument("--time-limit", type=float, default=DEFAULT_TIME_LIMIT_SECONDS, metavar="SECONDS")
    parser.add_argument("--root", type=Path, default=Path(__file__).parents[2], help="the top of the checkout")
    options = parser.parse_args(arguments)
    for kind in options.kinds:
        if kind not in (*KINDS, *COVERAGE_KINDS):
            parser.error(f"there is no kind of test '{kind}': {kinds}")
    return options


def nothing_found(chosen: Filter, jobs: Jobs) -> str:
    if not chosen.text:
        return "There is no test"
    near = jobs.suggestions()
    text = f"There is no test with '{chosen.text}' in its name or in that of its file"
    return text + (f"; near are: {', '.join(near)}" if near else "")


def main(arguments: list[str]) -> int:
    options = parse_arguments(arguments)
    root = options.root.resolve()
    paths = Paths(root, root / "build")
    chosen = Filter(options.filter)
    jobs = Jobs(paths, chosen, options.kinds or KINDS)
    report = Report(paths)
    # What ends this program otherwise lets it end those that it runs, too.
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    try:
        Run(paths, options.time_limit, report).run(jobs.collect())
    except KeyboardInterrupt:
        return INTERRUPTED
    return report.finish(nothing_found(chosen, jobs))


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
