"""A workbench that is killed at random moments of a page's day: the books stay true, and what was acknowledged is in them.

`test_killed_day.py --measure [KILLS]` kills it 200 times, or as often as is said.
"""

from __future__ import annotations

import contextlib
import random
import re
import sqlite3
import subprocess
import sys
import threading
import time
import unittest
from collections import Counter
from dataclasses import dataclass, field
from pathlib import Path

from workbench_support import (
    Page, Workbench, assert_is_program, books_are_true, fresh_company, needs, start_program, windows_path,
)

SEED = 20260115
USUAL_KILLS = 10
MEASURED_KILLS = 200
# One in so many is killed while it starts.
STARTS = 8
LONGEST_START_SECONDS = 2.0
LONGEST_WORK_SECONDS = 1.5
CUSTOMER = "Eastgate Library"
MERCHANT = "5247710000123456"
MARK = re.compile(r"K-\d+[a-z]?")


def sale(mark: str) -> str:
    return (
        f'<SalesReceiptAddRq requestID="{mark}"><SalesReceiptAdd><RefNumber>{mark}</RefNumber><SalesReceiptLineAdd>'
        "<ItemRef><FullName>Hand trowel</FullName></ItemRef><Amount>18.00</Amount></SalesReceiptLineAdd></SalesReceiptAdd>"
        "</SalesReceiptAddRq>"
    )


def refund(mark: str) -> str:
    return (
        f'<CreditMemoAddRq requestID="{mark}"><CreditMemoAdd><CustomerRef><FullName>Paylodge Net Refund</FullName></CustomerRef>'
        f"<RefNumber>{mark}</RefNumber><Memo>Visa net refund</Memo><CreditMemoLineAdd><ItemRef><FullName>Net Refund - Visa/MasterCard</FullName></ItemRef>"
        "<Amount>2.00</Amount></CreditMemoLineAdd></CreditMemoAdd></CreditMemoAddRq>"
    )


def payment(mark: str) -> str:
    return (
        f'<ReceivePaymentAddRq requestID="{mark}"><ReceivePaymentAdd><CustomerRef><FullName>{CUSTOMER}</FullName></CustomerRef>'
        f"<RefNumber>{mark}</RefNumber><TotalAmount>1.25</TotalAmount><IsAutoApply>true</IsAutoApply></ReceivePaymentAdd>"
        "</ReceivePaymentAddRq>"
    )


def download_time(number: int) -> str:
    return f"2026-01-15T{number // 3600 % 24:02}:{number // 60 % 60:02}:{number % 60:02}"


@dataclass
class Day:
    """What pages have asked for, and what of it was acknowledged, over all lives of the program."""

    number: int = 0
    # Each document's marks, and which of the documents were acknowledged.
    documents: list[list[str]] = field(default_factory=list)
    acknowledged: set[int] = field(default_factory=set)
    time_sent: str = "0"
    time_acknowledged: str = "0"

    def work(self, page: Page) -> None:
        """Raises OSError when the connection breaks."""
        lh = page.create()
        while True:
            self.record(page, lh)
            self.take_payments(page, lh)
            self.close_batch(page, lh)

    def record(self, page: Page, lh: int) -> None:
        mark = self.next_mark()
        reply = self.send([mark], page, lh, "SavePaymentTxn", payment(mark))
        assert 'statusCode="0"' in reply, reply

    def take_payments(self, page: Page, lh: int) -> None:
        customer = page.call(lh, "GetCustomerIDForName", CUSTOMER)["result"]
        assert "error" not in page.call(lh, "GetInvoiceInfoForCustomerID", customer, "1.25")
        mark = self.next_mark()
        reply = self.send([mark], page, lh, "CreatePaymentTxn", CUSTOMER, "", "2.5", mark, "Visa", "", "true", *[""] * 15)
        assert 'statusCode="0"' in reply, reply

    def close_batch(self, page: Page, lh: int) -> None:
        mark = self.next_mark()
        marks = [mark + letter for letter in "abc"]
        reply = self.send(marks, page, lh, "CreateTxns", sale(marks[0]) + sale(marks[1]) + refund(marks[2]), False)
        assert reply.count('statusCode="0"') == len(marks), reply
        mark = self.next_mark()
        self.send([mark], page, lh, "TransferFunds", "Undeposited Funds", "Riverside Checking", "3.75", mark)
        self.time_sent = download_time(self.number)
        assert "error" not in page.call(lh, "SetLastTxnDownloadTime", MERCHANT, self.time_sent)
        self.time_acknowledged = self.time_sent

    def next_mark(self) -> str:
        self.number += 1
        return f"K-{self.number}"

    def send(self, marks: list[str], page: Page, lh: int, member: str, *values: object) -> str:
        """The reply to one document, from which moment on its marks have to be in the books."""
        self.documents.append(marks)
        reply = page.call(lh, member, *values)
        assert "error" not in reply, reply
        self.acknowledged.add(len(self.documents) - 1)
        return reply["result"]

    def problems(self, company: Path) -> list[str]:
        """What a second reader of the company file finds to be missing, doubled or half done."""
        found, stored_time = marks_and_time(company)
        problems = [f"{mark} is there {count} times" for mark, count in found.items() if count > 1]
        for number, marks in enumerate(self.documents):
            there = sum(mark in found for mark in marks)
            if there not in (0, len(marks)):
                problems.append(f"of {marks} only {there} are there")
            if there == 0 and number in self.acknowledged:
                problems.append(f"{marks} was acknowledged and is lost")
        if stored_time not in (self.time_acknowledged, self.time_sent):
            problems.append(f"the download time is {stored_time}, acknowledged was {self.time_acknowledged}")
        self.time_acknowledged = stored_time
        return problems


def marks_and_time(company: Path) -> tuple[Counter[str], str]:
    with contextlib.closing(sqlite3.connect(f"file:{company}?mode=ro", uri=True)) as data:
        rows = data.execute("SELECT coalesce(ref_number, ''), coalesce(memo, '') FROM transactions").fetchall()
        values = [value for (value,) in data.execute("SELECT value FROM data_file_properties")]
    marks = Counter(mark for row in rows for text in row for mark in MARK.findall(text))
    return marks, next((value for value in values if value.startswith("2026-01-15T")), "0")


def check(company: Path, architecture: str) -> str:
    """The check of the books. Wine's server may take a moment to notice that the program which had the file is gone."""
    for _ in range(20):
        findings = books_are_true(company, architecture)
        if "is in use by another program" not in findings:
            break
        time.sleep(0.1)
    return findings


def kill_at_work(company: Path, architecture: str, day: Day, seconds: float) -> None:
    workbench = Workbench(company, architecture=architecture)
    failures: list[BaseException] = []

    def work() -> None:
        try:
            with contextlib.suppress(OSError), contextlib.closing(Page(workbench)) as page:
                day.work(page)
        except AssertionError as error:
            failures.append(error)

    worker = threading.Thread(target=work)
    worker.start()
    time.sleep(seconds)
    assert_is_program(workbench.process)
    workbench.kill()
    worker.join()
    if failures:
        raise failures[0]


def kill_while_starting(company: Path, architecture: str, seconds: float) -> None:
    process = start_program("--company", windows_path(company), "--port", "0", architecture=architecture)
    with contextlib.suppress(subprocess.TimeoutExpired):
        status = process.wait(timeout=seconds)
        raise AssertionError(f"it ended by itself with {status}: {process.communicate()}")
    process.kill()
    process.communicate()


def live_and_be_killed(company: Path, architecture: str, kills: int, seed: int = SEED, says_so: bool = False) -> Day:
    """Raises AssertionError for the first kill that leaves something wrong behind."""
    day = Day()
    chance = random.Random(seed)
    for kill in range(kills):
        if says_so and kill % 20 == 0:
            print(f"{kill} kills, {len(day.acknowledged)} documents acknowledged", flush=True)
        if kill % STARTS == STARTS - 1:
            kill_while_starting(company, architecture, chance.uniform(0, LONGEST_START_SECONDS))
        else:
            kill_at_work(company, architecture, day, chance.uniform(0.05, LONGEST_WORK_SECONDS))
        findings = check(company, architecture)
        assert not findings, f"after kill {kill}: {findings}"
        problems = day.problems(company)
        assert not problems, f"after kill {kill}: {problems}"
    # The program works on with the same file.
    workbench = Workbench(company, architecture=architecture)
    try:
        with contextlib.closing(Page(workbench)) as page:
            accounts = page.call(page.create(), "GetAccounts", "Bank")["result"]
        assert "<AccountName>Riverside Checking</AccountName>" in accounts
    finally:
        workbench.end()
    return day


class Lost(unittest.TestCase):
    """What the second reader says of a company file in which nothing of the day is."""

    def problems(self, day: Day) -> list[str]:
        needs("x64")
        return day.problems(fresh_company("lost"))

    def test_what_was_acknowledged_is_missed(self) -> None:
        self.assertEqual([], self.problems(Day(documents=[["K-1"]])))
        day = Day(documents=[["K-1"], ["K-2a", "K-2b"]], acknowledged={1}, time_acknowledged="2026-01-15T00:00:02",
                  time_sent="2026-01-15T00:00:03")
        self.assertEqual(["['K-2a', 'K-2b'] was acknowledged and is lost",
                          "the download time is 0, acknowledged was 2026-01-15T00:00:02"], self.problems(day))

    def test_half_a_document_and_a_document_twice_are_noticed(self) -> None:
        company = fresh_company("half")
        with contextlib.closing(sqlite3.connect(company)) as data:
            rows = [number for (number,) in data.execute("SELECT number FROM transactions LIMIT 3")]
            data.executemany("UPDATE transactions SET ref_number = ? WHERE number = ?", zip(["K-1a", "K-2", "K-2"], rows))
            data.commit()
        self.assertEqual(["K-2 is there 2 times", "of ['K-1a', 'K-1b'] only 1 are there"],
                         Day(documents=[["K-1a", "K-1b"], ["K-2"]]).problems(company))


class KilledDay(unittest.TestCase):
    def test_nothing_that_was_acknowledged_is_lost(self) -> None:
        needs("x64")
        day = live_and_be_killed(fresh_company("killed-day"), "x64", USUAL_KILLS)
        self.assertGreater(len(day.acknowledged), USUAL_KILLS, "hardly any life was long enough to record something")


def measure(kills: int) -> None:
    begin = time.monotonic()
    day = live_and_be_killed(fresh_company("killed-day-measured"), "x64", kills, SEED + 1, says_so=True)
    minutes = (time.monotonic() - begin) / 60
    print(f"{kills} kills in {minutes:.0f} minutes: {len(day.documents)} documents sent, {len(day.acknowledged)} acknowledged, none lost,")
    print(f"{len(day.documents) - len(day.acknowledged)} cut off by a kill, each there as a whole or not at all; the books were true each time")


if __name__ == "__main__":
    if sys.argv[1:2] == ["--measure"]:
        measure(int(sys.argv[2]) if len(sys.argv) > 2 else MEASURED_KILLS)
    else:
        unittest.main()
