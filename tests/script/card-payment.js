// A page that takes a card payment through the simulated card reader of the reference host.

// The member of a flat JSON object, as the reader's answers are.
function member(text, name) {
    var found = new RegExp('"' + name + '":"([^"]*)"').exec(text);
    return found ? found[1] : "(no " + name + " in " + text + ")";
}

function stateOf(reader) {
    return member(reader.EMVProcessorResult(), "state");
}

function connectedReader() {
    var reader = createControl();
    reader.InitializeSession();
    reader.ConnectDevice();
    return reader;
}

// The card's data for the authorization of a payment that has been started.
function authorizationData(reader, amount) {
    reader.StartEMV(amount);
    equal(stateOf(reader), "ApplicationSelection");
    reader.HandleAidSelecttion();
    equal(stateOf(reader), "OnlineAuthorization");
    return reader.EMVGetCardParameters();
}

test("the reader is found and connected", function () {
    var reader = createControl();
    reader.ResetSession();
    equal(stateOf(reader), "NoSession");
    equal(reader.EMVIsDeviceConnected(), false);
    equal(reader.GetConnectionMode(), "NONE");
    reader.InitializeSession();
    reader.isDeviceHere();
    reader.ConnectDevice();
    equal(reader.EMVIsDeviceConnected(), true);
    equal(reader.GetConnectionMode(), "USB");
    reader.GetEmvDeviceInfo();
    equal(member(reader.EMVProcessorResult(), "serialNumber"), "SIM-0001");
    reader.DisconnectDevice();
    equal(reader.EMVIsDeviceConnected(), false);
});

test("a card payment goes from the reader to the settlement", function () {
    var reader = connectedReader();
    var card = authorizationData(reader, "12.50");
    equal(reader.DecodeTlvData(card, "9F02,5F2A"), '{"5F2A":"0840","9F02":"000000001250"}');
    equal(member(reader.GetCardBasedToken("terminal 1", card), "type"), "simulated");

    reader.SendOnlineProcessResult("APPROVED");
    equal(stateOf(reader), "FinalConfirmation");
    equal(reader.EMVGetBatchData(), "");
    reader.ShowFinalConfirmationWindow();
    equal(stateOf(reader), "Completed");

    var settled = reader.EMVGetBatchData();
    equal(member(reader.DecodeTlvData(settled, "9F02"), "9F02"), "000000001250");
    equal(member(reader.DecodeTlvData(settled, "8A"), "8A"), "3030");
    reader.DisconnectDevice();
    equal(reader.EMVIsDeviceConnected(), false);
});

test("the payment at the reader is recorded in the books", function () {
    var reader = connectedReader();
    authorizationData(reader, "20.00");
    reader.SendOnlineProcessResult("00");
    reader.ShowFinalConfirmationWindow();
    equal(stateOf(reader), "Completed");
    reader.DisconnectDevice();
    var response = new ActiveXObject("Paylodge.Paylodge").CreatePaymentTxn("Alder Court Homeowners", "2026-01-15",
        "20.00", "R-1", "Visa", "", "true", "xxxxxxxxxxxx1119", "12", "2030", "Robin Vale", "0", "Approved", "T-1",
        "M-1", "A-1", "B-1", "1", "Completed", "2026-01-15T10:15:00", "1768472100", "C-1");
    contains(response, 'statusCode="0"');
    contains(response, "<TotalAmount>20.00</TotalAmount>");
});

test("a declined payment has nothing to settle", function () {
    var reader = connectedReader();
    authorizationData(reader, "12.50");
    reader.SendOnlineProcessResult("05");
    equal(stateOf(reader), "Declined");
    equal(reader.EMVGetBatchData(), "");
});

test("a cancelled payment leaves no card data", function () {
    var reader = connectedReader();
    authorizationData(reader, "12.50");
    reader.CancelCheckCard();
    equal(stateOf(reader), "Cancelled");
    equal(reader.EMVGetCardParameters(), "");
});

test("a step out of order says what is missing", function () {
    var reader = connectedReader();
    reader.ShowFinalConfirmationWindow();
    var answer = reader.EMVProcessorResult();
    equal(member(answer, "state"), "Error");
    contains(answer, "ShowFinalConfirmationWindow: not now; the reader is in the state Idle");
});

test("account services answer the page", function () {
    var control = createControl();
    equal(control.GetLHUserData("UserName"), "Robin Vale");
    equal(control.GetLHUserData("CompanyName"), "Caf\u00e9 Riverside \u2606");
    throwsHResult(0x80004005, function () { control.GetLHUserData(""); });
    equal(member(control.GetPaymentIdentityStatus(), "status"), "VERIFIED");
    contains(control.AuthenticateURL("https://terminal.paylodge.example/pay"), "/pay?ticket=");
    equal(control.isRealmMergeLinkingEnabled(), "true");
    var tokens = [control.GetCardBasedToken("h", "b"), control.GetCardBasedToken2(1, "h", "b"),
        control.GetCardBasedToken2(0, "h", "b")];
    equal(tokens[0], tokens[1]);
    isTrue(tokens[0] !== tokens[2], "a token without authorization differs, which");
});
