// The accounting object as page script meets it: created by its name, called by the names of its members.

function create() {
    return new ActiveXObject("Paylodge.Paylodge");
}

function load(text) {
    var document = new ActiveXObject("Msxml2.DOMDocument.6.0");
    document.async = false;
    isTrue(document.loadXML(text), "that the response is XML");
    return document;
}

// The first element of the response with this name.
function responseElement(text, name) {
    var element = load(text).selectSingleNode("/LHXML/LHXMLMsgsRs/" + name);
    isTrue(element !== null, "that the response has " + name);
    return element;
}

function statusCode(text, name) {
    return responseElement(text, name).getAttribute("statusCode");
}

test("the object is created by its name", function () {
    equal(typeof create(), "object");
});

test("each object is one of its own, and they share the exchange properties", function () {
    var one = create();
    var other = create();
    one.ItemData = "shared \u00fc";
    equal(other.ItemData, "shared \u00fc");
    other.ItemData = "";
    equal(one.ItemData, "");
});

test("member names are found in any letter case", function () {
    var object = create();
    object.itemDATA = "x";
    equal(object.ITEMdata, "x");
});

test("a name that is no member is an error", function () {
    throwsHResult(0x800A01B6, function () { create().SetNotificationChannel("channel"); });
});

test("GetAccounts lists the active accounts of a type", function () {
    equal(create().GetAccounts("Bank"),
        "<AccountName>Riverside Checking</AccountName>\r\n" +
        "<AccountName>Riverside Savings</AccountName>\r\n" +
        "<AccountName>Card Settlement</AccountName>\r\n" +
        "<AccountName>Petty Cash</AccountName>\r\n");
});

test("GetAccounts of a type that the host does not know is empty", function () {
    equal(create().GetAccounts("NoSuchType"), "");
});

test("ProcessLHRequest passes the page's request through", function () {
    var response = create().ProcessLHRequest(
        '<AccountQueryRq requestID="page-1"><FullName>Riverside Checking</FullName></AccountQueryRq>');
    var answer = responseElement(response, "AccountQueryRs");
    equal(answer.getAttribute("requestID"), "page-1");
    equal(answer.getAttribute("statusCode"), "0");
    equal(answer.selectSingleNode("AccountRet/FullName").text, "Riverside Checking");
});

test("ProcessLHRequest answers several requests in their order", function () {
    var response = create().ProcessLHRequest('<AccountQueryRq requestID="1"/><ItemQueryRq requestID="2"/>');
    var answers = load(response).selectNodes("/LHXML/LHXMLMsgsRs/*");
    equal(answers.length, 2);
    equal(answers.item(0).nodeName + answers.item(0).getAttribute("requestID"), "AccountQueryRs1");
    equal(answers.item(1).nodeName + answers.item(1).getAttribute("requestID"), "ItemQueryRs2");
});

test("ProcessLHRequest with an empty body gets an empty message set", function () {
    equal(load(create().ProcessLHRequest("")).selectNodes("/LHXML/LHXMLMsgsRs/*").length, 0);
});

test("ProcessLHRequest hands the host's refusal to the page as it is", function () {
    var body = '<AccountQueryRq requestID="1"><FullName>No Such Account</FullName></AccountQueryRq>';
    isTrue(statusCode(create().ProcessLHRequest(body), "AccountQueryRs") !== "0", "the refusal");
});

test("SavePaymentTxn records what it is given", function () {
    var response = create().SavePaymentTxn(
        '<AccountAddRq requestID="1"><AccountAdd><Name>Script Savings</Name><AccountType>Bank</AccountType>' +
        "</AccountAdd></AccountAddRq>");
    equal(statusCode(response, "AccountAddRs"), "0");
    contains(create().GetAccounts("Bank"), "<AccountName>Script Savings</AccountName>\r\n");
});

test("SavePaymentTxn hands the host's refusal to the page as it is", function () {
    var body = '<AccountAddRq requestID="1"><AccountAdd><Name>Petty Cash</Name><AccountType>Bank</AccountType>' +
        "</AccountAdd></AccountAddRq>";
    equal(statusCode(create().SavePaymentTxn(body), "AccountAddRs"), "3100");
});

test("text outside the code page reaches the host as question marks", function () {
    var response = create().ProcessLHRequest(
        '<AccountAddRq requestID="1"><AccountAdd><Name>\u4e00 \u00e9</Name><AccountType>Bank</AccountType>' +
        "</AccountAdd></AccountAddRq>");
    equal(responseElement(response, "AccountAddRs").selectSingleNode("AccountRet/Name").text, "? \u00e9");
});

test("a full mailbox refuses the next value", function () {
    var object = create();
    object.ReconBatchData = "first";
    throwsHResult(0x80004005, function () { object.ReconBatchData = "second"; });
    equal(object.ReconBatchData, "first");
    object.IsReconBatchDataReady = false;
    equal(object.ReconBatchData, "");
});

test("script's true and false are those of the flags", function () {
    var object = create();
    object.IsScanTxnCreated = true;
    equal(object.IsScanTxnCreated, true);
    object.IsScanTxnCreated = false;
    equal(object.IsScanTxnCreated, false);
});
