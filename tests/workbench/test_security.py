"""Whom the workbench answers, and what it never gives away: each rule with the attack on it."""

from __future__ import annotations

import contextlib
import json
import os
import socket
import time
import unittest

from workbench_support import (
    CARD_NUMBER, NAVIGATION, Page, RawConnection, SCRATCH, WebSocket, Workbench, fresh_company, fresh_folder, needs,
    request_bytes, windows_path,
)

LARGEST_HEADER = 16 * 1024
LARGEST_BODY = 4 * 1024 * 1024
LARGEST_PAGE_MESSAGE = 64 * 1024
MOST_CONNECTIONS = 64
MOST_OBJECTS = 64
MOST_PAGES = 32


class SecurityTest(unittest.TestCase):
    """With one program for all tests of a class, which serves a page folder with secrets beside it."""

    @classmethod
    def setUpClass(cls) -> None:
        needs("x64")
        folder = fresh_folder("security-page")
        cls.page_folder = folder / "page"
        (cls.page_folder / "part").mkdir(parents=True)
        (folder / "beside").mkdir()
        (folder / "page-too").mkdir()
        for secret in (folder / "secret.txt", folder / "beside" / "secret.txt", folder / "page-too" / "secret.txt"):
            secret.write_text("SECRET")
        (cls.page_folder / ".hidden").write_text("SECRET")
        (cls.page_folder / "index.html").write_text("<!doctype html><title>x</title>")
        (cls.page_folder / "a.js").write_text("1")
        (cls.page_folder / "part" / "index.html").write_text("<p>part")
        os.symlink(folder / "secret.txt", cls.page_folder / "link.txt")
        os.symlink(folder / "beside", cls.page_folder / "linked")
        os.symlink(folder / "page-too", cls.page_folder / "linked-too")
        cls.workbench = Workbench(fresh_company("security"), "--page", windows_path(cls.page_folder))

    @classmethod
    def tearDownClass(cls) -> None:
        cls.workbench.end()

    def assert_still_serves(self) -> None:
        self.assertEqual(200, self.workbench.get("/workbench/empty").status)


class Network(SecurityTest):
    def test_listens_on_the_loopback_address_only(self) -> None:
        listening = set()
        for table in ("/proc/net/tcp", "/proc/net/tcp6"):
            with open(table, encoding="ascii") as lines:
                for fields in map(str.split, list(lines)[1:]):
                    address, port = fields[1].split(":")
                    if fields[3] == "0A" and int(port, 16) == self.workbench.port:
                        listening.add(address)
        self.assertEqual({"0100007F"}, listening)

    def test_a_second_program_cannot_take_the_port(self) -> None:
        with contextlib.closing(socket.socket()) as other:
            with self.assertRaises(OSError):
                other.bind(("127.0.0.1", self.workbench.port))


class Names(SecurityTest):
    def test_a_name_that_somebody_points_at_this_machine_is_not_answered(self) -> None:
        for host in ("elsewhere.example", f"elsewhere.example:{self.workbench.port}", f"{self.workbench.host}.elsewhere.example",
                     f"0.0.0.0:{self.workbench.port}", f"[::1]:{self.workbench.port}", "dev.ledgerhall.example", "localhost"):
            for target in ("/", "/a.js", "/workbench/session", "/workbench/bridge.js", "/workbench/state"):
                with self.subTest(host=host, target=target):
                    response = self.workbench.get(target, host=host)
                    self.assertEqual(421, response.status)
                    self.assertNotIn(self.workbench.token.encode(), response.body)

    def test_a_request_without_a_name_or_with_two_is_not_answered(self) -> None:
        for head in (b"GET / HTTP/1.1\r\n\r\n", b"GET / HTTP/1.0\r\n\r\n",
                     f"GET / HTTP/1.1\r\nHost: {self.workbench.host}\r\nHost: elsewhere.example\r\n\r\n".encode()):
            connection = RawConnection(self.workbench.port)
            connection.send(head)
            self.assertEqual(421, connection.read_response().status)
            connection.close()

    def test_pages_of_other_sites_are_not_answered(self) -> None:
        for origin in ("http://elsewhere.example", "null", "https://" + self.workbench.host,
                       f"http://localhost:{self.workbench.port}"):
            response = self.workbench.get("/workbench/state", headers={"Origin": origin})
            self.assertEqual(403, response.status, origin)
            response = self.workbench.post("/workbench/push", {"method": "SetReconFeeData", "arguments": ["x"]},
                                           headers={"Origin": origin})
            self.assertEqual(403, response.status, origin)
        self.assertEqual(200, self.workbench.get("/workbench/state", headers={"Origin": "http://" + self.workbench.host}).status)

    def test_no_other_site_may_read_a_reply(self) -> None:
        for target in ("/", "/workbench/session", "/workbench/bridge.js"):
            headers = self.workbench.get(target).headers
            self.assertNotIn("access-control-allow-origin", headers)
            self.assertEqual("same-origin", headers["cross-origin-resource-policy"])

    def test_a_preflight_gets_no_permission(self) -> None:
        response = self.workbench.request("OPTIONS", "/workbench/call", headers={
            "Origin": "http://elsewhere.example", "Access-Control-Request-Method": "POST",
            "Access-Control-Request-Headers": "x-workbench-token"})
        self.assertEqual(403, response.status)
        self.assertNotIn("access-control-allow-origin", response.headers)


class Token(SecurityTest):
    def test_is_needed_for_everything_of_the_workbench(self) -> None:
        for method, target in (("GET", "/workbench/empty"), ("GET", "/workbench/state"), ("GET", "/workbench/log"),
                               ("GET", "/workbench/journal"), ("POST", "/workbench/objects"), ("POST", "/workbench/call"),
                               ("POST", "/workbench/push"), ("POST", "/workbench/faults"), ("DELETE", "/workbench/faults"),
                               ("POST", "/workbench/request"), ("DELETE", "/workbench/log"), ("GET", "/workbench/nothing")):
            for token in ("", "0" * 32, self.workbench.token[:-1], self.workbench.token + "0", self.workbench.token.upper()):
                response = self.workbench.request(method, target, {} if method == "POST" else None,
                                                  headers={"X-Workbench-Token": token})
                self.assertEqual(403, response.status, f"{method} {target} {token}")

    def test_is_long_and_new_for_each_start(self) -> None:
        other = Workbench(fresh_company("security-other"))
        try:
            self.assertRegex(self.workbench.token, r"\A[0-9a-f]{32}\Z")
            self.assertNotEqual(self.workbench.token, other.token)
        finally:
            other.end()

    def test_a_form_of_another_site_cannot_call(self) -> None:
        # What a page can send anywhere without asking: no header of its own, a body of text.
        for kind in ("text/plain", "application/x-www-form-urlencoded", "multipart/form-data"):
            response = self.workbench.post("/workbench/push", {"method": "SetReconFeeData", "arguments": ["x"]},
                                           headers={"Content-Type": kind})
            self.assertEqual(415, response.status, kind)


class Sockets(SecurityTest):
    def status_of(self, target: str, headers: dict[str, str] | None = None) -> int:
        opened = WebSocket(self.workbench.port, target, self.workbench.host, headers)
        opened.close()
        return opened.response.status

    def test_need_the_token_and_the_own_origin(self) -> None:
        page = Page(self.workbench, opens_socket=False)
        target = f"/workbench/socket?page={page.id}&token={page.token}"
        self.assertEqual(403, self.status_of(f"/workbench/socket?page={page.id}"))
        self.assertEqual(403, self.status_of(f"/workbench/socket?page={page.id}&token={'0' * 32}"))
        self.assertEqual(403, self.status_of(target, {"Origin": "http://elsewhere.example"}))
        self.assertEqual(421, self.status_of(target, {"Host": "elsewhere.example"}))
        self.assertEqual(404, self.status_of(f"/workbench/socket?page=other&token={page.token}"))
        self.assertEqual(404, self.status_of(f"/workbench/else?page={page.id}&token={page.token}"))
        self.assertEqual(101, self.status_of(target))

    def test_a_page_has_one_only(self) -> None:
        page = Page(self.workbench)
        self.assertEqual(404, self.status_of(f"/workbench/socket?page={page.id}&token={page.token}"))
        page.close()

    def test_what_is_no_message_ends_the_page(self) -> None:
        for opcode, payload in ((1, b"{"), (1, b"[]"), (1, b'{"type":"other"}'), (1, b"\xff\xfe"), (2, b"{}"),
                                (1, b'{"type":"watch","on":1}'), (1, b"[" * 60000)):
            page = Page(self.workbench)
            page.socket.send_frame(opcode, payload)
            with self.assertRaises(ConnectionError, msg=repr(payload[:20])):
                page.socket.receive()
            page.close()
        self.assert_still_serves()

    def test_too_large_a_message_ends_the_page(self) -> None:
        page = Page(self.workbench)
        page.socket.send_frame(1, b" " * (LARGEST_PAGE_MESSAGE + 1))
        with self.assertRaises(ConnectionError):
            page.socket.receive()
        page.close()
        self.assert_still_serves()


class Files(SecurityTest):
    def test_nothing_outside_the_folder_is_served(self) -> None:
        for target in ("/../secret.txt", "/part/../../secret.txt", "/..%2fsecret.txt", "/%2e%2e/secret.txt",
                       "/%2e%2e%2fsecret.txt", "/..%5csecret.txt", "/..\\secret.txt", "/%252e%252e/secret.txt",
                       "/....//secret.txt", "/..%c0%afsecret.txt", "/%c0%ae%c0%ae/secret.txt", "//../secret.txt",
                       "/part/..%00/../secret.txt", "/..;/secret.txt", "/.%2e/secret.txt", "/..%252fsecret.txt",
                       "/../page-too/secret.txt", "/.hidden", "/%2ehidden",
                       windows_path(SCRATCH / "security-page" / "secret.txt").replace("\\", "/"),
                       "/Z:" + str(SCRATCH / "security-page" / "secret.txt"), str(SCRATCH / "security-page/secret.txt"),
                       "/%5c%5clocalhost%5cc$/windows/win.ini", "/C:/windows/win.ini", "/c:windows/win.ini",
                       "/%3f%3f/C:/windows/win.ini", "/?../secret.txt"):
            with self.subTest(target=target):
                response = self.workbench.get(target)
                self.assertNotIn(b"SECRET", response.body)
                self.assertNotIn(b"[fonts]", response.body)
                self.assertIn(response.status, (400, 404) if target != "/?../secret.txt" else (200,))

    def test_no_link_leads_out_of_the_folder(self) -> None:
        for target in ("/link.txt", "/linked/secret.txt", "/linked-too/secret.txt", "/linked", "/linked/"):
            response = self.workbench.get(target)
            self.assertEqual(404, response.status, target)
            self.assertNotIn(b"SECRET", response.body)

    def test_no_stream_or_device_is_opened(self) -> None:
        for target in ("/a.js::$DATA", "/a.js:stream", "/a.js%3a%3a$DATA", "/nul", "/NUL.js", "/con", "/com1", "/aux.html",
                       "/a.js.", "/a.js%20", "/conin$", "/part::$INDEX_ALLOCATION/"):
            self.assertEqual(404, self.workbench.get(target).status, target)

    def test_only_files_of_the_folder_are_served(self) -> None:
        self.assertEqual(b"1", self.workbench.get("/a.js").body)
        self.assertEqual(404, self.workbench.get("/b.js").status)
        self.assertEqual("/part/?a=1", self.workbench.get("/part?a=1").headers["location"])
        self.assertEqual(b"<p>part", self.workbench.get("/part/").body)
        self.assertEqual(405, self.workbench.post("/a.js", {}).status)
        self.assertEqual(405, self.workbench.request("DELETE", "/a.js").status)


class Headers(SecurityTest):
    def test_every_reply_forbids_guessing_and_keeping(self) -> None:
        for target in ("/", "/a.js", "/missing", "/workbench/bridge.js", "/workbench/state", "/workbench/nothing"):
            headers = self.workbench.get(target).headers
            self.assertEqual("nosniff", headers["x-content-type-options"], target)
            self.assertEqual("no-store", headers["cache-control"], target)
            self.assertEqual("no-referrer", headers["referrer-policy"], target)

    def test_documents_may_load_and_reach_their_own_server_only(self) -> None:
        policy = self.workbench.get("/", headers=NAVIGATION).headers["content-security-policy"]
        for part in ("default-src 'self' data: blob:", f"connect-src 'self' ws://{self.workbench.host}",
                     "frame-ancestors 'self'", "object-src 'none'", "base-uri 'self'", "form-action 'self'"):
            self.assertIn(part, policy)

    def test_the_own_page_runs_no_script_of_its_document(self) -> None:
        own = Workbench(fresh_company("security-own"))
        try:
            first, second = (own.get("/", headers=NAVIGATION).headers["content-security-policy"] for _ in range(2))
            self.assertRegex(first, r"script-src 'self' 'nonce-[0-9a-f]{32}'")
            self.assertNotIn("unsafe", first)
            self.assertNotEqual(first, second)
        finally:
            own.end()

    def test_only_what_a_browser_opens_becomes_a_page(self) -> None:
        self.assertEqual(b"<!doctype html><title>x</title>", self.workbench.get("/").body)
        self.assertIn(b"bridge.js", self.workbench.get("/", headers=NAVIGATION).body)


class Limits(SecurityTest):
    def test_too_large_a_header_is_refused(self) -> None:
        self.assertEqual(431, self.workbench.get("/", headers={"X": "x" * LARGEST_HEADER}).status)
        self.assertEqual(431, self.workbench.get("/" + "x" * LARGEST_HEADER).status)
        self.assert_still_serves()

    def test_too_large_a_body_is_refused_before_it_is_read(self) -> None:
        connection = RawConnection(self.workbench.port)
        headers = {"Host": self.workbench.host, "X-Workbench-Token": self.workbench.token, "Content-Type": "application/json",
                   "Content-Length": str(LARGEST_BODY + 1)}
        connection.send(request_bytes("PUT", "/workbench/call", headers))
        self.assertEqual(413, connection.read_response().status)
        connection.close()
        self.assert_still_serves()

    def test_a_body_of_many_chunks_is_no_way_around(self) -> None:
        connection = RawConnection(self.workbench.port)
        headers = {"Host": self.workbench.host, "X-Workbench-Token": self.workbench.token, "Content-Type": "application/json",
                   "Transfer-Encoding": "chunked"}
        connection.send(request_bytes("PUT", "/workbench/call", headers))
        chunk = b"10000\r\n" + b"[" * 65536 + b"\r\n"
        with contextlib.suppress(OSError):
            for _ in range(LARGEST_BODY // 65536 + 1):
                connection.send(chunk)
        self.assertEqual(413, connection.read_response().status)
        connection.close()
        self.assert_still_serves()

    def test_the_body_of_a_stranger_is_not_read(self) -> None:
        connection = RawConnection(self.workbench.port)
        headers = {"Host": self.workbench.host, "Content-Type": "application/json", "Content-Length": "1000000"}
        connection.send(request_bytes("PUT", "/workbench/call", headers))
        self.assertEqual(403, connection.read_response().status)
        connection.close()

    def test_what_is_no_request_is_refused(self) -> None:
        for data in (b"\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03\r\n\r\n", b"GET\r\n\r\n", b"GET / HTTP/9.9\r\n\r\n",
                     b"GET / HTTP/1.1\r\nHost\r\n\r\n", b"\0" * 100 + b"\r\n\r\n",
                     b"POST / HTTP/1.1\r\nContent-Length: -1\r\n\r\n",
                     b"POST / HTTP/1.1\r\nContent-Length: 99999999999999999999\r\n\r\n"):
            connection = RawConnection(self.workbench.port)
            connection.send(data)
            with contextlib.suppress(ConnectionError):
                self.assertIn(connection.read_response().status, (400, 413, 421), data)
            connection.close()
        self.assert_still_serves()

    def test_too_many_connections_are_refused_and_go_again(self) -> None:
        connections = [RawConnection(self.workbench.port) for _ in range(MOST_CONNECTIONS + 6)]
        try:
            refused = connections[-1].read_response()
            self.assertEqual(503, refused.status)
        finally:
            for connection in connections:
                connection.close()
        end = time.monotonic() + 20
        while time.monotonic() < end:
            with contextlib.suppress(ConnectionError):
                if self.workbench.get("/workbench/empty").status == 200:
                    return
        self.fail("the workbench does not answer any more")

    def test_a_slow_request_is_given_up(self) -> None:
        connections = []
        for data in (b"", b"GET / HTTP/1.1\r\nHost: ",
                     request_bytes("PUT", "/workbench/call", {"Host": self.workbench.host, "Content-Length": "100",
                                                              "X-Workbench-Token": self.workbench.token})):
            connection = RawConnection(self.workbench.port, seconds=25)
            connection.send(data)
            connections.append(connection)
        begin = time.monotonic()
        for connection in connections:
            self.assertTrue(connection.is_closed_by_server())
            connection.close()
        self.assertLess(time.monotonic() - begin, 20)

    def test_a_trickle_is_as_slow(self) -> None:
        connection = RawConnection(self.workbench.port, seconds=5)
        begin = time.monotonic()
        with self.assertRaises(OSError):
            for byte in b"GET / HTTP/1.1\r\nX: " + b"x" * 1000:
                connection.send(bytes([byte]))
                time.sleep(0.2)
        self.assertLess(time.monotonic() - begin, 20)
        connection.close()

    def test_a_page_has_no_more_objects_than_it_may(self) -> None:
        page = Page(self.workbench)
        numbers = [page.create() for _ in range(MOST_OBJECTS)]
        refused = page.post("/workbench/objects", {"page": page.id, "class": "Paylodge.Paylodge"})
        self.assertEqual(429, refused.status)
        self.assertEqual(200, page.post("/workbench/release", {"page": page.id, "object": numbers[0]}).status)
        page.create()
        page.close()
        self.workbench.wait_until(lambda state: state["objects"] == 0, "the end of the page's objects")

    def test_documents_that_are_fetched_again_and_again_take_no_more_room(self) -> None:
        page = Page(self.workbench)
        for _ in range(MOST_PAGES + 10):
            self.assertEqual(200, self.workbench.get("/", headers=NAVIGATION).status)
        pages = self.workbench.state()["pages"]
        self.assertLessEqual(len(pages), MOST_PAGES)
        self.assertIn(page.id, [known["page"] for known in pages])
        page.close()

    def test_a_page_that_does_not_read_is_ended(self) -> None:
        page = Page(self.workbench)
        control = page.create("Paylodge.PaylodgeCtrl")
        page.call(control, "SubscribeToNotifications")
        page.socket.connection.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
        push = {"method": "SetItemListData", "arguments": ["x" * 2_000_000]}
        for _ in range(20):
            reply = self.workbench.post("/workbench/push", push).json
            if "error" in reply:
                break
        self.workbench.wait_until(lambda state: page.id not in [known["page"] for known in state["pages"]], "its end")
        self.assertNotIn(page.id, [known["page"] for known in self.workbench.state()["pages"]])
        page.close()


class CardNumbers(SecurityTest):
    def test_are_in_no_log_in_no_form(self) -> None:
        page = Page(self.workbench)
        watcher = Page(self.workbench)
        watcher.socket.send({"type": "watch", "on": True})
        spaced = "4111 1111-1111 1111"
        number = page.create()
        control = page.create("Paylodge.PaylodgeCtrl")
        page.call(control, "SubscribeToNotifications")
        page.call(number, "ReconFeeData", CARD_NUMBER, kind="put")
        self.assertEqual(CARD_NUMBER, page.call(number, "ReconFeeData", kind="get")["result"])
        page.call(number, "ProcessLHRequest", f"<X><CreditCardNumber>{CARD_NUMBER}</CreditCardNumber></X>")
        page.call(number, "GetAccounts", int(CARD_NUMBER))
        page.call(number, f"No{CARD_NUMBER}")
        page.call(control, "DecodeTlvData", f"5A08{CARD_NUMBER}", "")
        for data in (CARD_NUMBER, spaced, f"%B{CARD_NUMBER}^DOE/JANE^2512101?", f"57114111111111111111D25121010000000000F"):
            self.workbench.post("/workbench/push", {"method": "SetTransactionID", "arguments": [data]})
        page.socket.send({"type": "failed", "n": 1, "message": f"no {CARD_NUMBER}"})
        self.workbench.post("/workbench/request", {"body": f"<X>{CARD_NUMBER}</X>"})
        self.workbench.wait_until(lambda _: any("no ****" in entry.get("error", "") for entry in self.workbench.log()), "it")
        saved = self.workbench.get("/workbench/log")
        self.assertIn("attachment", saved.headers["content-disposition"])
        shown = []
        while not shown or "no ****" not in shown[-1].get("error", ""):
            shown.append(watcher.socket.receive_of("log")["entry"])
        for text in (saved.body.decode(), json.dumps(shown)):
            for digits in ("41111111", "4111 1111", "1111-1111", "DOE/JANE", "2512101"):
                self.assertNotIn(digits, text)
            self.assertIn("************1111", text)
        page.close()
        watcher.close()


if __name__ == "__main__":
    unittest.main()
