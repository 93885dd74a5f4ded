// @ts-check
// The view that matches a scanned check to a customer and to open invoices.

import { el, fill, find, valueOf } from "../parts/dom.js";
import { ask, lh } from "../parts/host.js";
import { field, group, records, request, response, textAt } from "../parts/lhxml.js";
import { attempt, clearMessages, messagePlace, onSubmit, showDone, showNote } from "../parts/messages.js";
import { amountOf, readAmount, showAmount } from "../parts/money.js";
import { describePayment, recordCheck } from "./recording.js";

/** @typedef {{id: string, customer: string, amount: string, number: string, invoices: string}} Match */

export function checkView() {
    const form = /** @type {HTMLFormElement} */ (find("#check-form"));
    const place = messagePlace();
    find("#view-check h1").after(place);
    const found = find("#check-match");
    form.addEventListener("input", () => fill(found));
    onSubmit(form, place, () => {
        fill(found);
        const match = findMatch(form);
        if (match.id === "") {
            showNote(place, `No customer is named “${valueOf(form, "payor")}”.`,
                el("p", {}, "Names have to be equal, letter case and blanks around them aside."));
            return;
        }
        showMatch(found, place, match);
    });
    return { show() {} };
}

/**
 * @param {HTMLFormElement} form
 * @returns {Match}
 */
function findMatch(form) {
    const amount = amountOf(readAmount(valueOf(form, "amount")));
    const id = lh().GetCustomerIDForName(valueOf(form, "payor"));
    return {
        id,
        customer: id && lh().GetCustomerNameForID(id),
        amount,
        number: valueOf(form, "number"),
        invoices: id && lh().GetInvoiceInfoForCustomerID(id, amount),
    };
}

/**
 * @param {HTMLElement} found
 * @param {HTMLElement} place
 * @param {Match} match
 */
function showMatch(found, place, match) {
    const numbers = match.invoices === "" ? [] : match.invoices.split(", ");
    const decision = numbers.length === 0 ? "No single invoice has this balance, nor do all of them together."
        : numbers.length === 1 ? `The check pays invoice ${numbers[0]}.`
        : `The check pays all open invoices together: ${match.invoices}.`;
    const button = el("button", { type: "button", class: "primary", onclick: () => attempt(place, button, () => record(found, place, match)) }, "Record the check");
    fill(found, el("div", { class: "card" },
        el("h2", {}, match.customer),
        el("p", { role: "status" }, decision),
        openInvoices(match.id, numbers),
        el("div", { class: "actions" }, button)));
}

/**
 * @param {string} id
 * @param {string[]} matched
 */
function openInvoices(id, matched) {
    const text = ask(request("InvoiceQueryRq", "open",
        group("EntityFilter", field("ListIDWithChildren", id)), field("PaidStatus", "NotPaidOnly")));
    const invoices = records(response(text, "InvoiceQueryRs"), "InvoiceRet");
    if (invoices.length === 0) {
        return el("p", { class: "empty" }, "This customer has no open invoices.");
    }
    const rows = invoices.map((invoice) => {
        const number = textAt(invoice, "RefNumber");
        const isMatched = matched.includes(number);
        return el("tr", { class: isMatched ? "matched" : undefined },
            el("th", { scope: "row" }, number),
            el("td", {}, textAt(invoice, "TxnDate")),
            el("td", {}, isMatched ? "Paid by this check" : ""),
            el("td", { class: "num" }, showAmount(textAt(invoice, "BalanceRemaining"))));
    });
    return el("table", {},
        el("caption", {}, "Open invoices"),
        el("thead", {}, el("tr", {}, ["Invoice", "Date", "Match"].map((name) => el("th", { scope: "col" }, name)),
            el("th", { scope: "col", class: "num" }, "To be paid"))),
        el("tbody", {}, rows));
}

/**
 * Records the check, and hands it to the other pieces of page script that want to know of it.
 * @param {HTMLElement} found
 * @param {HTMLElement} place
 * @param {Match} match
 */
function record(found, place, match) {
    const { id, invoices, unused } = describePayment(recordCheck(match.customer, match.amount, match.number));
    fill(found);
    clearMessages(place);
    const paid = invoices.map((invoice) => el("li", {}, `Invoice ${invoice.number}: `, el("span", { class: "num" }, showAmount(invoice.amount))));
    if (unused !== "" && unused !== "0.00") {
        paid.push(el("li", {}, "Not applied, kept as credit: ", el("span", { class: "num" }, showAmount(unused))));
    }
    showDone(place, `Check ${match.number} of ${match.customer} is in the books.`, el("p", {}, `Transaction ${id}.`), el("ul", {}, paid));
    const page = lh();
    page.IsScanTxnCreated = false;
    page.SetScanTxnInfo(id, match.id, match.customer, invoices.map((invoice) => invoice.number).join(", "), match.amount);
}
