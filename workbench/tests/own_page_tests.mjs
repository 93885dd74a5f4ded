// A page developer's own folder, unchanged: the example of examples/page, and its own end-to-end test.

import assert from "node:assert/strict";
import { execFile } from "node:child_process";
import { join } from "node:path";
import { promisify } from "node:util";

import { balances, changesBetween } from "./support/books.mjs";
import { TOP, thirdParty } from "./support/places.mjs";
import { pageTest, prepareStage } from "./support/stage.mjs";

const FOLDER = join(TOP, "examples", "page");
prepareStage({ page: FOLDER });

pageTest("the page of a folder works with the component", async ({ page, workbench }) => {
    await page.goto(workbench.address);
    assert.deepEqual(await page.locator("#accounts li").allInnerTexts(),
        ["Riverside Checking", "Riverside Savings", "Card Settlement", "Petty Cash"]);
    const before = await balances(page);
    await page.getByLabel("Amount").fill("12.5");
    await page.getByRole("button", { name: "Record payment" }).click();
    assert.match(await page.getByRole("status").textContent(), /^12\.5 of Eastgate Library, recorded as T-\d+$/);
    assert.deepEqual(changesBetween(before, await balances(page)), { "Undeposited Funds": 1250, "Accounts Receivable": -1250 });
});

pageTest("its object element is the control", async ({ page, workbench }) => {
    await page.goto(workbench.address);
    const state = await page.evaluate(() => {
        const reader = document.getElementById("reader");
        reader.InitializeSession();
        reader.ConnectDevice();
        return [reader.EMVIsDeviceConnected(), JSON.parse(reader.EMVProcessorResult()).state];
    });
    assert.deepEqual(state, [true, "Idle"]);
});

pageTest("a control goes with its element, and comes with one that script makes", async ({ page, workbench }) => {
    await page.goto(workbench.address);
    await page.locator("html[data-workbench-state=connected]").waitFor();
    const objects = () => page.evaluate(async () => {
        const { pages } = await window.paylodgeWorkbench.request("GET", "/workbench/state");
        return pages.find((each) => each.page === window.paylodgeWorkbench.page).objects;
    });
    assert.equal(await objects(), 2);
    await page.evaluate(() => document.getElementById("reader").remove());
    await page.waitForFunction(async () => {
        const { pages } = await window.paylodgeWorkbench.request("GET", "/workbench/state");
        return pages.find((each) => each.page === window.paylodgeWorkbench.page).objects === 1;
    });
    const answer = await page.evaluate(() => {
        const made = document.createElement("object");
        made.setAttribute("classid", "clsid:00A0CCCE-89E6-4779-AACD-E774651CB5AD");
        document.body.append(made);
        return made.GetLHUserData("UserName");
    });
    assert.equal(answer, "Robin Vale");
    assert.equal(await objects(), 2);
});

for (const [instance, way] of [["page", "script"], ["none", "an event"]]) {
    pageTest(`its own handlers get what the host pushes as ${way}`, async ({ page, workbench }) => {
        await page.goto(workbench.address);
        await page.locator("html[data-workbench-state=connected]").waitFor();
        await page.evaluate(async (instance) => {
            await window.paylodgeWorkbench.request("POST", "/workbench/browser", { instance });
            await window.paylodgeWorkbench.request("POST", "/workbench/push", { method: "SetReconFeeData", arguments: ["<Fee>2.50</Fee>\n"] });
        }, instance);
        await page.waitForFunction(() => document.getElementById("fees").textContent === "<Fee>2.50</Fee>\n");
    });
}

pageTest("a failure is an error with the number of the HRESULT", async ({ page, workbench }) => {
    await page.goto(workbench.address);
    await page.locator("html[data-workbench-state=connected]").waitFor();
    await page.evaluate(() => window.paylodgeWorkbench.request("POST", "/workbench/faults",
        { call: "RequestProcessor.ProcessRequest", hresult: -2147024891, nth: 1 }));
    await page.getByRole("button", { name: "Record payment" }).click();
    assert.equal(await page.getByRole("status").textContent(), "Ledgerhall could not record it: -2147467259");
});

pageTest("a page that is not approved is told so, by a bar of the workbench", async ({ page, workbench }) => {
    await page.goto(`http://127.0.0.1:${workbench.port}/`);
    await page.locator("html[data-workbench-state=refused]").waitFor();
    assert.notEqual(await page.getByRole("alert").innerText(), "");
    assert.equal(await page.locator("#accounts li").count(), 0);
});

pageTest("the end-to-end test of the page itself runs against the workbench", async ({ workbench }) => {
    const run = promisify(execFile);
    const environment = { ...process.env, WORKBENCH: workbench.address, NODE_PATH: thirdParty() };
    delete environment.NODE_TEST_CONTEXT;
    const { stdout } = await run("node", ["--test-reporter=tap", "--test-reporter-destination=stdout", join(FOLDER, "payment-test.js")], { env: environment });
    assert.match(stdout, /ok 1 - a payment is recorded in the books/);
});
