// @ts-check
// The page as a whole: its views, and its connection to the workbench.

import { faultsView, refreshFaults } from "./bench/faults.js";
import { isFailure } from "./bench/log_entry.js";
import { LogPanel } from "./bench/log.js";
import { defineReceivers, notificationsView, subscribe } from "./bench/notifications.js";
import { readState } from "./bench/server.js";
import { el, fill, find } from "./parts/dom.js";
import { explain } from "./parts/failures.js";
import { forgetObjects, setRefused } from "./parts/host.js";
import { attempt, messagePlace } from "./parts/messages.js";
import { batchView, refundView } from "./terminal/batch.js";
import { accountsView, journalView, transferView } from "./terminal/books.js";
import { checkView } from "./terminal/check.js";
import { forgetLists } from "./terminal/lists.js";
import { paymentView } from "./terminal/payment.js";

/** @typedef {{show(): void | Promise<void>}} View shows what is in the books now */

const FIRST_VIEW = "payment";
const APPROVED_HOST = "dev.ledgerhall.example";

defineReceivers();

/** @type {Record<string, View>} */
const views = {
    payment: paymentView(),
    refund: refundView(),
    batch: batchView(),
    check: checkView(),
    transfer: transferView(),
    accounts: accountsView(),
    journal: journalView(),
    notifications: notificationsView(),
    faults: faultsView(),
};
const viewMessages = messagePlace();
let isConnected = false;

const log = new LogPanel(noticeEntry);
window.addEventListener("hashchange", openChosenView);
find(".skip").addEventListener("click", (event) => {
    event.preventDefault();
    focusHeading();
});
window.addEventListener("workbenchstate", (event) => {
    event.preventDefault();
    const { state, isNew } = /** @type {CustomEvent<{state: string, isNew: boolean}>} */ (event).detail;
    connectionChanged(state, isNew);
});

openView();
connectionChanged(window.paylodgeWorkbench ? "connecting" : "absent", false);

/**
 * @param {string} state
 * @param {boolean} isNew the workbench is another one than before
 */
function connectionChanged(state, isNew) {
    isConnected = state === "connected";
    document.documentElement.dataset.connection = state;
    find("#connection").textContent = { connected: "Connected", lost: "Not connected", connecting: "Connecting" }[state] ?? "No workbench";
    if (isNew) {
        forgetObjects();
        log.startAnew();
    }
    if (isConnected) {
        forgetLists();
        begin();
    } else if (state === "lost") {
        showBanner("The workbench is not running any more.",
            "Start it again with ./dev workbench. This page connects by itself, and the open batch is kept.");
    } else if (state === "absent") {
        showBanner("This page was not opened from the workbench.", "Run ./dev workbench and open the address that it prints.");
    }
}

/** Sets everything up that needs the connection. */
function begin() {
    window.paylodgeWorkbench?.watch(true);
    void showCompany();
    setRefused(isRefused());
    try {
        subscribe();
        if (isRefused()) {
            showRefused();
        } else {
            fill(find("#banners"));
            void showView();
        }
    } catch (error) {
        const { what, todo, detail } = explain(error);
        showBanner(what, `${todo} ${detail}`.trim());
    }
}

function isRefused() {
    return window.paylodgeWorkbench?.approved === false;
}

function showRefused() {
    document.documentElement.dataset.connection = "refused";
    find("#connection").textContent = "Refused by the site lock";
    const address = `http://${APPROVED_HOST}${location.port ? `:${location.port}` : ""}/${location.hash}`;
    showBanner(`The component's site lock refuses this page: ${location.origin} is no approved site.`,
        "Its calls succeed without doing anything, as for any page that is not approved. Open the workbench at ",
        el("a", { href: address }, address), " instead. A browser finds that name with ",
        el("code", {}, "--host-resolver-rules=\"MAP *.example 127.0.0.1\""), ".");
}

async function showCompany() {
    try {
        const { company, version, architecture } = await readState();
        find("#company").textContent = company.name;
        find("#company").title = `${company.file} · Paylodge ${version} ${architecture}`;
        await refreshFaults();
    } catch {
        // The connection says so itself.
    }
}

/**
 * @param {string} title
 * @param {...import("./parts/dom.js").Child} text
 */
function showBanner(title, ...text) {
    fill(find("#banners"), el("div", { class: "banner" }, el("p", { class: "title" }, title), el("p", {}, ...text)));
}

function currentView() {
    const name = location.hash.slice(1);
    return Object.hasOwn(views, name) ? name : FIRST_VIEW;
}

/** The user chose a view, and goes on there. */
function openChosenView() {
    openView();
    focusHeading();
}

function focusHeading() {
    const heading = find(`#view-${currentView()} h1`);
    heading.tabIndex = -1;
    heading.focus();
}

function openView() {
    const name = currentView();
    for (const other of Object.keys(views)) {
        find(`#view-${other}`).hidden = other !== name;
        const link = find(`nav a[href="#${other}"]`);
        link.toggleAttribute("aria-current", false);
        if (other === name) {
            link.setAttribute("aria-current", "page");
        }
    }
    document.title = `${find(`#view-${name} h1`).textContent} · Ledgerhall workbench`;
    find(`#view-${name} h1`).after(viewMessages);
    if (isConnected && !isRefused()) {
        void showView();
    }
}

/** Shows what the current view has of the books. */
function showView() {
    return attempt(viewMessages, null, () => views[currentView()].show());
}

let isRefreshPlanned = false;

/**
 * A call may have used up a planned fault, also one that succeeded in spite of it.
 * @param {WorkbenchLogEntry} entry
 */
function noticeEntry(entry) {
    const mayConcern = entry.kind === "fault" || isFailure(entry) || !find("#fault-count").hidden;
    if (mayConcern && !isRefreshPlanned) {
        isRefreshPlanned = true;
        setTimeout(() => {
            isRefreshPlanned = false;
            refreshFaults().catch(() => {});
        }, 200);
    }
}
