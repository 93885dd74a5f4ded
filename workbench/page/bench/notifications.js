// @ts-check
// The operator's panel: pushes each notification into the page, and shows what arrived there.

import { el, fill, find, offer, valueOf } from "../parts/dom.js";
import { E_FAIL, Problem, numberOf } from "../parts/failures.js";
import { control } from "../parts/host.js";
import { maskCards } from "../parts/masking.js";
import { attempt, messagePlace, onSubmit, showDone } from "../parts/messages.js";
import { formatXml } from "../parts/lhxml.js";
import { NOTIFICATIONS, isAlwaysEvent } from "./notification_table.js";
import { readState, send } from "./server.js";

/** @typedef {import("./notification_table.js").Notification} Notification */

const SHOWN_ARRIVALS = 50;

let arrivalCount = 0;

/**
 * Defines the functions that pushed scripts call, and listens to the events of the control. A pushed script finds them
 * from the moment that the page's own script has begun.
 */
export function defineReceivers() {
    window.app = { lhProxy: {} };
    window.$ = { fn: {} };
    for (const { script, event } of NOTIFICATIONS) {
        const name = script.slice(script.lastIndexOf(".") + 1);
        const functions = script.startsWith("$.fn.") ? window.$.fn : window.app.lhProxy;
        if (script !== "") {
            functions[name] = (...values) => showArrival("Script", `${script}(…)`, values);
        }
        control().attachEvent(event, (/** @type {unknown[]} */ ...values) => showArrival("Event", event, values.map(String)));
    }
    window.addEventListener("workbenchscript", (message) => {
        const { text, error } = /** @type {CustomEvent<{text: string, error: string | null}>} */ (message).detail;
        if (error) {
            showArrival("Failed", error, [text]);
        }
    });
}

/** Makes this page the one that notifications reach, as the box says. */
export function subscribe() {
    const box = /** @type {HTMLInputElement} */ (find("#push-subscribed"));
    if (box.checked) {
        control().SubscribeToNotifications();
    } else {
        control().UnSubscribeFromNotifications();
    }
}

export function notificationsView() {
    const form = /** @type {HTMLFormElement} */ (find("#push-form"));
    const place = messagePlace();
    find("#view-notifications h1").after(place);
    const method = /** @type {HTMLSelectElement} */ (find("#push-method"));
    offer(method, NOTIFICATIONS.map((notification) => notification.method));
    const all = /** @type {HTMLButtonElement} */ (find("#push-all"));

    method.addEventListener("change", () => showFields(form));
    form.addEventListener("change", (event) => {
        const field = /** @type {HTMLInputElement} */ (event.target);
        if (field.name === "mode") {
            showRoute(form);
            void attempt(place, null, () => setMode(field.value));
        }
    });
    find("#push-subscribed").addEventListener("change", () => attempt(place, null, subscribe));
    onSubmit(form, place, () => pushChosen(form, place));
    all.addEventListener("click", () => attempt(place, all, () => pushAll(place)));
    find("#arrivals-clear").addEventListener("click", clearArrivals);
    showFields(form);

    return {
        async show() {
            const { browser } = await readState();
            for (const choice of form.querySelectorAll("[name=mode]")) {
                /** @type {HTMLInputElement} */ (choice).checked = /** @type {HTMLInputElement} */ (choice).value === browser.mode;
            }
            showRoute(form);
        },
    };
}

/** @param {string} mode "page" or "none" */
async function setMode(mode) {
    await send("POST", "/workbench/browser", { instance: mode });
}

/**
 * @param {HTMLFormElement} form
 * @param {HTMLElement} place
 */
async function pushChosen(form, place) {
    const notification = chosen(form);
    await push(notification, notification.arguments.map((argument) =>
        argument.type === "boolean" ? valueOf(form, argument.name) === "true" : String(new FormData(form).get(argument.name))));
    showDone(place, `${notification.method} was delivered.`);
}

/** @param {HTMLElement} place */
async function pushAll(place) {
    for (const notification of NOTIFICATIONS) {
        await push(notification, notification.arguments.map((argument) => argument.sample));
    }
    showDone(place, `All ${NOTIFICATIONS.length} notifications were delivered.`);
}

/**
 * @param {Notification} notification
 * @param {(string | boolean)[]} values
 */
async function push(notification, values) {
    try {
        await send("POST", "/workbench/push", { method: notification.method, arguments: values });
    } catch (error) {
        if (numberOf(error) === E_FAIL) {
            throw new Problem(`${notification.method} reached nobody.`,
                "No page subscribes to the channel, or Oskerin.dll is missing. Let this page subscribe, then push again.");
        }
        throw error;
    }
}

/** @param {HTMLFormElement} form */
function chosen(form) {
    const method = valueOf(form, "method");
    return /** @type {Notification} */ (NOTIFICATIONS.find((notification) => notification.method === method));
}

/** @param {HTMLFormElement} form */
function showFields(form) {
    fill(find("#push-arguments"), chosen(form).arguments.map((argument) => {
        const id = `push-${argument.name}`;
        const label = el("label", { for: id }, argument.name);
        if (argument.type === "boolean") {
            const select = el("select", { id, name: argument.name });
            offer(select, ["true", "false"], String(argument.sample));
            return el("div", { class: "field" }, label, select);
        }
        const text = String(argument.sample);
        const lines = text.split("\n").length;
        const area = el("textarea", { id, name: argument.name, rows: Math.max(lines, text.length > 50 ? 3 : 1), spellcheck: "false" });
        area.value = text;
        return el("div", { class: "field" }, label, area);
    }));
    showRoute(form);
}

/**
 * Says where the chosen notification is going to arrive.
 * @param {HTMLFormElement} form
 */
function showRoute(form) {
    const notification = chosen(form);
    const isScript = valueOf(form, "mode") === "page" && !isAlwaysEvent(notification);
    fill(find("#push-route"), "Arrives as ", isScript ? "a call of " : "the event ", el("code", {}, isScript ? notification.script : notification.event),
        isAlwaysEvent(notification) ? ", whatever the mode." : ".");
}

/**
 * @param {"Script" | "Event" | "Failed"} way
 * @param {string} name
 * @param {string[]} values
 */
function showArrival(way, name, values) {
    const list = find("#arrivals");
    list.prepend(el("li", { "data-way": way.toLowerCase(), "data-name": name, "data-n": ++arrivalCount },
        el("p", {}, el("span", { class: "badge" }, way), " ", el("code", {}, name)),
        values.map((value) => el("pre", {}, maskCards(formatXml(value))))));
    while (list.children.length > SHOWN_ARRIVALS) {
        list.lastElementChild?.remove();
    }
    find("#arrivals-none").hidden = true;
}

function clearArrivals() {
    fill(find("#arrivals"));
    find("#arrivals-none").hidden = false;
}
