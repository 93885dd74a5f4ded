// When a page last downloaded the transactions of a merchant account, as page script stores and reads it.

var host = new ActiveXObject("Ledgerhall.ReferenceHost");
var CATEGORY = "Vexlor:MAS:PaylodgeKey";

// What the page in another process reads, after it has stored a time if one is given. This process has to leave the
// company file alone meanwhile.
function inAnotherRun(account, time) {
    host.CloseCompanyFile();
    var page = WScript.Arguments(0).replace(/[^\\\/]*$/, "pages\\download_time.js");
    var result = companyFile() + ".result";
    var words = [WScript.FullName, "//nologo", page, result, account].concat(time === undefined ? [] : [time]);
    new ActiveXObject("WScript.Shell").Run('"' + words.join('" "') + '"', 0, true);
    return readFile(result);
}

// A page in a host with nothing stored yet, nothing planned and nothing noted.
function newPage() {
    host.ClearFaults();
    host.OpenCompanyFile(companyFile());
    host.ClearCalls();
    return new ActiveXObject("Paylodge.Paylodge");
}

function countCalls(name) {
    var count = 0;
    for (var i = 0; i < host.CallCount; ++i) {
        count += host.Call(i).indexOf(name + "(") === 0 ? 1 : 0;
    }
    return count;
}

test("an account without a stored time has the time 0", function () {
    equal(newPage().GetLastTxnDownloadTime("4711"), "0");
    equal(countCalls("DataFileRecord.Save"), 0);
});

test("a time that one run stores is there in the next", function () {
    equal(inAnotherRun("4711", "2026-11-21T10:00:00"), "2026-11-21T10:00:00");
    equal(inAnotherRun("4711"), "2026-11-21T10:00:00");
    equal(inAnotherRun("4712"), "0");
});

test("a later time takes the place of the earlier one in the next run", function () {
    equal(inAnotherRun("4711", "later"), "later");
    equal(inAnotherRun("4711"), "later");
});

test("a new account costs two saves, a known one a single save", function () {
    var page = newPage();
    page.SetLastTxnDownloadTime("first", "1");
    equal(countCalls("DataFileRecord.Save"), 2);
    host.ClearCalls();
    page.SetLastTxnDownloadTime("first", "2");
    equal(countCalls("DataFileRecord.Save"), 1);
    equal(page.GetLastTxnDownloadTime("first"), "2");
});

test("accounts that differ in case only have times of their own", function () {
    var page = newPage();
    page.SetLastTxnDownloadTime("abc", "small");
    page.SetLastTxnDownloadTime("ABC", "large");
    equal(page.GetLastTxnDownloadTime("abc"), "small");
    equal(page.GetLastTxnDownloadTime("ABC"), "large");
});

test("a time comes back as it was given, whatever it is", function () {
    var page = newPage();
    var times = ["", " ", "a\r\nb\tc", "\\u0041 \\", "<&\"'>", "caf\u00e9", new Array(20001).join("9")];
    for (var i = 0; i < times.length; ++i) {
        page.SetLastTxnDownloadTime("odd", times[i]);
        equal(page.GetLastTxnDownloadTime("odd"), times[i]);
        host.OpenCompanyFile(companyFile());
        equal(page.GetLastTxnDownloadTime("odd"), times[i]);
    }
});

test("an empty account is an account like any other", function () {
    var page = newPage();
    page.SetLastTxnDownloadTime("", "of nobody");
    equal(page.GetLastTxnDownloadTime(""), "of nobody");
});

test("null is no account and no time", function () {
    var page = newPage();
    throwsHResult(0x80020005, function () {
        page.GetLastTxnDownloadTime(null);
    });
    throwsHResult(0x80020005, function () {
        page.SetLastTxnDownloadTime("4711", null);
    });
    equal(countCalls("DataFileRecord.Save"), 0);
});

test("a record that is locked elsewhere is left alone", function () {
    var page = newPage();
    page.SetLastTxnDownloadTime("busy", "before");
    for (var number = 1; number < 30; ++number) {
        host.LockRecord(CATEGORY, number);
    }
    host.ClearCalls();
    throwsHResult(0x80004005, function () {
        page.SetLastTxnDownloadTime("busy", "after");
    });
    equal(countCalls("DataFileRecord.Lock"), 5);
    equal(countCalls("DataFileRecord.Save"), 0);
    equal(page.GetLastTxnDownloadTime("busy"), "before");
    contains(readFile(companyFile() + ".logs\\NALog.log"), "Could not acquire data file record lock in LH.");
});

test("a host that cannot save makes storing fail and keeps the old time", function () {
    var page = newPage();
    page.SetLastTxnDownloadTime("full disk", "before");
    var steps = ["CompanyFile.Write", "CompanyFile.Sync", "CompanyFile.Commit",
        "DataFileRecord.Save", "DataFileRecord.Lock", "DataFileRecord.PutDataVersion", "PropertyBag.Write"];
    for (var i = 0; i < steps.length; ++i) {
        host.FailCall(steps[i], 0x80004005, 1);
        throwsHResult(0x80004005, function () {
            page.SetLastTxnDownloadTime("full disk", "after");
        });
        equal(page.GetLastTxnDownloadTime("full disk"), "before");
    }
    host.OpenCompanyFile(companyFile());
    equal(page.GetLastTxnDownloadTime("full disk"), "before");
});

test("a host that fails in any call makes reading answer 0", function () {
    var page = newPage();
    page.SetLastTxnDownloadTime("stored", "time");
    var calls = ["ApplicationLocator.GetRunningApplication", "Application.GetAddInGoodies",
        "AddInGoodies.AttachToCurrentCompany", "Company.GetDataFileRecords", "DataFileRecords.Exists",
        "DataFileRecords.Item", "DataFileRecord.GetPropertyBag", "PropertyBag.Read"];
    for (var i = 0; i < calls.length; ++i) {
        host.FailCall(calls[i], 0x80004005, 0);
        equal(page.GetLastTxnDownloadTime("stored"), "0");
        host.ClearFaults();
    }
    equal(page.GetLastTxnDownloadTime("stored"), "time");
});

host.CloseCompanyFile();
