// The same list in two ways, as a page measures it: by GetAccountsForMultipleTypes, whose short result is parsed, and by
// ProcessLHRequest with a parser in the page. Both end with the same array.

var RUNS = 15;

function accountsIn(text, nameElement) {
    var parser = new ActiveXObject("Msxml2.DOMDocument.6.0");
    parser.async = false;
    parser.loadXML(text);
    var accounts = [];
    var records = parser.getElementsByTagName("AccountRet");
    for (var record = records.nextNode(); record; record = records.nextNode()) {
        var account = {};
        for (var child = record.firstChild; child; child = child.nextSibling) {
            var name = child.nodeName;
            if (name === nameElement || name === "AccountType" || name === "ListID") {
                account[name === nameElement ? "name" : name] = child.text;
            }
        }
        accounts.push(account.name + "|" + account.AccountType + "|" + account.ListID);
    }
    return accounts;
}

var request = '<AccountQueryRq requestID="1"><ActiveStatus>ActiveOnly</ActiveStatus><AccountType>Bank</AccountType>';
var filter = "<IncludeRetElement>FullName</IncludeRetElement><IncludeRetElement>ListID</IncludeRetElement>" +
    "<IncludeRetElement>AccountType</IncludeRetElement>";

var ways = [
    ["GetAccountsForMultipleTypes", function () {
        return accountsIn(paylodge.GetAccountsForMultipleTypes("Bank"), "AccountName");
    }],
    ["ProcessLHRequest, three elements", function () {
        return accountsIn(paylodge.ProcessLHRequest(request + filter + "</AccountQueryRq>"), "FullName");
    }],
    ["ProcessLHRequest, whole records", function () {
        return accountsIn(paylodge.ProcessLHRequest(request + "</AccountQueryRq>"), "FullName");
    }]
];

var times = [[], [], []];
var first = "";
for (var run = 0; run <= RUNS; ++run) {
    for (var way = 0; way < ways.length; ++way) {
        var start = new Date().getTime();
        var list = ways[way][1]();
        var time = new Date().getTime() - start;
        if (run > 0) {
            times[way].push(time);
        }
        var joined = list.join("\n");
        first = first || joined;
        if (list.length < 1000 || joined !== first) {
            WScript.Echo(ways[way][0] + ": another list");
            WScript.Quit(1);
        }
    }
}
for (var row = 0; row < ways.length; ++row) {
    times[row].sort(function (left, right) { return left - right; });
    WScript.Echo(list.length + " accounts, " + ways[row][0] + ": " + times[row][Math.floor(RUNS / 2)] + " ms");
}
