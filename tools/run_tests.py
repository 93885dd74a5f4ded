"""Runs the tests of this checkout.

Prints a line for each program, every failure with its text, the reason of everything that was skipped, and at the end
"N passed, N failed" (", N skipped"). Exit status 0 only when something ran and nothing failed. Expects the environment
of wine.sh.
"""

from __future__ import annotations

import argparse
import os
import shutil
import subprocess
import sys
import threading
import time
from dataclasses import replace
from pathlib import Path

import wine_session
from test_jobs import KINDS, Job, Paths, collect_jobs
from test_results import Case, Ending, Outcome

DEFAULT_TIME_LIMIT_SECONDS = 120


class Report:
    """Prints results as they come and keeps what the end of the run needs. Used by several threads."""

    def __init__(self, pattern: str, paths: Paths) -> None:
        self._pattern = pattern
        self._paths = paths
        self._lock = threading.Lock()
        self._cases: list[Case] = []

    def add(self, job: Job, cases: list[Case], seconds: float) -> None:
        named = [replace(case, name=f"{job.name}/{case.name}") for case in cases]
        # A name in parentheses stands for the program as a whole, whose tests nobody can name.
        chosen = [case for case in named if self._pattern in case.name or case.name.endswith(")")]
        if not chosen:
            return
        with self._lock:
            self._cases += chosen
            print(f"  {job.name:<32} {count_text(chosen)}  ({seconds:.1f} s)")
            self._print_failures(job, [case for case in chosen if case.outcome is Outcome.FAILED])
            sys.stdout.flush()

    def _print_failures(self, job: Job, failed: list[Case]) -> None:
        for case in failed:
            print(f"FAILED {case.name}")
            print("".join(f"    {line}\n" for line in case.text.splitlines()), end="")
        if failed:
            print(f"    (the whole output: {self._paths.log(job.name)})")

    def finish(self) -> int:
        """Prints the end of the run; returns the exit status."""
        self._list("Skipped:", Outcome.SKIPPED, with_text=True)
        self._list("Failed:", Outcome.FAILED, with_text=False)
        if not self._cases:
            print("There is no test" + (f" with '{self._pattern}' in its name" if self._pattern else ""))
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


def run_job(paths: Paths, job: Job, time_limit: float) -> list[Case]:
    paths.log(job.name).parent.mkdir(parents=True, exist_ok=True)
    instead = job.prepare()
    if instead:
        return [instead]
    try:
        return job.read(run_program(paths, job, time_limit))
    except OSError as error:
        return [Case("(start of program)", Outcome.FAILED, f"could not be started: {error}")]


def run_program(paths: Paths, job: Job, time_limit: float) -> Ending:
    log = paths.log(job.name)
    # The output goes to a file: processes that Wine leaves behind would keep a pipe open.
    with log.open("wb") as output:
        program = subprocess.Popen(
            job.command,
            stdin=subprocess.DEVNULL,
            stdout=output,
            stderr=subprocess.STDOUT,
            cwd=make_scratch_folder(paths, job),
            env={**os.environ, **job.environment},
        )
        ended = ends_within(program, time_limit)
        if not ended:
            end_program(program, job)
    text = log.read_text(encoding="utf-8", errors="replace")
    return Ending(text, program.returncode, None if ended else time_limit)


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


def end_program(program: subprocess.Popen[bytes], job: Job) -> None:
    program.kill()
    program.wait()
    if job.under_wine:
        # What was started here may be no more than a launcher. No other program of the prefix is running.
        wine_session.stop_server()


def run_in_order(paths: Paths, jobs: list[Job], time_limit: float, report: Report) -> None:
    for job in jobs:
        started = time.monotonic()
        cases = run_job(paths, job, time_limit)
        report.add(job, cases, time.monotonic() - started)


def run_under_wine(paths: Paths, jobs: list[Job], time_limit: float, report: Report) -> None:
    """One after the other, since they share a registry; those with windows in a session that has a display."""
    without_display = [job for job in jobs if not job.needs_display]
    if without_display:
        with wine_session.session():
            run_in_order(paths, without_display, time_limit, report)
    with_display = [job for job in jobs if job.needs_display]
    if with_display:
        with wine_session.virtual_display() as display, wine_session.session():
            jobs_with_it = [replace(job, environment={**job.environment, **display}) for job in with_display]
            run_in_order(paths, jobs_with_it, time_limit, report)


def run_all(paths: Paths, jobs: list[Job], time_limit: float, report: Report) -> None:
    """Wine programs on one side, everything else beside them."""
    beside = [job for job in jobs if not job.under_wine]
    thread = threading.Thread(target=run_in_order, args=(paths, beside, time_limit, report))
    thread.start()
    try:
        run_under_wine(paths, [job for job in jobs if job.under_wine], time_limit, report)
    finally:
        thread.join()


def parse_arguments(arguments: list[str]) -> argparse.Namespace:
    kinds = ", ".join(KINDS)
    parser = argparse.ArgumentParser(description="Runs the tests of this checkout.")
    parser.add_argument("kinds", nargs="*", metavar="KIND", help=f"what to run, of {kinds}; default: everything")
    parser.add_argument("--filter", default="", metavar="TEXT", help="only tests with TEXT in their name")
    parser.add_argument("--time-limit", type=float, default=DEFAULT_TIME_LIMIT_SECONDS, metavar="SECONDS")
    parser.add_argument("--root", type=Path, default=Path(__file__).parent.parent, help="the top of the checkout")
    options = parser.parse_args(arguments)
    for kind in options.kinds:
        if kind not in KINDS:
            parser.error(f"there is no kind of test '{kind}': {kinds}")
    return options


def main(arguments: list[str]) -> int:
    options = parse_arguments(arguments)
    root = options.root.resolve()
    paths = Paths(root, root / "build")
    report = Report(options.filter, paths)
    jobs = collect_jobs(paths, options.kinds or list(KINDS), options.filter)
    run_all(paths, jobs, options.time_limit, report)
    return report.finish()


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
