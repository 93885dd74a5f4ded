// @ts-check
// The two objects that a page has of Ledgerhall, and what holds for every call.

import { find } from "./dom.js";
import { E_INVALIDARG, Problem, numberOf } from "./failures.js";

/** @type {Paylodge | undefined} */
let accounting;
let isRefused = false;

/** The accounting object of this page. Throws on a page that the site lock refuses, which gets nothing from any member. */
export function lh() {
    if (isRefused) {
        throw new Problem("The component's site lock refuses this page.", "Open the workbench at its approved address, which is shown above.");
    }
    return object();
}

function object() {
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

/**
 * Whether the component's site lock lets this page work. A refused page gets nothing from any member, and no error
 * either, so this asks for something that an approved page is told to be wrong.
 */
export function checkApproval() {
    isRefused = false;
    try {
        object().GetInvoiceInfoForCustomerID("", "");
        isRefused = true;
    } catch (error) {
        if (numberOf(error) !== E_INVALIDARG) {
            throw error;
        }
    }
    return !isRefused;
}

/**
 * Sends requests of the page's own and returns the whole response.
 * @param {...string} requests
 */
export function ask(...requests) {
    return lh().ProcessLHRequest(requests.join(""));
}
