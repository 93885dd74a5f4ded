// @ts-check
// How a view tells what came of something: in words, where the user looks, and to screen readers.

import { el, fill } from "./dom.js";
import { explain } from "./failures.js";
import { maskCards } from "./masking.js";

/** @typedef {import("./dom.js").Child} Child */

/**
 * Makes the place in a view where outcomes are told. Screen readers say what is put there.
 */
export function messagePlace() {
    return el("div", { class: "messages", role: "status" });
}

/**
 * @param {Element} place
 * @param {string} title
 * @param {...(Child | Child[])} more
 */
export function showDone(place, title, ...more) {
    fill(place, message("done", title, more));
}

/**
 * @param {Element} place
 * @param {string} title
 * @param {...(Child | Child[])} more
 */
export function showNote(place, title, ...more) {
    fill(place, message("note", title, more));
}

/**
 * An error in plain words with what to do.
 * @param {Element} place
 * @param {unknown} error
 * @param {...(Child | Child[])} more
 */
export function showFailure(place, error, ...more) {
    const { what, todo, detail } = explain(error);
    const text = todo ? el("p", {}, maskCards(todo)) : null;
    const cause = detail ? el("p", { class: "cause" }, maskCards(detail)) : null;
    fill(place, message("failed", maskCards(what), [text, cause, ...more]));
}

/** @param {Element} place */
export function clearMessages(place) {
    fill(place);
}

/**
 * Runs what a user asked for: the button cannot be pressed twice, and a failure is told.
 * @param {HTMLElement} place
 * @param {HTMLButtonElement | null} button
 * @param {() => void | Promise<void>} work
 */
export async function attempt(place, button, work) {
    clearMessages(place);
    button?.setAttribute("aria-disabled", "true");
    try {
        await work();
    } catch (error) {
        showFailure(place, error);
    } finally {
        button?.removeAttribute("aria-disabled");
    }
}

/**
 * Does `work` when the form is sent, with nothing else in between.
 * @param {HTMLFormElement} form
 * @param {HTMLElement} place
 * @param {() => void | Promise<void>} work
 */
export function onSubmit(form, place, work) {
    form.addEventListener("submit", (event) => {
        event.preventDefault();
        const button = /** @type {HTMLButtonElement | null} */ (form.querySelector("button[type=submit], button:not([type])"));
        if (button?.getAttribute("aria-disabled") !== "true") {
            void attempt(place, button, work);
        }
    });
}

/**
 * @param {"done" | "note" | "failed"} kind
 * @param {string} title
 * @param {(Child | Child[])[]} more
 */
function message(kind, title, more) {
    return el("div", { class: `message ${kind}` }, el("p", { class: "title" }, title), ...more);
}
