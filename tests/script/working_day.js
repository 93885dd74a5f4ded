// The working day of examples/ is run as it stands, and the company file has what it recorded afterwards.

var files = new ActiveXObject("Scripting.FileSystemObject");
var top = files.GetParentFolderName(files.GetParentFolderName(files.GetParentFolderName(WScript.Arguments(0))));
var example = readFile(files.BuildPath(top, "examples\\working-day.js"));
var said = [];

// Runs the example with what it says going into `said`.
function runExample() {
    said = [];
    new Function("WScript", example)({ Echo: function (line) { said.push(line); } });
}

// The record of this list in the company file that has the text.
function record(list, text) {
    var records = new ActiveXObject("Paylodge.Paylodge").ProcessLHRequest(
        "<" + list + "QueryRq/>").split("<" + list + "Ret>");
    for (var i = 1; i < records.length; ++i) {
        if (records[i].indexOf(text) >= 0) {
            return records[i];
        }
    }
    throw new Failure("no " + list + " with " + text);
}

test("the working day says what came of each step", function () {
    runExample();
    equal(said.join("\n"), [
        "Morning: 4 bank accounts, 22 items.",
        "  Riverside Checking holds 28412.55.",
        "  Lavender, 2 litre is taxable.",
        "  Terminal transactions since 0.",
        "Batch: totals 80.00, 45.50, 20.00.",
        "Deposit: 125.50 to Credit Card Holding Account.",
        "Check: 159.90 of Eastgate Library pays invoice 1008.",
        "  recorded as T-136; unused: 0.00.",
        "Evening: Riverside Checking holds 28538.05; Credit Card Holding Account holds 0.00."
    ].join("\n"));
});

test("the company file holds the sales of the day", function () {
    contains(record("SalesReceipt", "<RefNumber>D-1</RefNumber>"), "<TotalAmount>80.00</TotalAmount>");
    contains(record("SalesReceipt", "<RefNumber>D-2</RefNumber>"), "<TotalAmount>45.50</TotalAmount>");
});

test("the refund's customer and items were created", function () {
    contains(record("Customer", "<FullName>Paylodge Net Refund</FullName>"), "<Balance>-20.00</Balance>");
    contains(record("Item", "<FullName>Net Refund - Visa/MasterCard</FullName>"), "<FullName>Visa</FullName>");
    record("Item", "<FullName>Net Refund - Credit Card</FullName>");
});

test("the check paid its invoice", function () {
    contains(record("Invoice", "<RefNumber>1008</RefNumber>"), "<BalanceRemaining>0.00</BalanceRemaining>");
    contains(record("ReceivePayment", "<RefNumber>CHK-1</RefNumber>"), "<TotalAmount>159.90</TotalAmount>");
});

test("every account that the day concerns has its part of it", function () {
    contains(record("Account", "<FullName>Plant Sales</FullName>"), "<Balance>66493.55</Balance>");
    contains(record("Account", "<FullName>Undeposited Funds</FullName>"), "<Balance>785.70</Balance>");
    contains(record("Account", "<FullName>Accounts Receivable</FullName>"), "<Balance>14819.70</Balance>");
    contains(record("Deposit", "<Memo>Settlement</Memo>"), "<DepositTotal>125.50</DepositTotal>");
});
