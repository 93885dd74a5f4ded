// What the host pushes arrives in the page: as script in a named browser instance, and as events without one.

import assert from "node:assert/strict";

import { NOTIFICATIONS, isAlwaysEvent } from "../page/bench/notification_table.js";
import { openView, outcome, pageTest, shown } from "./support/stage.mjs";

const AS_SCRIPT = /script in this page/;
const AS_EVENT = /event of the control/;

async function deliverAs(page, mode) {
    await shown(page).getByLabel(mode).check();
    const wanted = mode === AS_SCRIPT ? "page" : "none";
    await page.waitForFunction(async (wanted) => (await window.paylodgeWorkbench.request("GET", "/workbench/state")).browser.mode === wanted, wanted);
}

async function push(page, method) {
    await shown(page).getByLabel("Notification", { exact: true }).selectOption(method);
    await page.getByRole("button", { name: "Push", exact: true }).click();
}

/** Name and values of the newest arrival, once there are `count` of them. */
async function newestArrival(page, count = 1) {
    await page.waitForFunction((count) => document.querySelectorAll("#arrivals li").length >= count, count);
    return page.locator("#arrivals li").first().evaluate((row) => ({
        way: row.dataset.way,
        name: row.dataset.name,
        values: [...row.querySelectorAll("pre")].map((value) => value.textContent.replace(/>\s+</g, "><")),
    }));
}

const flat = (value) => String(value).replace(/>\s+</g, "><");

for (const notification of NOTIFICATIONS) {
    const { method, script, event, arguments: values } = notification;

    pageTest(`${method} arrives as ${isAlwaysEvent(notification) ? "an event even where a browser is named" : "script"}`, async ({ page, workbench }) => {
        await openView(page, workbench, "notifications");
        await deliverAs(page, AS_SCRIPT);
        await push(page, method);
        const arrival = await newestArrival(page);
        assert.equal(arrival.way, isAlwaysEvent(notification) ? "event" : "script");
        assert.equal(arrival.name, isAlwaysEvent(notification) ? event : `${script}(…)`);
        assert.deepEqual(arrival.values.slice(0, values.length), values.map(({ sample }) => flat(sample)));
    });

    pageTest(`${method} arrives as the event ${event}`, async ({ page, workbench }) => {
        await openView(page, workbench, "notifications");
        await deliverAs(page, AS_EVENT);
        await push(page, method);
        const arrival = await newestArrival(page);
        assert.equal(arrival.way, "event");
        assert.equal(arrival.name, event);
        assert.deepEqual(arrival.values.slice(0, values.length), values.map(({ sample }) => flat(sample)));
    });
}

pageTest("a push without a subscriber is told, and arrives once the page subscribes", async ({ page, workbench }) => {
    await openView(page, workbench, "notifications");
    const box = shown(page).getByLabel("This page subscribes to notifications");
    await box.uncheck();
    await push(page, "SetTransactionID");
    assert.match(await outcome(page, "failed"), /^SetTransactionID reached nobody\.\s+No page subscribes/);
    await box.check();
    await push(page, "SetTransactionID");
    assert.match(await outcome(page, "done"), /SetTransactionID was delivered/);
    await newestArrival(page);
});

pageTest("line feeds and quotes arrive as each way of escaping has them", async ({ page, workbench }) => {
    await openView(page, workbench, "notifications");
    await deliverAs(page, AS_SCRIPT);
    const values = page.locator("#push-arguments textarea").first();
    await shown(page).getByLabel("Notification", { exact: true }).selectOption("SetReconFeeData");
    await values.fill("first\nsecond 'x' \\t ½");
    await page.getByRole("button", { name: "Push", exact: true }).click();
    // A backslash of the data is one of the script's text, too.
    assert.deepEqual((await newestArrival(page)).values, ["first\nsecond 'x' \t ½"]);
    await shown(page).getByLabel("Notification", { exact: true }).selectOption("SetCustomerSearchResult");
    await values.fill('He said "hi"');
    await page.getByRole("button", { name: "Push", exact: true }).click();
    assert.deepEqual((await newestArrival(page, 2)).values, ['He said "hi"']);
});

pageTest("a pushed script that the page cannot run is shown as one that failed", async ({ page, workbench }) => {
    await openView(page, workbench, "notifications");
    await deliverAs(page, AS_SCRIPT);
    await shown(page).getByLabel("Notification", { exact: true }).selectOption("SetReconFeeData");
    await page.locator("#push-arguments textarea").first().fill('a "quote" in newline mode');
    await page.getByRole("button", { name: "Push", exact: true }).click();
    assert.equal((await newestArrival(page)).way, "failed");
}, { errors: ["SyntaxError", "missing )"] });

pageTest("all twelve arrive in the order in which they were pushed", async ({ page, workbench }) => {
    await openView(page, workbench, "notifications");
    await deliverAs(page, AS_EVENT);
    await page.getByRole("button", { name: "Push all twelve" }).click();
    await newestArrival(page, NOTIFICATIONS.length);
    const names = await page.locator("#arrivals li").evaluateAll((rows) => rows.map((row) => row.dataset.name).reverse());
    assert.deepEqual(names, NOTIFICATIONS.map(({ event }) => event));
});
