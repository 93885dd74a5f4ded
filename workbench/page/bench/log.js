// @ts-check
// The live log beside the views: every call, push and event with what it carried.

import { el, fill, find } from "../parts/dom.js";
import { maskCards } from "../parts/masking.js";
import { attempt } from "../parts/messages.js";
import { describeEntry, detailsOf, isFailure } from "./log_entry.js";
import { send } from "./server.js";

const KEPT_ENTRIES = 1000;
const SHOWN_ENTRIES = 200;
const SEARCH_DELAY = 120;

/** @type {Record<string, (entry: WorkbenchLogEntry) => boolean>} */
const KINDS = {
    all: () => true,
    calls: (entry) => ["call", "refused", "create", "release", "request"].includes(entry.kind),
    pushes: (entry) => ["push", "script", "event", "delivered"].includes(entry.kind),
    failures: isFailure,
};

export class LogPanel {
    /** @type {Map<number, {entry: WorkbenchLogEntry, text: string}>} oldest first */
    #kept = new Map();
    /** @type {WorkbenchLogEntry[]} those that came since the last drawing */
    #waiting = [];
    #isDrawing = false;
    #list = find("#log-entries");
    #search = /** @type {HTMLInputElement} */ (find("#log-search"));
    #kind = /** @type {HTMLSelectElement} */ (find("#log-kind"));

    /** @param {(entry: WorkbenchLogEntry) => void} onEntry is told of each entry that comes */
    constructor(onEntry) {
        window.addEventListener("workbenchlog", (event) => {
            const entry = /** @type {CustomEvent<WorkbenchLogEntry>} */ (event).detail;
            this.#add(entry);
            onEntry(entry);
        });
        let delay = 0;
        this.#search.addEventListener("input", () => {
            clearTimeout(delay);
            delay = setTimeout(() => this.#drawAll(), SEARCH_DELAY);
        });
        this.#kind.addEventListener("change", () => this.#drawAll());
        this.#onClick("#log-save", () => this.#save());
        this.#onClick("#log-clear", () => this.#clear());
        this.#drawAll();
    }

    /** The log of a workbench that was started anew begins again. */
    startAnew() {
        this.#kept.clear();
        this.#waiting = [];
        this.#drawAll();
    }

    /** @param {WorkbenchLogEntry} entry */
    #add(entry) {
        if (this.#kept.has(entry.n)) {
            return;
        }
        this.#kept.set(entry.n, { entry, text: maskCards(JSON.stringify(entry)).toLowerCase() });
        if (this.#kept.size > KEPT_ENTRIES) {
            this.#kept.delete(this.#kept.keys().next().value ?? 0);
        }
        this.#waiting.push(entry);
        if (this.#waiting.length > SHOWN_ENTRIES) {
            this.#waiting.shift();
        }
        if (!this.#isDrawing) {
            this.#isDrawing = true;
            requestAnimationFrame(() => this.#drawWaiting());
        }
    }

    #drawWaiting() {
        this.#isDrawing = false;
        const rows = this.#waiting.filter((entry) => this.#isWanted(entry.n)).map(rowOf);
        this.#waiting = [];
        this.#list.prepend(...rows.reverse());
        while (this.#list.children.length > SHOWN_ENTRIES) {
            this.#list.lastElementChild?.remove();
        }
        this.#tellCount();
    }

    #drawAll() {
        this.#waiting = [];
        const wanted = Array.from(this.#kept.keys()).filter((n) => this.#isWanted(n)).slice(-SHOWN_ENTRIES).reverse();
        fill(this.#list, wanted.map((n) => rowOf(/** @type {{entry: WorkbenchLogEntry}} */ (this.#kept.get(n)).entry)));
        this.#tellCount();
    }

    /** @param {number} n */
    #isWanted(n) {
        const kept = this.#kept.get(n);
        return kept !== undefined && KINDS[this.#kind.value](kept.entry) && kept.text.includes(this.#search.value.trim().toLowerCase());
    }

    #tellCount() {
        const shown = this.#list.children.length;
        find("#log-count").textContent = shown === this.#kept.size ? `${shown}` : `${shown} of ${this.#kept.size}`;
    }

    async #save() {
        const log = await send("GET", "/workbench/log");
        const file = new Blob([JSON.stringify(log, null, 2)], { type: "application/json" });
        const link = el("a", { href: URL.createObjectURL(file), download: "workbench-log.json" });
        link.click();
        setTimeout(() => URL.revokeObjectURL(link.href), 1000);
    }

    async #clear() {
        await send("DELETE", "/workbench/log");
        this.startAnew();
    }

    /**
     * @param {string} selector
     * @param {() => Promise<void>} work
     */
    #onClick(selector, work) {
        const button = /** @type {HTMLButtonElement} */ (find(selector));
        button.addEventListener("click", () => attempt(find("#log-message"), button, work));
    }
}

/**
 * A line of the log; its details are made when it is opened.
 * @param {WorkbenchLogEntry} entry
 */
function rowOf(entry) {
    const { title, outcome, duration } = describeEntry(entry);
    const details = el("details", {},
        el("summary", {},
            el("time", {}, entry.time.slice(11, 23)),
            el("span", { class: "what" }, title),
            el("span", { class: "outcome" }, outcome),
            el("span", { class: "duration" }, duration)));
    details.addEventListener("toggle", () => {
        if (details.children.length === 1) {
            details.append(...detailsOf(entry));
        }
    });
    return el("li", { "data-n": entry.n, "data-kind": entry.kind, class: isFailure(entry) ? "failure" : undefined }, details);
}
