// What a page keeps through reloads, beside other pages, and while the workbench is gone.

import assert from "node:assert/strict";

import { balances, changesBetween, hostRequest } from "./support/books.mjs";
import { goTo, openView, outcome, pageTest, shown } from "./support/stage.mjs";

async function planFault(page, call, nth = 1) {
    await page.evaluate(([call, nth]) => window.paylodgeWorkbench.request("POST", "/workbench/faults", { call, hresult: -2147467259, nth }), [call, nth]);
}

async function state(page) {
    return page.evaluate(() => window.paylodgeWorkbench.request("GET", "/workbench/state"));
}

pageTest("a reload in the middle keeps the open batch, and ends the objects of before", async ({ page, workbench }) => {
    await openView(page, workbench, "batch");
    await page.getByRole("button", { name: "Add sample sales" }).click();
    const objects = (await state(page)).objects;
    for (let i = 0; i < 3; ++i) {
        await page.reload();
        await page.locator("html[data-connection=connected]").waitFor();
    }
    assert.equal(await page.locator("#batch-slips tbody tr").count(), 3);
    await page.waitForFunction(async (objects) => (await window.paylodgeWorkbench.request("GET", "/workbench/state")).objects <= objects, objects);
    await page.getByRole("button", { name: "Close batch" }).click();
    assert.match(await outcome(page, "done"), /^The batch is in the books: 3 slips/);
});

pageTest("a reload in the middle of a payment leaves the reader ready for the next", async ({ page, workbench }) => {
    await openView(page, workbench);
    await shown(page).getByLabel("Stop before each step").check();
    await page.getByRole("button", { name: "Take payment" }).click();
    for (let step = 0; step < 5; ++step) {
        await page.locator(`#reader-steps li:nth-child(${step + 1})[data-state=running]`).waitFor();
        await page.getByRole("button", { name: "Next step" }).click();
    }
    await page.reload();
    await page.locator("html[data-connection=connected]").waitFor();
    await page.getByRole("button", { name: "Take payment" }).click();
    assert.match(await outcome(page, "done"), /is in the books\./);
});

pageTest("an approved payment that cannot be recorded is kept, and recorded once", async ({ page, workbench }) => {
    await openView(page, workbench);
    const before = await balances(page);
    await planFault(page, "RequestProcessor.ProcessRequest");
    await page.getByRole("button", { name: "Take payment" }).click();
    await page.locator("#view-payment > .messages .message.failed").waitFor();
    const held = page.locator(".held .message");
    assert.match(await held.innerText(), /^The bank approved 25\.00 of Eastgate Library, and it is not in the books yet\./);
    assert.deepEqual(changesBetween(before, await balances(page)), {});

    await page.reload();
    await page.locator("html[data-connection=connected]").waitFor();
    await held.getByRole("button", { name: "Record it now" }).click();
    assert.match(await outcome(page, "done"), /^25\.00 of Eastgate Library is in the books\./);
    assert.equal(await held.count(), 0);
    assert.deepEqual(changesBetween(before, await balances(page)), { "Undeposited Funds": 2500, "Accounts Receivable": -2500 });
});

pageTest("a payment whose answer got lost is not recorded twice", async ({ page, workbench }) => {
    await openView(page, workbench);
    const before = await balances(page);
    await page.evaluate(() => {
        const original = window.ActiveXObject;
        window.ActiveXObject = function (name) {
            const lh = new original(name);
            return new Proxy(lh, {
                get(target, member) {
                    if (member !== "CreatePaymentTxn") {
                        return typeof target[member] === "function" ? target[member].bind(target) : target[member];
                    }
                    return (...values) => {
                        target[member](...values);
                        throw Object.assign(new Error("lost"), { number: -2147467259 });
                    };
                },
            });
        };
    });
    await page.evaluate(() => window.dispatchEvent(new CustomEvent("workbenchstate", { detail: { state: "connected", isNew: true }, cancelable: true })));
    await page.getByRole("button", { name: "Take payment" }).click();
    await page.locator("#view-payment > .messages .message.failed").waitFor();
    await page.getByRole("button", { name: "Record it now" }).click();
    assert.match(await outcome(page, "done"), /is in the books\./);
    assert.deepEqual(changesBetween(before, await balances(page)), { "Undeposited Funds": 2500, "Accounts Receivable": -2500 });
});

pageTest("a batch that is in the books already is not sent again", async ({ page, workbench }) => {
    await openView(page, workbench, "batch");
    await page.getByRole("button", { name: "Add sample sales" }).click();
    const kept = await page.evaluate(() => sessionStorage.getItem("terminal-till"));
    await page.getByRole("button", { name: "Close batch" }).click();
    await outcome(page, "done");
    const before = await balances(page);
    await page.evaluate((kept) => sessionStorage.setItem("terminal-till", kept), kept);
    await page.reload();
    await page.locator("html[data-connection=connected]").waitFor();
    assert.equal(await page.locator("#batch-slips tbody tr").count(), 3);
    await page.getByRole("button", { name: "Close batch" }).click();
    assert.match(await outcome(page, "done"), /^Everything of this batch was in the books already\./);
    assert.equal(await page.locator("#batch-slips tbody tr").count(), 0);
    assert.deepEqual(changesBetween(before, await balances(page)), {});
});

pageTest("two pages at once work in the same books, each with its own batch", async ({ page, context, workbench }) => {
    await openView(page, workbench, "batch");
    const second = await context.newPage();
    await openView(second, workbench, "batch");
    await page.getByRole("button", { name: "Add sample sales" }).click();
    assert.equal(await second.locator("#batch-slips tbody tr").count(), 0);
    await second.getByRole("button", { name: "Add sample sales" }).click();
    const before = await balances(page);
    await Promise.all([page, second].map((each) => each.getByRole("button", { name: "Close batch" }).click()));
    for (const each of [page, second]) {
        assert.match(await outcome(each, "done"), /^The batch is in the books: 3 slips/);
    }
    assert.equal(changesBetween(before, await balances(page))["Credit Card Holding Account"], 2 * 12550);
    const pages = (await state(page)).pages.filter((each) => each.connected);
    assert.equal(pages.length, 2);
});

pageTest("a push reaches the page that subscribed last", async ({ page, context, workbench }) => {
    await openView(page, workbench, "notifications");
    const second = await context.newPage();
    await openView(second, workbench, "notifications");
    await shown(second).getByLabel(/event of the control/).check();
    await shown(second).getByLabel("Notification", { exact: true }).selectOption("SetTransactionID");
    await second.getByRole("button", { name: "Push", exact: true }).click();
    await second.locator("#arrivals li").first().waitFor();
    assert.equal(await page.locator("#arrivals li").count(), 0);
    await second.close();
    await shown(page).getByLabel("This page subscribes to notifications").uncheck();
    await shown(page).getByLabel("This page subscribes to notifications").check();
    await page.getByRole("button", { name: "Push", exact: true }).click();
    await page.locator("#arrivals li").first().waitFor();
});

pageTest("the page says that the workbench is gone, keeps its batch, and goes on when it is back", async ({ page, workbench }) => {
    await openView(page, workbench, "batch");
    await page.getByRole("button", { name: "Add sample sales" }).click();
    await workbench.stop();
    try {
        await page.locator("html[data-connection=lost]").waitFor();
        assert.match(await page.getByRole("alert").innerText(), /^The workbench is not running any more\.\s+Start it again with \.\/dev workbench\./);
        await page.getByRole("button", { name: "Close batch" }).click();
        assert.match(await outcome(page, "failed"), /^The workbench is not running any more\./);
        assert.equal(await page.locator("#batch-slips tbody tr").count(), 3);
    } finally {
        await workbench.start();
    }
    await page.locator("html[data-connection=connected]").waitFor();
    assert.equal(await page.getByRole("alert").innerText(), "");
    await page.getByRole("button", { name: "Close batch" }).click();
    assert.match(await outcome(page, "done"), /^The batch is in the books: 3 slips/);
    await goTo(page, "Notifications");
    await shown(page).getByLabel(/event of the control/).check();
    await page.getByRole("button", { name: "Push", exact: true }).click();
    await page.locator("#arrivals li").first().waitFor();
    await goTo(page, "Payment");
    await page.getByRole("button", { name: "Take payment" }).click();
    assert.match(await outcome(page, "done"), /is in the books\./);
    assert.match(await hostRequest(page, '<SalesReceiptQueryRq requestID="1"/>'), /SalesReceiptRet/);
});

pageTest("a browser that dies leaves no objects behind", async ({ page, context, workbench }) => {
    await openView(page, workbench);
    const second = await context.newPage();
    await openView(second, workbench);
    const client = await context.newCDPSession(second);
    const gone = new Promise((resolve) => second.once("crash", resolve));
    client.send("Page.crash").catch(() => {});
    await gone;
    await page.waitForFunction(async () => {
        const { pages, objects } = await window.paylodgeWorkbench.request("GET", "/workbench/state");
        const here = pages.filter((each) => each.connected);
        return here.length === 1 && objects === here[0].objects;
    });
});
