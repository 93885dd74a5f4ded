"""Many calls and pushes: none is lost, none comes out of order, and memory stays flat. `test_load.py --measure` measures."""

from __future__ import annotations

import statistics
import sys
import time
import unittest
from pathlib import Path

from workbench_support import CONTROL, Page, RawConnection, Workbench, assert_is_program, fresh_company, needs, request_bytes

WARM_UP_CALLS = 1500
CALLS = 1500
PUSHES = 400
# What the allocator may still take while it settles.
MEMORY_SLACK_KB = 4096


def memory_kb(workbench: Workbench) -> int:
    assert_is_program(workbench.process)
    return int((Path("/proc") / str(workbench.process.pid) / "status").read_text().split("VmRSS:")[1].split()[0])


def call_often(page: Page, number: int, calls: int) -> None:
    for i in range(0, calls, 2):
        assert page.call(number, "TransactionID", str(i), kind="put") == {"result": None}
        assert page.call(number, "TransactionID", kind="get") == {"result": str(i)}


def push_often(page: Page, pushes: int, first: int = 1) -> None:
    """All of them before anything is read."""
    texts = [str(i) for i in range(pushes)]
    for text in texts:
        reply = page.post("/workbench/push", {"method": "SetTransactionID", "arguments": [text]}).json
        assert reply == {"result": None}, reply
    for n, text in enumerate(texts, first):
        message = page.socket.receive()
        assert (message["n"], message["text"]) == (n, f'app.lhProxy.invoiceIdFromLH("{text}")'), message


class Load(unittest.TestCase):
    def test_calls_and_pushes_in_a_row(self) -> None:
        needs("x64")
        workbench = Workbench(fresh_company("load"))
        try:
            page = Page(workbench)
            number, control = page.create(), page.create(CONTROL)
            page.call(control, "SubscribeToNotifications")
            # Until the log is full, it grows.
            call_often(page, number, WARM_UP_CALLS)
            push_often(page, PUSHES)
            before = memory_kb(workbench)
            call_often(page, number, CALLS)
            push_often(page, PUSHES, PUSHES + 1)
            self.assertLess(memory_kb(workbench) - before, MEMORY_SLACK_KB)
            page.close()
            workbench.wait_until(lambda state: state["componentUnused"], "the end of the page's objects")
        finally:
            workbench.end()


def measure(calls: int, pushes: int) -> None:
    """Calls beside empty requests, in turn, over one connection each."""
    workbench = Workbench(fresh_company("measure"))
    page = Page(workbench)
    number, control = page.create(), page.create(CONTROL)
    page.call(control, "SubscribeToNotifications")
    empty = RawConnection(workbench.port)
    request = request_bytes("GET", "/workbench/empty", {"Host": page.host, "X-Workbench-Token": page.token})
    times: dict[str, list[float]] = {"empty request": [], "TransactionID (a property)": [], "GetAccounts (asks the books)": []}
    call_often(page, number, 2000)
    before = memory_kb(workbench)
    for i in range(calls):
        for name, work in (
            ("empty request", lambda: (empty.send(request), empty.read_response())),
            ("TransactionID (a property)", lambda: page.call(number, "TransactionID", kind="get")),
            ("GetAccounts (asks the books)", lambda: page.call(number, "GetAccounts", "Bank") if i % 10 == 0 else None),
        ):
            begin = time.perf_counter()
            if work() is not None:
                times[name].append((time.perf_counter() - begin) * 1e6)
    floor = statistics.median(times["empty request"])
    for name, measured in times.items():
        median = statistics.median(measured)
        print(f"{name:<30} {median:8.0f} us {median / floor:6.2f}")
    begin = time.perf_counter()
    push_often(page, pushes)
    print(f"{'a push, to its arrival':<30} {(time.perf_counter() - begin) / pushes * 1e6:8.0f} us")
    print(f"memory: {before} KB before, {memory_kb(workbench)} KB after {calls} calls and {pushes} pushes, none lost")
    workbench.stop()


if __name__ == "__main__":
    if sys.argv[1:] == ["--measure"]:
        measure(10_000, 1_000)
    else:
        unittest.main()
