// Each example of docs/script-reference.md runs as it stands, and the comments in it are what it gets.

var files = new ActiveXObject("Scripting.FileSystemObject");
var top = files.GetParentFolderName(files.GetParentFolderName(files.GetParentFolderName(WScript.Arguments(0))));
var page = readFile(files.BuildPath(top, "docs\\script-reference.md")).replace(/\r/g, "");
var lh = new ActiveXObject("Paylodge.Paylodge");

// What has an example, in the order of the page: the heading's name, the text below it, and the example.
function examples() {
    var found = [];
    var sections = page.split(/\n###? /);
    for (var i = 1; i < sections.length; ++i) {
        var blocks = sections[i].split("```js\n");
        for (var j = 1; j < blocks.length; ++j) {
            found.push({ name: sections[i].match(/^\w+/)[0], text: sections[i], code: blocks[j].split("```")[0] });
        }
    }
    return found;
}

// A comment behind a statement names a part of what the last assignment got; an empty one, that it got an empty text.
function withChecks(code) {
    var lines = code.split("\n");
    var last = "";
    for (var i = 0; i < lines.length; ++i) {
        var comment = lines[i].match(/^\/\/ ?(.*)$/);
        if (comment && last) {
            lines[i] = "checkResult(" + last + ", " + quoted(comment[1]) + ");";
        } else if (/^\s*(var )?\w+ = /.test(lines[i])) {
            last = lines[i].match(/^\s*(?:var )?(\w+) = /)[1];
        }
    }
    return lines.join("\n");
}

function quoted(text) {
    return '"' + text.replace(/\\/g, "\\\\").replace(/"/g, '\\"') + '"';
}

function checkResult(result, expected) {
    if (expected === "" || typeof result !== "string") {
        equal(String(result), expected);
    } else {
        contains(result, expected);
    }
}

// Mailboxes are emptied, so that an example fills one as a page would that found it empty.
function emptyMailboxes() {
    lh.IsReconPaymentDataReady = false;
    lh.IsReconFeeDataReady = false;
    lh.IsReconBatchDataReady = false;
    lh.IsScanTxnCreated = false;
    lh.IsLockOrUpdateTxnsCompleted = false;
}

function addTest(example, number) {
    test("example " + number + ", " + example.name, function () {
        emptyMailboxes();
        new Function("lh", "reader", withChecks(example.code))(lh, createControl());
    });
}

test("each member that the page describes has an example, which uses it", function () {
    var all = examples();
    var members = page.match(/\n### \w+(?=[^\n]*\n\nDispatch id)/g);
    equal(members.length, 49 + 24);
    for (var i = 0; i < members.length; ++i) {
        var name = members[i].substr(5);
        var own = "";
        for (var j = 0; j < all.length; ++j) {
            own += all[j].name === name ? all[j].code : "";
        }
        isTrue(own.indexOf("." + name) >= 0, "that the example of " + name + " uses it");
    }
});

var all = examples();
for (var i = 0; i < all.length; ++i) {
    addTest(all[i], i + 1);
}

test("an amount is read as far as it is a number", function () {
    var host = new ActiveXObject("Ledgerhall.ReferenceHost");
    function sent(amount) {
        lh.CreatePaymentTxn("Eastgate Library", "2026-01-20", amount, "1043", "Visa", "", "true", "", "", "", "", "", "",
            "", "", "", "", "", "", "", "", "");
        return host.Request(host.RequestCount - 1);
    }
    contains(sent("12,50"), "<TotalAmount>12.00</TotalAmount>");
    contains(sent("abc"), "<TotalAmount>0.00</TotalAmount>");
});
