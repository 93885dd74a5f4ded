// A page as it is written for Ledgerhall's embedded browser: nothing in it knows of the workbench.
//
//     ./dev workbench --page examples/page --open

// Called by scripts that Ledgerhall pushes.
var app = {
    lhProxy: {
        feeEventFromLH: function (data) {
            document.getElementById("fees").textContent = data;
        }
    }
};

window.onload = function () {
    var lh = new ActiveXObject("Paylodge.Paylodge");
    var form = document.getElementById("payment");

    document.getElementById("reader").SubscribeToNotifications();
    showAccounts(lh.GetAccounts("Bank"));
    form.onsubmit = function () {
        document.getElementById("said").textContent = recordPayment(lh, form.customer.value, form.amount.value);
        return false;
    };
};

// Records the payment and says what came of it.
function recordPayment(lh, customer, amount) {
    var response;
    try {
        response = lh.CreatePaymentTxn(customer, "", amount, "", "Cash", "", "true", "", "", "", "", "", "", "", "", "", "",
            "", "", "", "", "");
    } catch (error) {
        return "Ledgerhall could not record it: " + error.number;
    }
    var id = /<TxnID>([^<]*)/.exec(response);
    return id ? amount + " of " + customer + ", recorded as " + id[1] : /statusMessage="([^"]*)/.exec(response)[1];
}

function showAccounts(names) {
    var list = document.getElementById("accounts");
    names.replace(/<AccountName>([^<]*)/g, function (all, name) {
        var item = document.createElement("li");
        item.textContent = name;
        list.appendChild(item);
    });
}
