"""./dev workbench: how it starts and how it ends."""

from __future__ import annotations

import contextlib
import os
import re
import signal
import socket
import subprocess
import threading
import unittest
import urllib.request

import own_checkout

ADDRESS = re.compile(r"The workbench runs at http://[^/]*:(\d+)/")
LAST_LINE = "Ctrl-C ends it.\n"
STOP_SECONDS = 60


class Workbench(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        own_checkout.needs("x64")
        own_checkout.make()

    def start(self) -> tuple[subprocess.Popen[str], int]:
        """The command, which serves the page, and its port."""
        process = own_checkout.start("workbench", "--port", "0")
        self.addCleanup(own_checkout.end, process)
        watchdog = threading.Timer(own_checkout.SECONDS, own_checkout.end, [process])
        watchdog.start()
        self.addCleanup(watchdog.cancel)
        assert process.stdout
        lines = []
        for line in process.stdout:
            lines.append(line)
            if line.endswith(LAST_LINE):
                break
        found = ADDRESS.search("".join(lines))
        self.assertIsNotNone(found, "".join(lines))
        assert found
        return process, int(found[1])

    def expect_to_end(self, process: subprocess.Popen[str], port: int, status: int) -> None:
        output, _ = process.communicate(timeout=STOP_SECONDS)
        self.assertEqual((status, "stopped\n"), (process.returncode, output))
        self.assertEqual([], own_checkout.left_running(process))
        with self.assertRaises(ConnectionRefusedError), contextlib.closing(socket.socket()) as client:
            client.connect(("127.0.0.1", port))

    def test_ctrl_c_ends_it_with_one_line_and_leaves_nothing_running(self) -> None:
        process, port = self.start()
        with urllib.request.urlopen(f"http://127.0.0.1:{port}/", timeout=STOP_SECONDS) as page:
            self.assertEqual(200, page.status)
        os.killpg(process.pid, signal.SIGINT)
        self.expect_to_end(process, port, 130)

    def test_so_does_the_signal_that_ends_programs(self) -> None:
        process, port = self.start()
        process.terminate()
        self.expect_to_end(process, port, 143)


if __name__ == "__main__":
    unittest.main()
