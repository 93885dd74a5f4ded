// @ts-check
// The views that refund a card and close the batch.

import { el, fill, find, offer, valueOf } from "../parts/dom.js";
import { explain } from "../parts/failures.js";
import { lh } from "../parts/host.js";
import { attempt, messagePlace, onSubmit, showDone, showFailure, showNote } from "../parts/messages.js";
import { readAmount, showAmount, showCents } from "../parts/money.js";
import { HOLDING_ACCOUNT, composeBatch, findRecorded, readOutcomes, sum } from "./batch_requests.js";
import { cards, items } from "./lists.js";
import { MERCHANT_ACCOUNT } from "./recording.js";
import { addSlips, changes, newNumber, removeSlips, slips, timeOf } from "./till.js";

/**
 * @typedef {import("./till.js").Slip} Slip
 * @typedef {import("./batch_requests.js").Outcome} Outcome
 */

export function refundView() {
    const form = /** @type {HTMLFormElement} */ (find("#refund-form"));
    const place = messagePlace();
    form.before(place);
    onSubmit(form, place, () => {
        const slip = readRefund(form);
        if (valueOf(form, "record") === "batch") {
            addSlips(slip);
            showDone(place, `Refund ${slip.number} of ${showCents(slip.cents)} is in the open batch.`,
                el("p", {}, "It is in the books when the batch is closed. ", el("a", { href: "#batch" }, "Show the batch")));
            return;
        }
        const [outcome] = readOutcomes(lh().CreateTxns(composeBatch([slip], false), false));
        if (outcome.refusal) {
            throw outcome.refusal;
        }
        showDone(place, `${showCents(slip.cents)} refunded to ${slip.card}.`,
            el("p", {}, `Credit memo ${slip.number}, transaction ${outcome.id}. `, el("a", { href: "#journal" }, "Show it in the journal")));
    });
    return {
        show() {
            offer(find("#refund-card"), cards(), "Visa");
        },
    };
}

/**
 * @param {HTMLFormElement} form
 * @returns {Slip}
 */
function readRefund(form) {
    const cents = readAmount(valueOf(form, "amount"));
    const card = valueOf(form, "card");
    return { kind: "refund", number: newNumber("R"), card, lastFour: "", item: "", memo: valueOf(form, "reason"), customer: "", cents };
}

export function batchView() {
    const form = /** @type {HTMLFormElement} */ (find("#batch-form"));
    const place = messagePlace();
    find("#view-batch h1").after(place);
    onSubmit(form, place, () => closeBatch(place, valueOf(form, "deposit") === "yes"));
    const example = /** @type {HTMLButtonElement} */ (find("#batch-example"));
    example.addEventListener("click", () => attempt(place, example, addExample));
    changes.addEventListener("change", showSlips);
    showSlips();
    return {
        show() {
            showClosingTime(lh().GetLastTxnDownloadTime(MERCHANT_ACCOUNT));
        },
    };
}

/**
 * @param {HTMLElement} place
 * @param {boolean} withDeposit
 */
function closeBatch(place, withDeposit) {
    if (slips().length === 0) {
        showNote(place, "The batch is empty.", el("p", {}, "Take a payment as a sale, or add sample sales, first."));
        return;
    }
    const known = findRecorded(slips());
    removeSlips(known);
    const open = slips();
    if (open.length === 0) {
        showDone(place, "Everything of this batch was in the books already.");
        return;
    }
    const outcomes = readOutcomes(lh().CreateTxns(composeBatch(open, withDeposit), false));
    removeSlips(outcomes.filter((outcome) => !outcome.refusal).map((outcome) => outcome.number));
    tellOutcomes(place, open, outcomes);
    storeClosingTime(place);
}

/**
 * The batch is in the books whether or not this succeeds, so a failure is told beside what came of it.
 * @param {HTMLElement} place
 */
function storeClosingTime(place) {
    const closed = timeOf(new Date());
    try {
        lh().SetLastTxnDownloadTime(MERCHANT_ACCOUNT, closed);
        showClosingTime(closed);
    } catch (error) {
        const { todo, detail } = explain(error);
        place.append(el("div", { class: "message failed" },
            el("p", { class: "title" }, "The time of closing could not be stored in the company file."),
            el("p", {}, `The batch itself is not concerned. ${todo}`),
            el("p", { class: "cause" }, detail)));
    }
}

/** @param {string} time */
function showClosingTime(time) {
    find("#batch-since").textContent = time === "0" ? "No batch of this terminal was closed yet."
        : `The last batch of this terminal was closed at ${time.replace("T", " ")}.`;
}

/**
 * @param {HTMLElement} place
 * @param {readonly Slip[]} closed
 * @param {Outcome[]} outcomes
 */
function tellOutcomes(place, closed, outcomes) {
    const refused = outcomes.filter((outcome) => outcome.refusal);
    const rows = outcomes.map((outcome) => el("tr", {},
        el("th", { scope: "row" }, outcome.number || `Deposit to ${HOLDING_ACCOUNT}`),
        el("td", {}, outcome.refusal ? explain(outcome.refusal).what : `Recorded as ${outcome.id}`),
        el("td", { class: "num" }, outcome.refusal ? "" : showAmount(outcome.total))));
    const table = el("table", {},
        el("caption", {}, "What came of the batch"),
        el("thead", {}, el("tr", {}, el("th", { scope: "col" }, "Number"), el("th", { scope: "col" }, "Outcome"), el("th", { scope: "col", class: "num" }, "Amount"))),
        el("tbody", {}, rows));
    if (refused.length === 0) {
        showDone(place, `The batch is in the books: ${count(closed.length, "slip")}, in one document.`, table);
        return;
    }
    const first = /** @type {import("../parts/failures.js").Refusal} */ (refused[0].refusal);
    const isOverdrawn = outcomes.some((outcome) => outcome.number === "" && !outcome.refusal);
    showFailure(place, first,
        el("p", {}, `${refused.length} of ${outcomes.length} requests were refused; the others are in the books. Refused slips stay in the batch.`),
        isOverdrawn ? el("p", {}, "The deposit was recorded for all sales of the batch, refused ones too: put that right when they are recorded, and close without the deposit then.") : null,
        table);
}

function addExample() {
    const [first, second] = [items()[0] ?? "", items()[1] ?? items()[0] ?? ""];
    const sale = { kind: /** @type {const} */ ("sale"), lastFour: "1119", memo: "", customer: "Walk-in" };
    addSlips(
        { ...sale, number: newNumber("S"), card: "Visa", item: first, cents: 8000 },
        { ...sale, number: newNumber("S"), card: "MasterCard", item: second, cents: 4550 },
        { kind: "refund", number: newNumber("R"), card: "Visa", lastFour: "", item: "", memo: "Returned goods", customer: "", cents: 2000 });
}

function showSlips() {
    const open = slips();
    const badge = find("#batch-count");
    badge.hidden = open.length === 0;
    fill(badge, open.length, el("span", { class: "hidden" }, " waiting"));
    if (open.length === 0) {
        fill(find("#batch-slips"), el("p", { class: "empty" }, "The batch is empty. Sales that are taken for the batch, and refunds, wait here."));
        return;
    }
    const rows = open.map((slip) => el("tr", {},
        el("th", { scope: "row" }, slip.number),
        el("td", {}, slip.kind === "sale" ? "Sale" : "Refund"),
        el("td", {}, slip.card, slip.lastFour ? el("span", { class: "quiet together" }, ` •• ${slip.lastFour}`) : null),
        el("td", {}, slip.kind === "sale" ? slip.item : slip.memo),
        el("td", { class: "num" }, showCents(slip.kind === "sale" ? slip.cents : -slip.cents)),
        el("td", { class: "tight" }, el("button", { type: "button", class: "small", "aria-label": `Remove ${slip.number}`, onclick: () => removeSlips([slip.number]) }, "Remove"))));
    fill(find("#batch-slips"), el("table", { class: "wide" },
        el("caption", { class: "hidden" }, "Open batch"),
        el("thead", {}, el("tr", {}, ["Number", "Kind", "Card", "For"].map((name) => el("th", { scope: "col" }, name)),
            el("th", { scope: "col", class: "num" }, "Amount"), el("td", {}))),
        el("tbody", {}, rows),
        el("tfoot", {}, el("tr", {}, el("th", { scope: "row", colspan: 4 }, "Net"),
            el("td", { class: "num" }, showCents(sum(open, "sale") - sum(open, "refund"))), el("td", {})))));
}

/**
 * @param {number} number
 * @param {string} what
 */
function count(number, what) {
    return `${number} ${what}${number === 1 ? "" : "s"}`;
}
