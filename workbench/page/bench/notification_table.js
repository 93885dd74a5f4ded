// @ts-check
// The twelve notifications of the host: what each is pushed with, and where it arrives in a page.

/**
 * @typedef {object} Argument
 * @property {string} name
 * @property {"string" | "boolean"} type
 * @property {string | boolean} sample
 *
 * @typedef {object} Notification
 * @property {string} method of the control, called by the host
 * @property {string} script the function that a pushed script calls; empty when it is always an event
 * @property {string} event of the control
 * @property {Argument[]} arguments
 */

/**
 * @param {string} name
 * @param {string} sample
 * @returns {Argument}
 */
function text(name, sample) {
    return { name, type: "string", sample };
}

/** @type {readonly Notification[]} */
export const NOTIFICATIONS = [
    {
        method: "NotifyTransactionChanged",
        script: "app.lhProxy.txnChangeEventFromLH",
        event: "TransactionChanged",
        arguments: [text("bstrTransInfo", "<Transaction><Type>Invoice</Type>\n<TxnID>T-111</TxnID></Transaction>")],
    },
    {
        method: "SetReconFeeData",
        script: "app.lhProxy.feeEventFromLH",
        event: "ReconFeeData",
        arguments: [text("bstrFeeData", "<Fees><Fee><Date>2026-11-20</Date><Amount>2.50</Amount></Fee></Fees>")],
    },
    {
        method: "SetReconBatchData",
        script: "app.lhProxy.batchEventFromLH",
        event: "ReconBatchData",
        arguments: [text("bstrBatchData", "<Batches><Batch><ReconBatchID>B-17</ReconBatchID><Total>125.50</Total></Batch></Batches>")],
    },
    {
        method: "SetReconPaymentData",
        script: "app.lhProxy.txnEventFromLH",
        event: "ReconPaymentData",
        arguments: [
            text("paymentData", "<Payments><Payment><TxnID>T-120</TxnID>\n<Amount>25.00</Amount></Payment></Payments>"),
            text("undepFundsStartDate", "2026-11-01"),
            { name: "isUndepFundsAccntDefault", type: "boolean", sample: true },
        ],
    },
    {
        method: "SetTransactionID",
        script: "app.lhProxy.invoiceIdFromLH",
        event: "TransactionID",
        arguments: [text("bstrTransactionID", "T-111")],
    },
    {
        method: "setEInvoicedTransactionData",
        script: "app.lhProxy.eInvoicesEvent",
        event: "EInvoicedTransactionData",
        arguments: [text("bstrEInvoicedTransactionData", "<Invoice><RefNumber>1001</RefNumber><Amount>159.90</Amount></Invoice>")],
    },
    {
        method: "ProcessLHRequestData",
        script: "",
        event: "OnProcessLHRequest",
        arguments: [text("bstrRequestStr", "<CustomerQueryRq requestID=\"1\"/>")],
    },
    {
        method: "SetCustomerListData",
        script: "app.lhProxy.customerDataFromLH",
        event: "CustomerListData",
        arguments: [text("bstrCustomerData", "<Customers><Customer>Eastgate Library</Customer>\n<Customer>Smith Co</Customer></Customers>")],
    },
    {
        method: "SetItemListData",
        script: "",
        event: "ItemListData",
        arguments: [text("bstrItemData", "<Items><Item>Lawn care</Item><Item>Hand trowel</Item></Items>")],
    },
    {
        method: "SetCustomerData",
        script: "$.fn.customerDataFromLH",
        event: "CustomerData",
        arguments: [text("bstrCustomerData", "<Customer><Name>Eastgate Library</Name></Customer>")],
    },
    {
        method: "SetCustomerSearchResult",
        script: "$.fn.CustomerSearchResultFromLH",
        event: "CustomerSearchResult",
        arguments: [text("bstrCustomerSearchResult", "[{\"name\": \"Smith\"}, {\"name\": \"Smith Co\"}]")],
    },
    {
        method: "SetLineItemsSearchResult",
        script: "$.fn.LineItemSearchResultFromLH",
        event: "LineItemsSearchResult",
        arguments: [text("bstrLineItemsSearchResult", "[{\"item\": \"Lawn care\", \"amount\": \"38.00\"}]")],
    },
];

/** @param {Notification} notification */
export function isAlwaysEvent(notification) {
    return notification.script === "";
}
