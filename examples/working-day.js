// A working day at the payment terminal, as the page would run it:
//
//     cscript //nologo working-day.js
//
// Every step works with the open company file through Paylodge.Paylodge and says what came of it.

var lh = new ActiveXObject("Paylodge.Paylodge");
var holdingAccount = "Credit Card Holding Account";
var customer = "Eastgate Library";
var merchantAccount = "5247710000123456";

function say(text) {
    WScript.Echo(text);
}

// The texts of all elements of this name in a result.
function texts(xml, name) {
    var pattern = new RegExp("<" + name + ">([^<]*)</" + name + ">", "g");
    var found = [];
    var match;
    while ((match = pattern.exec(xml)) !== null) {
        found.push(match[1]);
    }
    return found;
}

function balanceOf(accountType, name) {
    var accounts = lh.GetBalanceForAccountType(accountType).split("</AccountRet>");
    for (var i = 0; i < accounts.length; ++i) {
        if (texts(accounts[i], "AccountName")[0] === name) {
            return texts(accounts[i], "Balance")[0];
        }
    }
    return "none";
}

function itemLine(kind, item, amount) {
    return "<" + kind + "><ItemRef><FullName>" + item + "</FullName></ItemRef><Amount>" + amount + "</Amount></" + kind +
        ">";
}

// Morning: what there is to work with.
var bankAccounts = texts(lh.GetAccounts("Bank"), "AccountName");
var items = texts(lh.GetItems(), "ItemName");
var bank = bankAccounts[0];
var item = items[0];
say("Morning: " + bankAccounts.length + " bank accounts, " + items.length + " items.");
say("  " + bank + " holds " + balanceOf("Bank", bank) + ".");
say("  " + item + (lh.IsTaxableItem(item) ? " is" : " is not") + " taxable.");

// What the terminal did since the transactions were last downloaded; "0" stands for everything.
var since = lh.GetLastTxnDownloadTime(merchantAccount);
say("  Terminal transactions since " + since + ".");

// Sales and a refund as one batch. The refund's customer and items are created on the way.
var batch = lh.CreateTxns(
    '<SalesReceiptAddRq requestID="sale-1"><SalesReceiptAdd><RefNumber>D-1</RefNumber>' +
    "<PaymentMethodRef><FullName>Visa</FullName></PaymentMethodRef>" +
    itemLine("SalesReceiptLineAdd", item, "80.00") + "</SalesReceiptAdd></SalesReceiptAddRq>" +
    '<SalesReceiptAddRq requestID="sale-2"><SalesReceiptAdd><RefNumber>D-2</RefNumber>' +
    itemLine("SalesReceiptLineAdd", item, "45.50") + "</SalesReceiptAdd></SalesReceiptAddRq>" +
    '<CreditMemoAddRq requestID="refund-1"><CreditMemoAdd>' +
    "<CustomerRef><FullName>Paylodge Net Refund</FullName></CustomerRef><Memo>Visa net refund</Memo>" +
    itemLine("CreditMemoLineAdd", "Net Refund - Visa/MasterCard", "20.00") + "</CreditMemoAdd></CreditMemoAddRq>",
    false);
say("Batch: totals " + texts(batch, "TotalAmount").join(", ") + ".");

// The card money goes to the holding account, which the first deposit creates.
var deposit = lh.CreateTxns(
    '<DepositAddRq requestID="deposit-1"><DepositAdd>' +
    "<DepositToAccountRef><FullName>" + holdingAccount + "</FullName></DepositToAccountRef>" +
    "<DepositLineAdd><AccountRef><FullName>Undeposited Funds</FullName></AccountRef><Amount>125.50</Amount></DepositLineAdd>" +
    "</DepositAdd></DepositAddRq>", false);
say("Deposit: " + texts(deposit, "DepositTotal")[0] + " to " + holdingAccount + ".");

// A scanned check: whose is it, and what does it pay?
var id = lh.GetCustomerIDForName("  " + customer.toUpperCase() + " ");
var open = lh.ProcessLHRequest('<InvoiceQueryRq requestID="open"><EntityFilter><ListIDWithChildren>' + id +
    "</ListIDWithChildren></EntityFilter><PaidStatus>NotPaidOnly</PaidStatus></InvoiceQueryRq>");
var amount = texts(open, "BalanceRemaining")[0];
if (amount) {
    say("Check: " + amount + " of " + lh.GetCustomerNameForID(id) + " pays invoice " +
        lh.GetInvoiceInfoForCustomerID(id, amount) + ".");
    var payment = lh.CreatePaymentTxn(customer, "", amount, "CHK-1", "Check", "", "true", "", "", "", "", "", "", "", "",
        "", "", "", "", "", "", "");
    say("  recorded as " + texts(payment, "TxnID")[0] + "; unused: " + texts(payment, "UnusedPayment")[0] + ".");
} else {
    say("Check: " + customer + " has no open invoices.");
}

// What the terminal settled moves on to the bank.
lh.TransferFunds(holdingAccount, bank, "125.5", "Settlement");

// The next day begins where this one ends.
lh.SetLastTxnDownloadTime(merchantAccount, "2026-01-15T18:00:00");

// Evening totals.
say("Evening: " + bank + " holds " + balanceOf("Bank", bank) + "; " + holdingAccount + " holds " +
    balanceOf("OtherCurrentAsset", holdingAccount) + ".");
