// The host's pushes and the page's own script calls, through the control as scripts get it. Only the host can name a
// browser instance, and the script host connects no events: here pushes end without a script and without a sink.

var PUSHES = {
    NotifyTransactionChanged: ["<Txn/>"],
    SetReconFeeData: ["<Fees/>"],
    SetReconBatchData: ["<Batch/>"],
    SetReconPaymentData: ["<Payments/>", "2026-01-15", true],
    SetTransactionID: ["R-1001"],
    setEInvoicedTransactionData: ["<Invoice/>"],
    SetCustomerListData: ["<Customers/>"],
    SetItemListData: ["<Items/>"],
    SetCustomerData: ["<Customer/>"],
    SetCustomerSearchResult: ['[{"name":"Alder Court"}]'],
    SetLineItemsSearchResult: ['[{"name":"Coffee"}]']
};

// Scripts cannot call a member of an object of another kind through apply().
function push(control, name) {
    var values = PUSHES[name];
    return values.length === 1 ? control[name](values[0]) : control[name](values[0], values[1], values[2]);
}

function eachPush(check) {
    for (var name in PUSHES) {
        try {
            check(name);
        } catch (error) {
            throw new Failure(name + ": " + describeError(error));
        }
    }
}

// Channels belong to the process, and so to all tests.
function subscribed(body) {
    var control = createControl();
    control.SubscribeToNotifications();
    try {
        body(control);
    } finally {
        control.SetChannelName("Default");
        control.UnSubscribeFromNotifications();
    }
}

// What the body makes the host run in pages.
function scriptsOf(body) {
    var before = pageScripts();
    body();
    return pageScripts().substr(before.length);
}

test("a script call escapes line feeds for 0 and quotes for 1", function () {
    var control = createControl();
    equal(scriptsOf(function () {
        equal(control.ExecuteJavaScript("a\nb", 0, "fn"), undefined);
        equal(control.ExecuteJavaScript('a"b', 1, "fn"), undefined);
        equal(control.ExecuteJavaScript('a"b', 0, "app.fn"), undefined);
    }), 'browser= bytes=10\nfn("a\\nb")\nbrowser= bytes=10\nfn("a\\"b")\nbrowser= bytes=13\napp.fn("a"b")\n');
});

test("a script call without data has an empty argument", function () {
    equal(scriptsOf(function () { createControl().ExecuteJavaScript("", 0, "fn"); }), 'browser= bytes=6\nfn("")\n');
});

test("a script call wants all its arguments", function () {
    equal(scriptsOf(function () {
        throwsHResult(0x8002000E, function () { createControl().ExecuteJavaScript("a", 0); });
    }), "");
});

test("no push reaches a page that has not subscribed", function () {
    var control = createControl();
    equal(scriptsOf(function () {
        eachPush(function (name) {
            throwsHResult(0x80004005, function () { push(control, name); });
        });
        throwsHResult(0x80004005, function () { control.ProcessLHRequestData("<Request/>"); });
    }), "");
});

test("every push succeeds once a control is subscribed, and runs no script", function () {
    subscribed(function (control) {
        equal(scriptsOf(function () {
            eachPush(function (name) { equal(push(control, name), undefined); });
        }), "");
    });
});

test("pushes go to the channel that was named last", function () {
    subscribed(function (control) {
        control.SetChannelName("Riverside");
        eachPush(function (name) {
            throwsHResult(0x80004005, function () { push(control, name); });
        });
        control.SubscribeToNotifications2("Riverside");
        eachPush(function (name) { push(control, name); });
        control.UnSubscribeFromNotifications2("Riverside");
        eachPush(function (name) {
            throwsHResult(0x80004005, function () { push(control, name); });
        });
    });
});

test("a request that is passed on gets no answer of its own", function () {
    subscribed(function (control) {
        isTrue(!control.ProcessLHRequestData("<Request/>"), "that there is no response");
    });
});

test("a changed transaction stays readable, and no other push does", function () {
    subscribed(function (control) {
        control.NotifyTransactionChanged("<Txn>\n\u2606</Txn>");
        eachPush(function (name) {
            if (name !== "NotifyTransactionChanged") {
                push(control, name);
            }
        });
        equal(createControl().LHTransactionNotificationData, "<Txn>\n\u2606</Txn>");
        control.LHTransactionNotificationData = "put by the page";
        equal(control.LHTransactionNotificationData, "put by the page");
    });
    throwsHResult(0x80004005, function () { createControl().NotifyTransactionChanged("lost"); });
    equal(createControl().LHTransactionNotificationData, "put by the page");
});
