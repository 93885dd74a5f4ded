// @ts-check
// A batch as one document: its sales, refunds and deposit, and what came of each.

import { ask } from "../parts/host.js";
import { Refusal } from "../parts/failures.js";
import { field, group, readXml, records, reference, refusalOf, request, response, textAt } from "../parts/lhxml.js";
import { amountOf } from "../parts/money.js";
import { dateOf } from "./till.js";

/** @typedef {import("./till.js").Slip} Slip */

export const HOLDING_ACCOUNT = "Credit Card Holding Account";
const DEPOSIT_ID = "deposit";

// The component reads the card from the memo and creates the item for it. It does not know MasterCard there, for which
// only the item for any card exists.
const REFUND_WORDS = /** @type {const} */ ({
    Visa: { memo: "Visa", item: "Visa/MasterCard" },
    MasterCard: { memo: "MasterCard", item: "Credit Card" },
    "American Express": { memo: "AmEx", item: "American Express" },
    Discover: { memo: "Discover", item: "Discover" },
    "Diners Club": { memo: "Diners", item: "Diners Club" },
});

/**
 * The requests of a batch, one after the other and with nothing in between.
 * @param {readonly Slip[]} slips
 * @param {boolean} withDeposit whether the sales are deposited
 */
export function composeBatch(slips, withDeposit) {
    const sales = sum(slips, "sale");
    const deposit = withDeposit && sales > 0 ? composeDeposit(sales) : "";
    return slips.map((slip) => (slip.kind === "sale" ? composeSale(slip) : composeRefund(slip))).join("") + deposit;
}

/** @param {Slip} slip */
function composeSale(slip) {
    return request("SalesReceiptAddRq", slip.number, group("SalesReceiptAdd",
        reference("CustomerRef", slip.customer),
        field("TxnDate", dateOf(new Date())),
        field("RefNumber", slip.number),
        reference("PaymentMethodRef", slip.card),
        group("SalesReceiptLineAdd", reference("ItemRef", slip.item), field("Amount", amountOf(slip.cents)))));
}

/** @param {Slip} slip */
function composeRefund(slip) {
    const words = REFUND_WORDS[/** @type {keyof typeof REFUND_WORDS} */ (slip.card)] ?? { memo: slip.card, item: "Credit Card" };
    return request("CreditMemoAddRq", slip.number, group("CreditMemoAdd",
        reference("CustomerRef", "Paylodge Net Refund"),
        field("TxnDate", dateOf(new Date())),
        field("RefNumber", slip.number),
        field("Memo", [`${words.memo} net refund`, slip.memo].filter(Boolean).join(": ")),
        group("CreditMemoLineAdd", reference("ItemRef", `Net Refund - ${words.item}`), field("Amount", amountOf(slip.cents)))));
}

/** @param {number} cents */
function composeDeposit(cents) {
    return request("DepositAddRq", DEPOSIT_ID, group("DepositAdd",
        field("TxnDate", dateOf(new Date())),
        reference("DepositToAccountRef", HOLDING_ACCOUNT),
        field("Memo", "Card sales of the terminal"),
        group("DepositLineAdd", reference("AccountRef", "Undeposited Funds"), field("Amount", amountOf(cents)))));
}

/**
 * @param {readonly Slip[]} slips
 * @param {Slip["kind"]} kind
 */
export function sum(slips, kind) {
    return slips.filter((slip) => slip.kind === kind).reduce((total, slip) => total + slip.cents, 0);
}

/**
 * What came of each request of a batch.
 * @typedef {object} Outcome
 * @property {string} number the slip's; empty for the deposit
 * @property {string} id the transaction in the books
 * @property {string} total
 * @property {Refusal | undefined} refusal
 */

/**
 * @param {string} summary what `CreateTxns` returned
 * @returns {Outcome[]}
 */
export function readOutcomes(summary) {
    const root = readXml(summary);
    if (!root || root.nodeName !== "LHXMLMsgsRs") {
        throw new Refusal("", "Ledgerhall's answer to the batch cannot be read");
    }
    return Array.from(root.children, (result) => {
        const id = result.getAttribute("requestID") ?? "";
        return {
            number: id === DEPOSIT_ID ? "" : id,
            id: textAt(result, "TxnID"),
            total: textAt(result, "TotalAmount") || textAt(result, "DepositTotal"),
            refusal: result.getAttribute("statusCode") === "0" ? undefined : refusalOf(result),
        };
    });
}

/**
 * The numbers of those slips that are in the books already: an earlier try got there, and only its answer was lost.
 * @param {readonly Slip[]} slips
 */
export function findRecorded(slips) {
    const sales = numbersOf(slips, "sale");
    const refunds = numbersOf(slips, "refund");
    const text = ask(
        sales && request("SalesReceiptQueryRq", "sales", sales, field("IncludeRetElement", "RefNumber")),
        refunds && request("CreditMemoQueryRq", "refunds", refunds, field("IncludeRetElement", "RefNumber")));
    return [
        ...(sales ? records(response(text, "SalesReceiptQueryRs"), "SalesReceiptRet") : []),
        ...(refunds ? records(response(text, "CreditMemoQueryRs"), "CreditMemoRet") : []),
    ].map((record) => textAt(record, "RefNumber"));
}

/**
 * @param {readonly Slip[]} slips
 * @param {Slip["kind"]} kind
 */
function numbersOf(slips, kind) {
    return slips.filter((slip) => slip.kind === kind).map((slip) => field("RefNumber", slip.number)).join("");
}
