// @ts-check
// Faults of the reference host: planned here, seen in whatever view makes the call.

import { el, fill, find, offer, valueOf } from "../parts/dom.js";
import { hex } from "../parts/failures.js";
import { attempt, messagePlace, onSubmit, showDone } from "../parts/messages.js";
import { readState, send } from "./server.js";

/** @type {[string, string][]} */
const RESULTS = [
    ["0x80004005", "E_FAIL"],
    ["0x80070005", "E_ACCESSDENIED"],
    ["0x8007000E", "E_OUTOFMEMORY"],
    ["0x80070057", "E_INVALIDARG"],
    ["0x8000FFFF", "E_UNEXPECTED"],
    ["0x80004004", "E_ABORT"],
    ["0x80070020", "the file is in use"],
    ["0x80070070", "the disk is full"],
    ["0x8007001D", "a write fault"],
    ["0x80040421", "no company file is open"],
    ["0x80040401", "not connected"],
    ["0x80040403", "no such session"],
];

export function faultsView() {
    const form = /** @type {HTMLFormElement} */ (find("#faults-form"));
    const place = messagePlace();
    find("#view-faults h1").after(place);
    offer(find("#faults-result"), RESULTS.map(([value, label]) => [value, `${label} (${value})`]));
    onSubmit(form, place, async () => {
        const call = valueOf(form, "call");
        const hresult = parseInt(valueOf(form, "result"), 16) | 0;
        const { faults } = await send("POST", "/workbench/faults", { call, hresult, nth: Number(valueOf(form, "nth")) });
        showFaults(faults);
        showDone(place, `${call} is going to fail.`, el("p", {}, "Use the terminal, and see what it says."));
    });
    const clear = /** @type {HTMLButtonElement} */ (find("#faults-clear"));
    clear.addEventListener("click", () => attempt(place, clear, async () => {
        showFaults((await send("DELETE", "/workbench/faults")).faults);
        showDone(place, "No faults are planned any more.");
    }));
    return {
        async show() {
            const { calls } = await readState();
            offer(find("#faults-call"), calls, "RequestProcessor.ProcessRequest");
            await refreshFaults();
        },
    };
}

/** Shows which faults are still to come, as the workbench has it. */
export async function refreshFaults() {
    showFaults((await readState()).faults);
}

/** @param {WorkbenchFault[]} faults */
function showFaults(faults) {
    const badge = find("#fault-count");
    badge.hidden = faults.length === 0;
    fill(badge, faults.length, el("span", { class: "hidden" }, " planned"));
    const place = find("#faults-planned");
    if (faults.length === 0) {
        fill(place, el("p", { class: "empty" }, "None. Ledgerhall works as it should."));
        return;
    }
    fill(place, el("table", {},
        el("caption", { class: "hidden" }, "Planned faults"),
        el("thead", {}, el("tr", {}, ["Call", "Returns", "When"].map((name) => el("th", { scope: "col" }, name)))),
        el("tbody", {}, faults.map((fault) => el("tr", {},
            el("th", { scope: "row" }, el("code", {}, fault.call)),
            el("td", {}, fault.hresultName || hresultOf(fault)),
            el("td", {}, fault.nth === 0 ? "every time" : fault.nth === 1 ? "next time" : `${fault.nth} calls from now`))))));
}

/** @param {WorkbenchFault} fault */
function hresultOf(fault) {
    return typeof fault.hresult === "number" ? hex(fault.hresult) : fault.hresult;
}
