// @ts-check
// The two objects that a page has of Ledgerhall, and what holds for every call.

import { find } from "./dom.js";
import { Problem } from "./failures.js";

/** @type {Paylodge | undefined} */
let accounting;
let isRefused = false;

/**
 * The accounting object of this page. Throws while there is no workbench, and on a page that the site lock
 * refuses, which gets nothing from any member.
 */
export function lh() {
    if (isRefused) {
        throw new Problem("The component's site lock refuses this page.", "Open the workbench at its approved address, which is shown above.");
    }
    if (window.paylodgeWorkbench?.state === "lost") {
        throw new Problem("The workbench is not running any more.", "Start it again with ./dev workbench. This page connects by itself.");
    }
    accounting ??= new ActiveXObject("Paylodge.Paylodge");
    return accounting;
}

/** The control of this page, which is an element of it. */
export function control() {
    return /** @type {PaylodgeControl & PaylodgeControlElement} */ (/** @type {unknown} */ (find("#control")));
}

/** The next call gets a new object: the one from before belongs to a workbench that is gone. */
export function forgetObjects() {
    accounting = undefined;
}

/** @param {boolean} refused whether the component's site lock refuses this page */
export function setRefused(refused) {
    isRefused = refused;
}

/**
 * Sends requests of the page's own and returns the whole response.
 * @param {...string} requests
 */
export function ask(...requests) {
    return lh().ProcessLHRequest(requests.join(""));
}
