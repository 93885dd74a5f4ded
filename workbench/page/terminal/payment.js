// @ts-check
// The view that takes a card payment.

import { el, fill, find, nextFrame, offer, valueOf } from "../parts/dom.js";
import { explain } from "../parts/failures.js";
import { lh } from "../parts/host.js";
import { attempt, messagePlace, onSubmit, showDone, showFailure } from "../parts/messages.js";
import { amountOf, readAmount, showAmount, showCents } from "../parts/money.js";
import { cards, customers, items } from "./lists.js";
import { ReaderPayment } from "./reader.js";
import { describePayment, recordAgain, recordPayment } from "./recording.js";
import { addSlips, changes, newNumber, removeUnrecorded, timeOf, unrecorded } from "./till.js";

/** @typedef {{title: string, call: string, run: () => string}} Step */

export function paymentView() {
    const form = /** @type {HTMLFormElement} */ (find("#payment-form"));
    const place = messagePlace();
    const held = el("div", { class: "held" });
    find("#view-payment h1").after(place, held);
    const run = new StepList();

    form.addEventListener("change", () => showItemField(form));
    showItemField(form);
    onSubmit(form, place, () => takePayment(form, place, run));
    changes.addEventListener("change", () => showHeld(held, place));
    showHeld(held, place);

    return {
        show() {
            offer(find("#payment-customer"), customers(), "Eastgate Library");
            offer(find("#payment-method"), cards(), "Visa");
            offer(find("#payment-item"), items());
        },
    };
}

/**
 * @param {HTMLFormElement} form
 * @param {HTMLElement} place
 * @param {StepList} list
 */
async function takePayment(form, place, list) {
    lh();
    const cents = readAmount(valueOf(form, "amount"));
    const payment = new ReaderPayment(amountOf(cents), valueOf(form, "answer"));
    const record = valueOf(form, "record");
    /** @type {() => void} */
    let tell = () => {};
    const steps = [...payment.steps(), recordingStep(form, payment, record, (words) => (tell = words), place)];
    list.begin(steps, showCents(cents));
    try {
        const isWhole = await list.run(steps, valueOf(form, "pause") === "yes");
        if (!isWhole) {
            payment.abandon();
            showFailure(place, new RangeError("The payment was cancelled. Nothing was charged or recorded."));
            return;
        }
        tell();
    } catch (error) {
        freeReader(payment);
        throw error;
    }
}

/**
 * @param {HTMLFormElement} form
 * @param {ReaderPayment} payment
 * @param {string} record
 * @param {(words: () => void) => void} onDone gets what tells the user of the payment
 * @param {HTMLElement} place
 * @returns {Step}
 */
function recordingStep(form, payment, record, onDone, place) {
    const customer = valueOf(form, "customer");
    const method = valueOf(form, "method");
    if (record === "batch") {
        return {
            title: "Keep it for the batch",
            call: "",
            run() {
                const cents = readAmount(payment.amount);
                const number = newNumber("S");
                const lastFour = payment.card?.lastFour ?? "";
                addSlips({ kind: "sale", number, card: method, lastFour, item: valueOf(form, "item"), memo: "", customer, cents });
                onDone(() => showDone(place, `Sale ${number} of ${showCents(cents)} is in the open batch.`,
                    el("p", {}, "It is in the books when the batch is closed.")));
                return "kept";
            },
        };
    }
    const way = record === "save" ? "save" : "create";
    return {
        title: "Record it in the books",
        call: way === "save" ? "SavePaymentTxn" : "CreatePaymentTxn",
        run() {
            const { amount, card } = payment;
            if (!card) {
                throw new Error("no card was read");
            }
            const held = { number: newNumber("P"), customer, amount, method, record: way, time: timeOf(new Date()), card };
            const recorded = recordPayment(/** @type {import("./till.js").Payment} */ (held));
            onDone(() => tellRecorded(place, recorded, held));
            return "recorded";
        },
    };
}

/**
 * @param {HTMLElement} place
 * @param {Element} record
 * @param {{number: string, amount: string, customer: string}} payment
 */
function tellRecorded(place, record, payment) {
    const { id, invoices, unused } = describePayment(record);
    const lines = invoices.map((invoice) => el("li", {}, `Invoice ${invoice.number}: `, el("span", { class: "num" }, showAmount(invoice.amount))));
    if (unused !== "" && unused !== "0.00") {
        lines.push(el("li", {}, "Not applied, kept as credit: ", el("span", { class: "num" }, showAmount(unused))));
    }
    showDone(place, `${showAmount(payment.amount)} of ${payment.customer} is in the books.`,
        el("p", {}, `Payment ${payment.number}, transaction ${id}. `, el("a", { href: "#journal" }, "Show it in the journal")),
        el("ul", {}, lines));
}

/**
 * After a failure the reader has to be free for the next payment; what it says to that does not matter any more.
 * @param {ReaderPayment} payment
 */
function freeReader(payment) {
    try {
        payment.abandon();
    } catch {
        // The failure before is the one that is told.
    }
}

/** @param {HTMLFormElement} form */
function showItemField(form) {
    find("#payment-item-field").hidden = valueOf(form, "record") !== "batch";
}

/**
 * Payments that the bank approved and that are not in the books yet.
 * @param {HTMLElement} held
 * @param {HTMLElement} place
 */
function showHeld(held, place) {
    fill(held, unrecorded().map((payment) => {
        const again = el("button", { type: "button", class: "primary", onclick: () => record() }, "Record it now");
        const record = () => attempt(place, again, () => tellRecorded(place, recordAgain(payment), payment));
        const drop = () => removeUnrecorded(payment.number);
        return el("div", { class: "message failed" },
            el("p", { class: "title" }, `The bank approved ${showAmount(payment.amount)} of ${payment.customer}, and it is not in the books yet.`),
            el("p", {}, `Payment ${payment.number}. It is kept here, also when the page is reloaded; recording it again never doubles it.`),
            el("div", { class: "actions" }, again,
                el("button", { type: "button", onclick: drop }, "Forget it")));
    }));
}

/** The steps of a payment on the screen, and their buttons. */
class StepList {
    #display = find("#reader-display");
    #list = find("#reader-steps");
    #actions = find("#reader-actions");
    /** @type {(goOn: boolean) => void} */
    #answer = () => {};

    constructor() {
        find("#reader-next").addEventListener("click", () => this.#answer(true));
        find("#reader-cancel").addEventListener("click", () => this.#answer(false));
        this.begin(new ReaderPayment("0.00", "00").steps(), "");
        this.#display.textContent = "Ready";
    }

    /**
     * @param {Step[]} steps
     * @param {string} amount
     */
    begin(steps, amount) {
        this.#display.textContent = amount;
        fill(this.#list, steps.map((step) => el("li", { "data-state": "waiting" },
            el("span", { class: "what" }, step.title, step.call ? el("code", {}, step.call) : null),
            el("span", { class: "outcome" }, ""))));
    }

    /**
     * Runs the steps one after the other; stops before each one if wanted. False when the user cancelled.
     * @param {Step[]} steps
     * @param {boolean} isPaused
     */
    async run(steps, isPaused) {
        try {
            for (const [index, step] of steps.entries()) {
                const row = this.#list.children[index];
                mark(row, "running", "");
                this.#actions.hidden = !isPaused;
                await nextFrame();
                if (isPaused && !(await this.#wait())) {
                    mark(row, "failed", "cancelled");
                    return false;
                }
                this.#runStep(step, row);
            }
        } finally {
            this.#actions.hidden = true;
        }
        return true;
    }

    #wait() {
        find("#reader-next").focus();
        return new Promise((resolve) => (this.#answer = resolve));
    }

    /**
     * @param {Step} step
     * @param {Element} row
     */
    #runStep(step, row) {
        try {
            mark(row, "done", step.run());
        } catch (error) {
            mark(row, "failed", explain(error).what);
            throw error;
        }
    }
}

/**
 * @param {Element} row
 * @param {"running" | "done" | "failed"} state
 * @param {string} outcome
 */
function mark(row, state, outcome) {
    row.setAttribute("data-state", state);
    find(".outcome", row).textContent = outcome;
}
