// @ts-check
// The workbench itself: what the operator of Ledgerhall would do, and the connection that all calls take.

import { Problem } from "../parts/failures.js";

/**
 * A request to the workbench.
 * @param {"GET" | "POST" | "DELETE"} method
 * @param {string} path
 * @param {unknown} [body]
 * @returns {Promise<any>} the reply
 */
export async function send(method, path, body) {
    const workbench = window.paylodgeWorkbench;
    if (!workbench) {
        throw new Problem("This page was not opened from the workbench.", "Open the address that ./dev workbench prints.");
    }
    return workbench.request(method, path, body);
}

/** @returns {Promise<WorkbenchState>} */
export function readState() {
    return send("GET", "/workbench/state");
}
