"""What a page gets from the workbench: objects of the real component, their values, failures, pushes, and their end."""

from __future__ import annotations

import unittest
from typing import Any

from workbench_support import ACCOUNTING, CONTROL, Page, Workbench, books_are_true, fresh_company, needs

E_FAIL = -2147467259
E_INVALIDARG = -2147024809
CANNOT_CREATE = -2146827859
DISCONNECTED = -2147417848
UNKNOWN_NAME = -2147352570
WRONG_COUNT = -2147352562
MEMBER_NOT_FOUND = -2147352573
TYPE_MISMATCH = -2147352571
CHECKING = "<AccountName>Riverside Checking</AccountName>"
PAYMENT = (
    '<ReceivePaymentAddRq requestID="2"><ReceivePaymentAdd><CustomerRef><FullName>Eastgate Library</FullName></CustomerRef>'
    "<TxnDate>2026-11-21</TxnDate><RefNumber>WB-1</RefNumber><TotalAmount>25.00</TotalAmount><IsAutoApply>false</IsAutoApply>"
    "</ReceivePaymentAdd></ReceivePaymentAddRq>"
)


class Pages:
    """The tests of one architecture."""

    architecture = ""
    workbench: Workbench

    @classmethod
    def setUpClass(cls) -> None:
        needs(cls.architecture)
        cls.company = fresh_company(f"pages-{cls.architecture}")
        cls.workbench = Workbench(cls.company, architecture=cls.architecture)

    @classmethod
    def tearDownClass(cls) -> None:
        cls.workbench.end()

    def setUp(self) -> None:
        self.page = Page(self.workbench)
        self.workbench.post("/workbench/browser", {"instance": "page"})

    def tearDown(self) -> None:
        self.page.close()
        self.workbench.request("DELETE", "/workbench/faults")
        self.workbench.post("/workbench/channel", {"name": "Default"})
        self.workbench.wait_until(lambda state: state["objects"] == 0 and state["componentUnused"], "the end of every object")

    def error_of(self, reply: Any) -> int:
        self.assertIn("error", reply)
        return reply["error"]["number"]

    def subscribed_control(self, page: Page) -> int:
        control = page.create(CONTROL)
        self.assertEqual({"result": None}, page.call(control, "SubscribeToNotifications"))
        return control

    def push(self, method: str, *values: Any) -> Any:
        return self.workbench.post("/workbench/push", {"method": method, "arguments": list(values)}).json

    # Objects

    def test_an_object_says_what_it_can_do(self) -> None:
        described = self.page.post("/workbench/objects", {"page": self.page.id, "class": ACCOUNTING}).json
        members = {member["name"]: member for member in described["members"]}
        self.assertEqual(49, len(members))
        self.assertEqual(
            {"name": "CreateTxns", "id": 3, "kind": "method", "put": False, "result": "string", "arguments": [
                {"name": "txnRequests", "type": "string", "out": False}, {"name": "bFullResponse", "type": "boolean", "out": False}]},
            members["CreateTxns"])
        self.assertEqual([{"name": "pIsUndepFundsAccntDefault", "type": "boolean", "out": True}],
                         members["GetReconPaymentParams"]["arguments"])
        self.assertEqual("void", members["SetLastTxnDownloadTime"]["result"])
        self.assertEqual({"name": "ReconFeeData", "id": 11, "kind": "property", "put": True, "result": "string", "arguments": []},
                         members["ReconFeeData"])
        self.assertEqual([], described["events"])
        self.assertTrue(described["approved"])

    def test_the_control_says_which_events_it_has(self) -> None:
        described = self.page.post("/workbench/objects", {"page": self.page.id, "class": CONTROL.lower()}).json
        self.assertEqual(42, len(described["members"]))
        self.assertEqual(12, len(described["events"]))
        self.assertEqual({"name": "ReconPaymentData", "id": 4, "arguments": [
            {"name": "paymentData", "type": "string", "out": False}, {"name": "undepFundsStartDate", "type": "string", "out": False},
            {"name": "isUndepFundsAccntDefault", "type": "boolean", "out": False}]}, described["events"][3])

    def test_an_unknown_class_cannot_be_created(self) -> None:
        for name in ("Nothing.Nothing", "", "{00000000-0000-0000-0000-000000000000}", "Ledgerhall.ReferenceHost",
                     "Scripting.FileSystemObject", "WScript.Shell"):
            reply = self.page.post("/workbench/objects", {"page": self.page.id, "class": name}).json
            self.assertEqual(CANNOT_CREATE, self.error_of(reply), name)
            self.assertEqual("Automation server can't create object", reply["error"]["message"])

    def test_an_object_belongs_to_its_page(self) -> None:
        number = self.page.create()
        other = Page(self.workbench)
        for reply in (other.call(number, "GetItems"), self.page.call(number + 1000, "GetItems")):
            self.assertEqual(DISCONNECTED, self.error_of(reply))
        self.assertEqual(404, other.post("/workbench/release", {"page": other.id, "object": number}).status)
        self.assertIn("result", self.page.call(number, "GetItems"))
        other.close()

    def test_an_object_that_was_released_is_gone(self) -> None:
        number = self.page.create()
        self.assertEqual(200, self.page.post("/workbench/release", {"page": self.page.id, "object": number}).status)
        self.assertEqual(DISCONNECTED, self.error_of(self.page.call(number, "GetItems")))
        self.assertTrue(self.workbench.state()["componentUnused"])

    def test_objects_end_with_their_page(self) -> None:
        other = Page(self.workbench)
        for _ in range(5):
            other.create()
            self.subscribed_control(other)
        self.assertEqual(10, self.workbench.state()["objects"])
        self.assertFalse(self.workbench.state()["componentUnused"])
        # As the connection of a browser that was killed: no closing handshake.
        other.close()
        self.workbench.wait_until(lambda state: state["objects"] == 0, "the end of the objects")
        self.assertTrue(self.workbench.state()["componentUnused"])
        self.assertEqual(E_FAIL, self.error_of(self.push("SetReconFeeData", "nobody listens")))

    # Values

    def test_members_have_names_in_any_letter_case(self) -> None:
        number = self.page.create()
        for name in ("GetAccounts", "getaccounts", "GETACCOUNTS"):
            self.assertIn(CHECKING, self.page.call(number, name, "Bank")["result"])

    def test_values_arrive_as_script_passes_them(self) -> None:
        number = self.page.create()
        for value, kept in (("caf\u00e9", "caf\u00e9"), ("", ""), ("a\0b\r\n\"'\\", "a\0b\r\n\"'\\"), (True, "-1"), (12, "12"),
                            (1.5, "1.5"), ({"type": "empty"}, "")):
            self.assertEqual({"result": None}, self.page.call(number, "TransactionID", value, kind="put"), value)
            self.assertEqual({"result": kept}, self.page.call(number, "TransactionID", kind="get"), value)
        self.assertEqual(TYPE_MISMATCH, self.error_of(self.page.call(number, "TransactionID", None, kind="put")))

    def test_booleans_are_true_and_false(self) -> None:
        number = self.page.create()
        for value in (True, False):
            self.page.call(number, "IsScanTxnCreated", value, kind="put")
            self.assertIs(value, self.page.call(number, "IsScanTxnCreated", kind="get")["result"])

    def test_a_null_string_is_an_empty_one(self) -> None:
        control = self.page.create(CONTROL)
        self.assertEqual({"result": ""}, self.page.call(control, "LHTransactionNotificationData", kind="get"))

    def test_results_by_reference_come_back(self) -> None:
        number = self.page.create()
        by_reference = {"type": "reference", "value": False}
        self.assertEqual({"result": "", "out": {"0": True}}, self.page.call(number, "GetReconPaymentParams", by_reference))
        # By value, as script without a place for it: it is not there afterwards.
        self.assertEqual({"result": ""}, self.page.call(number, "GetReconPaymentParams", False))

    def test_text_of_megabytes_passes(self) -> None:
        number = self.page.create()
        text = "x" * 2_000_000
        self.page.call(number, "CustomerData", text, kind="put")
        self.assertEqual(text, self.page.call(number, "CustomerData", kind="get")["result"])
        self.page.call(number, "CustomerData", "", kind="put")

    # Failures

    def test_a_failure_has_its_number_and_name(self) -> None:
        number = self.page.create()
        reply = self.page.call(number, "GetInvoiceInfoForCustomerID", "", "")
        self.assertEqual(("0x80070057", "E_INVALIDARG", E_INVALIDARG),
                         tuple(reply["error"][name] for name in ("hresult", "hresultName", "number")))
        self.assertEqual(UNKNOWN_NAME, self.error_of(self.page.call(number, "Nothing")))
        self.assertEqual(WRONG_COUNT, self.error_of(self.page.call(number, "GetAccounts")))
        self.assertEqual(MEMBER_NOT_FOUND, self.error_of(self.page.call(number, "GetAccounts", "x", kind="put")))

    def test_a_message_that_is_wrong_is_refused(self) -> None:
        for path in ("objects", "call", "release", "push", "channel", "browser", "faults", "request"):
            for message in (b"", b"{", b"[]", b"{}", b"\xff", b'{"page":1}', b"[" * 100000):
                response = self.workbench.post(f"/workbench/{path}", message, headers={"Content-Type": "application/json"})
                self.assertEqual(400, response.status, f"{path} {message[:10]!r}")
                self.assertTrue(response.json["error"]["message"])
        self.assertEqual(400, self.workbench.post("/workbench/browser", {"instance": "other"}).status)
        self.assertEqual(400, self.workbench.post("/workbench/push", {"method": "GetItems", "arguments": []}).status)
        self.assertEqual(405, self.workbench.get("/workbench/call").status)
        self.assertEqual(404, self.workbench.get("/workbench/nothing").status)

    def test_a_planned_fault_reaches_the_page(self) -> None:
        number = self.page.create()
        fault = {"call": "RequestProcessor.ProcessRequest", "hresult": E_FAIL, "nth": 2}
        planned = self.workbench.post("/workbench/faults", fault).json["faults"]
        self.assertEqual([fault | {"hresultName": "E_FAIL"}], planned)
        self.assertIn(CHECKING, self.page.call(number, "GetAccounts", "Bank")["result"])
        self.assertEqual(E_FAIL, self.error_of(self.page.call(number, "GetAccounts", "Bank")))
        self.assertIn(CHECKING, self.page.call(number, "GetAccounts", "Bank")["result"])

    def test_planned_faults_are_forgotten_on_request(self) -> None:
        number = self.page.create()
        self.workbench.post("/workbench/faults", {"call": "RequestProcessor.ProcessRequest", "hresult": 0x80004005, "nth": 0})
        self.assertEqual(E_FAIL, self.error_of(self.page.call(number, "GetAccounts", "Bank")))
        self.assertEqual({"faults": []}, self.workbench.request("DELETE", "/workbench/faults").json)
        self.assertIn(CHECKING, self.page.call(number, "GetAccounts", "Bank")["result"])
        unknown = self.workbench.post("/workbench/faults", {"call": "No.Call", "hresult": E_FAIL, "nth": 1}).json
        self.assertEqual(E_INVALIDARG, self.error_of(unknown))

    # The site lock

    def test_a_page_under_another_name_is_refused_by_the_component(self) -> None:
        refused = Page(self.workbench, host=f"localhost:{self.workbench.port}")
        self.assertIs(False, refused.hello["approved"])
        self.assertIs(True, self.page.hello["approved"])
        described = refused.post("/workbench/objects", {"page": refused.id, "class": ACCOUNTING}).json
        self.assertFalse(described["approved"])
        self.assertEqual({"result": ""}, refused.call(described["object"], "GetAccounts", "Bank"))
        self.assertEqual(E_FAIL, self.error_of(refused.call(described["object"], "ProcessLHRequest", "")))
        self.assertEqual({"refused"}, {entry["kind"] for entry in self.workbench.log()
                                       if entry.get("object") == described["object"] and "member" in entry})
        refused.close()

    # The books

    def test_a_payment_is_in_the_books(self) -> None:
        number = self.page.create()
        self.assertIn('statusCode="0"', self.page.call(number, "SavePaymentTxn", PAYMENT)["result"])
        newest = self.workbench.get("/workbench/journal?count=1").json["transactions"]
        self.assertEqual([("ReceivePayment", "WB-1", "Eastgate Library", "25.00")],
                         [(one["type"], one["number"], one["name"], one["total"]) for one in newest])
        self.assertEqual(["25.00", "-25.00"], [posting["amount"] for posting in newest[0]["postings"]])
        entry = next(entry for entry in reversed(self.workbench.log()) if entry.get("member") == "SavePaymentTxn")
        self.assertEqual(("call", "S_OK"), (entry["kind"], entry["hresultName"]))
        self.assertIn(PAYMENT, entry["traffic"][0]["request"])
        self.assertIn("ReceivePaymentAddRs", entry["traffic"][0]["response"])

    def test_the_host_asks_on_its_own_behalf(self) -> None:
        reply = self.workbench.post("/workbench/request", {"body": '<AccountQueryRq requestID="7"/>'}).json
        self.assertIn('requestID="7" statusCode="0"', reply["response"])
        self.assertEqual([], self.workbench.get("/workbench/journal?count=0").json["transactions"])
        for count in ("-1", "x", "1001", ""):
            self.assertEqual(400, self.workbench.get(f"/workbench/journal?count={count}").status)

    # Pushes

    def test_a_push_runs_as_script_in_the_page_that_connected_last(self) -> None:
        other = Page(self.workbench)
        self.subscribed_control(self.page)
        self.assertEqual({"result": None}, self.push("SetReconFeeData", 'line\n"x" \u20ac'))
        self.assertEqual({"type": "script", "n": 1, "text": 'app.lhProxy.feeEventFromLH("line\\n"x" \u20ac")'}, other.socket.receive())
        other.close()
        self.workbench.wait_until(lambda state: state["browser"]["instance"] == self.page.id, "the other page's turn")
        self.push("SetTransactionID", "T-1")
        self.assertEqual({"type": "script", "n": 1, "text": 'app.lhProxy.invoiceIdFromLH("T-1")'}, self.page.socket.receive())

    def test_without_a_browser_instance_the_control_raises_events(self) -> None:
        control = self.subscribed_control(self.page)
        self.workbench.post("/workbench/browser", {"instance": "none"})
        self.push("SetReconPaymentData", "<P/>", "2026-01-31", True)
        self.assertEqual({"type": "event", "n": 1, "object": control, "name": "ReconPaymentData",
                          "arguments": ["<P/>", "2026-01-31", True]}, self.page.socket.receive())

    def test_each_of_the_twelve_pushes_arrives_in_both_ways(self) -> None:
        control = self.subscribed_control(self.page)
        pushes = ["NotifyTransactionChanged", "SetReconFeeData", "SetReconBatchData", "SetTransactionID",
                  "setEInvoicedTransactionData", "ProcessLHRequestData", "SetCustomerListData", "SetItemListData",
                  "SetCustomerData", "SetCustomerSearchResult", "SetLineItemsSearchResult"]
        events = ["TransactionChanged", "ReconFeeData", "ReconBatchData", "TransactionID", "EInvoicedTransactionData",
                  "OnProcessLHRequest", "CustomerListData", "ItemListData", "CustomerData", "CustomerSearchResult",
                  "LineItemsSearchResult"]
        for mode in ("page", "none"):
            self.workbench.post("/workbench/browser", {"instance": mode})
            for push, event in zip(pushes, events, strict=True):
                self.assertIn("result", self.push(push, "data"), push)
                message = self.page.socket.receive()
                if mode == "none" or push in ("ProcessLHRequestData", "SetItemListData"):
                    self.assertEqual((event, "data", control), (message["name"], message["arguments"][0], message["object"]))
                else:
                    self.assertRegex(message["text"], r"""\A[$a-zA-Z.]+\("data"\)\Z""")

    def test_a_push_to_a_channel_that_nobody_subscribed_fails(self) -> None:
        self.assertEqual(E_FAIL, self.error_of(self.push("SetReconFeeData", "x")))
        control = self.subscribed_control(self.page)
        self.workbench.post("/workbench/channel", {"name": "Other"})
        self.assertEqual("Other", self.workbench.state()["channel"])
        self.assertEqual(E_FAIL, self.error_of(self.push("SetReconFeeData", "x")))
        self.page.call(control, "SubscribeToNotifications2", "Other")
        self.assertIn("result", self.push("SetReconFeeData", "x"))

    def test_a_push_before_the_socket_is_not_lost(self) -> None:
        early = Page(self.workbench, opens_socket=False)
        self.workbench.post("/workbench/browser", {"instance": "none"})
        self.subscribed_control(early)
        for i in range(3):
            self.push("SetItemListData", str(i))
        early.open_socket()
        self.assertEqual(["0", "1", "2"], [early.socket.receive()["arguments"][0] for _ in range(3)])
        early.close()

    def test_calls_and_pushes_keep_their_order(self) -> None:
        number, calls, pushes = self.page.create(), 1000, 200
        self.subscribed_control(self.page)
        for i in range(calls):
            self.page.call(number, "TransactionID", str(i), kind="put")
            self.assertEqual({"result": str(i)}, self.page.call(number, "TransactionID", kind="get"))
            if i < pushes:
                self.push("SetTransactionID", str(i))
        messages = [self.page.socket.receive() for _ in range(pushes)]
        self.assertEqual([(i + 1, f'app.lhProxy.invoiceIdFromLH("{i}")') for i in range(pushes)],
                         [(message["n"], message["text"]) for message in messages])

    def test_the_log_follows_a_push_to_its_delivery(self) -> None:
        self.subscribed_control(self.page)
        self.page.socket.send({"type": "watch", "on": True})
        self.push("SetReconFeeData", "followed")
        number = self.page.socket.receive_of("script")["n"]
        self.page.socket.send({"type": "failed", "n": number, "message": "app is not defined"})
        while True:
            entry = self.page.socket.receive_of("log")["entry"]
            if entry["kind"] == "delivered":
                break
        self.assertEqual(("app is not defined", self.page.id), (entry["error"], entry["page"]))
        self.page.socket.send({"type": "watch", "on": False})


class PagesX64(Pages, unittest.TestCase):
    architecture = "x64"


class PagesX86(Pages, unittest.TestCase):
    architecture = "x86"


class BooksAfterwards(unittest.TestCase):
    def test_are_true_whatever_way_the_program_ends(self) -> None:
        needs("x64")
        for ends in (Workbench.stop, Workbench.kill):
            company = fresh_company("books")
            workbench = Workbench(company)
            page = Page(workbench)
            self.assertIn('statusCode="0"', page.call(page.create(), "SavePaymentTxn", PAYMENT)["result"])
            page.close()
            self.assertIn(ends(workbench), (0, None))
            self.assertEqual("", books_are_true(company))
            again = Workbench(company)
            self.assertEqual("WB-1", again.get("/workbench/journal?count=1").json["transactions"][0]["number"])
            self.assertEqual(0, again.stop())


if __name__ == "__main__":
    unittest.main()
