// First steps with Paylodge: reads from the company file, records a payment in it and looks at what is there then.
//
//     cscript //nologo first-steps.js
//
// On a machine without Ledgerhall, register the reference host (regsvr32 refhost.dll) and name a company file for it:
//
//     set LEDGERHALL_COMPANY_FILE=C:\somewhere\riverside.lhcompany
//     set LEDGERHALL_TRANSCRIPT=1
//
// The second line makes the host show the requests and responses that pass, in between what this script prints.

function say(line) {
    WScript.Echo(line || "");
}

// Shows a call, makes it, and shows what came back.
function show(title, call) {
    say("");
    say("== " + title);
    var result = call();
    say("    result");
    say("      = " + result.replace(/\s+$/, "").replace(/\r?\n/g, "\r\n      = "));
    return result;
}

function loadResponse(text) {
    var document = new ActiveXObject("Msxml2.DOMDocument.6.0");
    document.async = false;
    if (!document.loadXML(text)) {
        throw new Error("The response is not XML: " + text);
    }
    return document;
}

// The response element of this name. An error status ends the script with the host's own message.
function responseElement(text, name) {
    var document = loadResponse(text);
    var element = document.selectSingleNode("/LHXML/LHXMLMsgsRs/" + name);
    if (element === null) {
        throw new Error("The response has no " + name + ": " + text);
    }
    if (element.getAttribute("statusSeverity") === "Error") {
        throw new Error(name + " " + element.getAttribute("statusCode") + ": " + element.getAttribute("statusMessage"));
    }
    return element;
}

function twoDigits(number) {
    return (number < 10 ? "0" : "") + number;
}

// The form of dates in LHXML.
function formatDate(date) {
    return date.getFullYear() + "-" + twoDigits(date.getMonth() + 1) + "-" + twoDigits(date.getDate());
}

var customer = "Eastgate Library";
var paylodge = new ActiveXObject("Paylodge.Paylodge");

show('GetAccounts("Bank"): the names of the active bank accounts', function () {
    return paylodge.GetAccounts("Bank");
});

var paymentsQuery =
    '<ReceivePaymentQueryRq requestID="1">' +
    "<EntityFilter><FullName>" + customer + "</FullName></EntityFilter>" +
    "<IncludeRetElement>RefNumber</IncludeRetElement>" +
    "<IncludeRetElement>TxnDate</IncludeRetElement>" +
    "<IncludeRetElement>TotalAmount</IncludeRetElement>" +
    "</ReceivePaymentQueryRq>";

function queryPayments() {
    return paylodge.ProcessLHRequest(paymentsQuery);
}

var before = show("ProcessLHRequest: the payments of " + customer + " so far", queryPayments);
var count = responseElement(before, "ReceivePaymentQueryRs").selectNodes("ReceivePaymentRet").length;
var refNumber = "PL-" + (1001 + count);

var saved = show("SavePaymentTxn: payment " + refNumber + " of " + customer, function () {
    return paylodge.SavePaymentTxn(
        '<ReceivePaymentAddRq requestID="2"><ReceivePaymentAdd>' +
        "<CustomerRef><FullName>" + customer + "</FullName></CustomerRef>" +
        "<TxnDate>" + formatDate(new Date()) + "</TxnDate>" +
        "<RefNumber>" + refNumber + "</RefNumber>" +
        "<TotalAmount>25.00</TotalAmount>" +
        "<PaymentMethodRef><FullName>Visa</FullName></PaymentMethodRef>" +
        "<IsAutoApply>true</IsAutoApply>" +
        "</ReceivePaymentAdd></ReceivePaymentAddRq>");
});
var payment = responseElement(saved, "ReceivePaymentAddRs").selectSingleNode("ReceivePaymentRet");

say("");
say("Before this run the company file held " + count + (count === 1 ? " payment" : " payments") + " of " + customer +
    ".");
say("Now it holds one more: " + payment.selectSingleNode("TxnID").text + ", number " + refNumber + ", " +
    payment.selectSingleNode("TotalAmount").text + ".");
