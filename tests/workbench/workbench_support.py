"""What the tests of the workbench's server share: the running program, and a client that can send it anything."""

from __future__ import annotations

import base64
import contextlib
import json
import os
import re
import shutil
import socket
import struct
import subprocess
import sys
import threading
import time
import unittest
from dataclasses import dataclass
from pathlib import Path
from typing import Any

TOP = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(TOP / "tools" / "testrun"), str(TOP / "tests" / "support")]

import windows_programs  # noqa: E402
from windows_programs import empty_folder  # noqa: E402
from wine_session import windows_path, wine_command  # noqa: E402

SCRATCH = TOP / "build" / "test-scratch" / "workbench"
SAMPLE = TOP / "build" / "riverside.lhcompany"
# A build that takes the place of the one for x64; then only that one is tested.
FLAVOUR = os.environ.get("WORKBENCH_FLAVOUR", "")
START_SECONDS = 120
REPLY_SECONDS = 60
APPROVED_NAME = "dev.ledgerhall.example"
ACCOUNTING = "Paylodge.Paylodge"
CONTROL = "{00A0CCCE-89E6-4779-AACD-E774651CB5AD}"
CARD_NUMBER = "4111111111111111"
NAVIGATION = {"Accept": "text/html,application/xhtml+xml,application/xml;q=0.9,*/*;q=0.8"}


def architectures() -> list[str]:
    return [name for name in ("x64", "x86") if program(name).exists()]


def program(architecture: str, path: str = "workbench/workbench.exe") -> Path:
    return TOP / "build" / (FLAVOUR or architecture) / path


def needs(architecture: str) -> None:
    """Skips a test where such programs do not run, or are not to be tested."""
    if FLAVOUR and architecture != "x64":
        raise unittest.SkipTest(f"only {FLAVOUR} is tested")
    windows_programs.needs(architecture)


def fresh_folder(name: str) -> Path:
    return empty_folder(SCRATCH / name)


def fresh_company(name: str) -> Path:
    file = fresh_folder(name) / "riverside.lhcompany"
    shutil.copy(SAMPLE, file)
    return file


def books_are_true(company: Path, architecture: str = "x64") -> str:
    """What the check of the company file says against it; empty when nothing."""
    checked = subprocess.run(
        [*wine_command(str(program(architecture, "refhost/company.exe"))), "check", windows_path(company)],
        stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False, timeout=60,
    )
    return "" if checked.returncode == 0 else checked.stdout + checked.stderr


@dataclass
class Response:
    status: int
    headers: dict[str, str]
    body: bytes

    @property
    def json(self) -> Any:
        return json.loads(self.body)


class RawConnection:
    """A connection to which a test writes bytes as it likes."""

    def __init__(self, port: int, seconds: float = REPLY_SECONDS) -> None:
        self.socket = socket.create_connection(("127.0.0.1", port), timeout=seconds)
        self.socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        self._unread = b""

    def send(self, data: bytes) -> None:
        self.socket.sendall(data)

    def read_some(self) -> bytes:
        data, self._unread = self._unread, b""
        return data or self.socket.recv(65536)

    def read_exactly(self, size: int) -> bytes:
        while len(self._unread) < size:
            data = self.socket.recv(65536)
            if not data:
                raise ConnectionError("the server has closed the connection")
            self._unread += data
        data, self._unread = self._unread[:size], self._unread[size:]
        return data

    def read_response(self, has_body: bool = True) -> Response:
        while b"\r\n\r\n" not in self._unread:
            data = self.socket.recv(65536)
            if not data:
                raise ConnectionError("the server has closed the connection without a reply")
            self._unread += data
        head, self._unread = self._unread.split(b"\r\n\r\n", 1)
        lines = head.decode("latin-1").split("\r\n")
        headers = {name.lower(): value.strip() for name, value in (line.split(":", 1) for line in lines[1:])}
        size = int(headers.get("content-length", "0")) if has_body else 0
        return Response(int(lines[0].split()[1]), headers, self.read_exactly(size))

    def is_closed_by_server(self) -> bool:
        """Reads until the end; False when the server neither sends nor closes within the time of this connection."""
        with contextlib.suppress(ConnectionError):
            try:
                while self.read_some():
                    pass
            except TimeoutError:
                return False
        return True

    def close(self) -> None:
        self.socket.close()


class WebSocket:
    """A page's socket, written out."""

    def __init__(self, port: int, target: str, host: str, headers: dict[str, str] | None = None) -> None:
        self.connection = RawConnection(port)
        fields = {
            "Host": host, "Origin": f"http://{host}", "Upgrade": "websocket", "Connection": "Upgrade",
            "Sec-WebSocket-Version": "13", "Sec-WebSocket-Key": base64.b64encode(os.urandom(16)).decode(),
        } | (headers or {})
        self.connection.send(request_bytes("GET", target, fields))
        self.response = self.connection.read_response(has_body=False)

    def send(self, message: Any) -> None:
        self.send_frame(1, json.dumps(message).encode())

    def send_frame(self, opcode: int, payload: bytes) -> None:
        mask = os.urandom(4)
        size = len(payload)
        head = bytes([0x80 | opcode])
        if size < 126:
            head += bytes([0x80 | size])
        elif size < 65536:
            head += bytes([0x80 | 126]) + struct.pack(">H", size)
        else:
            head += bytes([0x80 | 127]) + struct.pack(">Q", size)
        masked = bytes(byte ^ mask[i % 4] for i, byte in enumerate(payload)) if size < 1 << 20 else payload
        self.connection.send(head + mask + masked)

    def receive(self) -> Any:
        """The next message of the server."""
        text = b""
        while True:
            first, payload = self._receive_frame()
            opcode = first & 0x0F
            if opcode == 8:
                raise ConnectionError("the server has closed the socket")
            if opcode == 9:
                self.send_frame(10, payload)
            if opcode in (0, 1):
                text += payload
                if first & 0x80:
                    return json.loads(text)

    def _receive_frame(self) -> tuple[int, bytes]:
        first, second = self.connection.read_exactly(2)
        size = second & 0x7F
        if size == 126:
            (size,) = struct.unpack(">H", self.connection.read_exactly(2))
        elif size == 127:
            (size,) = struct.unpack(">Q", self.connection.read_exactly(8))
        return first, self.connection.read_exactly(size)

    def receive_of(self, kind: str) -> Any:
        """The next message of one type; others are passed over."""
        while True:
            message = self.receive()
            if message["type"] == kind:
                return message

    def close(self) -> None:
        self.connection.close()


def request_bytes(method: str, target: str, headers: dict[str, str], body: bytes = b"") -> bytes:
    lines = [f"{method} {target} HTTP/1.1", *(f"{name}: {value}" for name, value in headers.items())]
    if body or method == "POST":
        lines.append(f"Content-Length: {len(body)}")
    return "\r\n".join(lines).encode("latin-1") + b"\r\n\r\n" + body


class Page:
    """A page as a browser would have it: its document was served, its socket is open."""

    def __init__(self, workbench: Workbench, host: str | None = None, opens_socket: bool = True) -> None:
        self.workbench = workbench
        self.host = host or workbench.host
        document = workbench.get("/", headers=NAVIGATION, host=self.host).body.decode()
        found = re.search(r'data-page="(\w+)" data-token="(\w+)"', document)
        assert found, "the document has no bridge"
        self.id, self.token = found.groups()
        self.connection: RawConnection | None = None
        self.socket: WebSocket | None = None
        if opens_socket:
            self.open_socket()

    def open_socket(self) -> None:
        self.socket = WebSocket(self.workbench.port, f"/workbench/socket?page={self.id}&token={self.token}", self.host)
        assert self.socket.response.status == 101, self.socket.response
        self.hello = self.socket.receive()

    def post(self, path: str, message: Any) -> Response:
        """One request after the other in one connection, as a browser sends them."""
        if self.connection is None:
            self.connection = RawConnection(self.workbench.port)
        headers = {"Host": self.host, "X-Workbench-Token": self.token, "Content-Type": "application/json"}
        self.connection.send(request_bytes("POST", path, headers, json.dumps(message).encode()))
        return self.connection.read_response()

    def create(self, name: str = ACCOUNTING) -> int:
        reply = self.post("/workbench/objects", {"page": self.id, "class": name}).json
        return reply["object"]

    def call(self, number: int, member: str, *values: Any, kind: str = "call") -> Any:
        """The whole reply."""
        message = {"page": self.id, "object": number, "member": member, "kind": kind, "arguments": list(values)}
        return self.post("/workbench/call", message).json

    def close(self) -> None:
        for part in (self.connection, self.socket):
            if part:
                part.close()


class Workbench:
    """The program, running."""

    def __init__(self, company: Path, *options: str, architecture: str = "x64") -> None:
        self.process = start_program("--company", windows_path(company), "--port", "0", *options, architecture=architecture)
        watchdog = threading.Timer(START_SECONDS, self.process.kill)
        watchdog.start()
        assert self.process.stdout
        line = self.process.stdout.readline()
        watchdog.cancel()
        found = re.search(r":(\d+)/", line)
        if not found:
            errors = self.process.communicate()[1]
            raise AssertionError(f"the workbench did not start (status {self.process.returncode}): {line}{errors}")
        self.port = int(found.group(1))
        self.host = f"{APPROVED_NAME}:{self.port}"
        self.token = self.get("/workbench/session").json["token"]

    def request(self, method: str, target: str, message: Any = None, *, headers: dict[str, str] | None = None,
                host: str | None = None) -> Response:
        fields = {"Host": host or self.host} | (headers or {})
        body = b""
        if hasattr(self, "token"):
            fields.setdefault("X-Workbench-Token", self.token)
        if message is not None:
            fields.setdefault("Content-Type", "application/json")
            body = message if isinstance(message, bytes) else json.dumps(message).encode()
        connection = RawConnection(self.port)
        try:
            connection.send(request_bytes(method, target, {"Connection": "close"} | fields, body))
            return connection.read_response()
        finally:
            connection.close()

    def get(self, target: str, **options: Any) -> Response:
        return self.request("GET", target, **options)

    def post(self, target: str, message: Any, **options: Any) -> Response:
        return self.request("POST", target, message, **options)

    def state(self) -> Any:
        return self.get("/workbench/state").json

    def log(self) -> list[Any]:
        return self.get("/workbench/log").json["entries"]

    def wait_until(self, condition: Any, what: str, seconds: float = 20) -> None:
        """Until the condition holds for the state."""
        end = time.monotonic() + seconds
        while not condition(self.state()):
            if time.monotonic() > end:
                raise AssertionError(f"{what} did not come: {self.state()}")
            time.sleep(0.05)

    def stop(self) -> int:
        """Ends it as Ctrl-C of './dev workbench' does; its exit status."""
        assert self.process.stdin
        self.process.stdin.close()
        try:
            status = self.process.wait(timeout=30)
        finally:
            self.kill()
        return status

    def end(self) -> None:
        """Ends it in whatever state it is: by itself where it can, which is when a build that counts its lines writes them."""
        with contextlib.suppress(OSError, subprocess.TimeoutExpired):
            self.stop()

    def kill(self) -> None:
        self.process.kill()
        self.process.wait()
        for stream in (self.process.stdin, self.process.stdout, self.process.stderr):
            if stream:
                stream.close()


def assert_is_program(process: subprocess.Popen[str]) -> None:
    """Wine's loader becomes the program; another way to start it would leave a process of its own between."""
    name = (Path("/proc") / str(process.pid) / "comm").read_text().strip()
    assert name.startswith("workbench"), f"{name} is not the workbench"


def start_program(*words: str, architecture: str = "x64") -> subprocess.Popen[str]:
    return subprocess.Popen(
        [*wine_command(str(program(architecture))), "--ends-with-input", *words],
        stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, encoding="utf-8",
    )
