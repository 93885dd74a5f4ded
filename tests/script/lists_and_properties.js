// The members that the other scripts do not need, against the reference host.

var lh = new ActiveXObject("Paylodge.Paylodge");
var host = new ActiveXObject("Ledgerhall.ReferenceHost");

function isListed(account, type) {
    return lh.GetAccounts(type).indexOf("<AccountName>" + account + "</AccountName>") >= 0;
}

test("an account is created once and found in the list", function () {
    lh.CreateAccount("Card Clearing", "OtherCurrentAsset", "4711");
    lh.CreateAccount("Card Clearing", "OtherCurrentAsset", "4711");
    isTrue(isListed("Card Clearing", "OtherCurrentAsset"));
});

test("an account of an unknown type is refused", function () {
    throwsHResult(0x80004005, function () { lh.CreateAccount("Nonsense", "NoSuchType", ""); });
});

test("an account is deactivated and activated again", function () {
    lh.ActivateOrDeactivateAccount("Petty Cash", false);
    isTrue(!isListed("Petty Cash", "Bank"));
    lh.ActivateOrDeactivateAccount("Petty Cash", true);
    isTrue(isListed("Petty Cash", "Bank"));
});

test("an account that does not exist cannot be activated", function () {
    throwsHResult(0x80004005, function () { lh.ActivateOrDeactivateAccount("Nowhere", true); });
});

test("accounts of several types come with type and id", function () {
    var accounts = lh.GetAccountsForMultipleTypes("Bank, CreditCard");
    contains(accounts, "<AccountType>Bank</AccountType>");
    contains(accounts, "<AccountType>CreditCard</AccountType>");
    contains(accounts, "<ListID>");
});

test("payment methods are listed by name", function () {
    contains(lh.GetPaymentMethods(), "    <PayMethName>Visa</PayMethName>\r\n");
});

test("a form opens for a transaction, and an unknown one is the host's business", function () {
    host.ClearCalls();
    lh.OpenTxnForm("Invoice", "T-101");
    contains(host.Response(0), " statusCode=\"0\" ");
    lh.OpenTxnForm("Invoice", "T-0");
    contains(host.Response(1), " statusCode=\"2040\" ");
});

test("a refused transfer throws an error", function () {
    throwsHResult(0x80004005, function () { lh.TransferFunds("Nowhere", "Petty Cash", "1", ""); });
});

test("a plain property that was never put is empty", function () {
    equal(lh.TransactionID, "");
});

test("a plain property is shared by all objects", function () {
    var plain = ["ScanTxnListForDeposit", "ScanUnrecordedCheckNumListForDeposit", "ScanUnrecordedAmountListForDeposit",
        "LockOrUpdateTxnsOffsets", "LockOrUpdateTxnsIDs", "LHExportableNameID", "TransactionID",
        "EInvoicedTransactionData", "CustomerData", "ItemData", "CustomerDataForRebill", "SearchCustomerNameForRebill",
        "SearchLineItemsListMatchingQuery"];
    var other = new ActiveXObject("Paylodge.Paylodge");
    for (var i = 0; i < plain.length; ++i) {
        lh[plain[i]] = "value " + i;
        equal(other[plain[i]], "value " + i);
    }
});

test("a number is made a boolean on its way from the page", function () {
    lh.IsReconPaymentDataReady = 1;
    equal(lh.IsReconPaymentDataReady, true);
    lh.IsReconPaymentDataReady = 0;
    equal(lh.IsReconPaymentDataReady, false);
});

test("a mailbox takes one value until it is emptied", function () {
    lh.ReconBatchData = "first";
    isTrue(lh.IsReconBatchDataReady);
    throwsHResult(0x80004005, function () { lh.ReconBatchData = "second"; });
    equal(lh.ReconBatchData, "first");
    lh.IsReconBatchDataReady = false;
    equal(lh.ReconBatchData, "");
});

test("a scanned transaction is handed over", function () {
    lh.SetScanTxnInfo("T-1", "L-1", "Eastgate Library", "1001, 1002", "100.00");
    equal([lh.GetScanTxnID(), lh.GetScanTxnCustomerListElemID(), lh.GetScanTxnCustomerName(),
        lh.GetScanTxnInvoiceList(), lh.GetScanTxnAmount()].join("|"), "T-1|L-1|Eastgate Library|1001, 1002|100.00");
    lh.IsScanTxnCreated = false;
    equal(lh.GetScanTxnID(), "");
});

test("reconciliation payments are handed over", function () {
    lh.SetReconPaymentDataAndParams("data", "2026-11-01", true);
    isTrue(lh.IsReconPaymentDataReady);
    equal(lh.GetReconPaymentData(), "data");
    lh.IsReconPaymentDataReady = false;
    equal(lh.GetReconPaymentData(), "");
});

test("the start date of reconciliation payments is read, whatever stands for the other result", function () {
    lh.SetReconPaymentDataAndParams("data", "2026-11-01", true);
    var isDefault = false;
    equal(lh.GetReconPaymentParams(isDefault), "2026-11-01");
    equal(isDefault, false);
    lh.IsReconPaymentDataReady = false;
    equal(lh.GetReconPaymentParams(isDefault), "");
});

test("the parameters of reconciliation payments need a value for the other result", function () {
    throwsHResult(0x8002000E, function () { lh.GetReconPaymentParams(); });
});

test("a character outside the code page becomes a question mark, never one that looks alike", function () {
    contains(lh.ProcessLHRequest("<CustomerQueryRq requestID=\"\u0100 \u4e2d\"/>"), " requestID=\"? ?\"");
});
