// Every fault that the reference host can have is told in plain words, where a user meets it.

import assert from "node:assert/strict";

import { balances, changesBetween } from "./support/books.mjs";
import { goTo, openView, outcome, pageTest, shown } from "./support/stage.mjs";

const E_FAIL = "0x80004005";
const EVERY_TIME = "0";

async function planFault(page, call, result = E_FAIL, nth = "1") {
    await goTo(page, "Faults");
    await shown(page).getByLabel("A call of Ledgerhall").selectOption(call);
    await shown(page).getByLabel("returns").selectOption(result);
    await shown(page).getByLabel("at its").selectOption(nth);
    await page.getByRole("button", { name: "Plan fault" }).click();
    await page.locator("#faults-planned").getByText(call, { exact: true }).first().waitFor();
}

async function clearFaults(page) {
    await goTo(page, "Faults");
    await page.getByRole("button", { name: "Clear all" }).click();
    await page.locator("#faults-planned").getByText("None. Ledgerhall works as it should.").waitFor();
}

/** The calls that can be planned to fail, of those whose names `isWanted` accepts. */
async function plannable(page, isWanted) {
    const calls = shown(page).getByLabel("A call of Ledgerhall").locator("option");
    await calls.first().waitFor({ state: "attached" });
    return (await calls.evaluateAll((options) => options.map((option) => option.value))).filter(isWanted);
}

/** Has the view of the accounts read them from the books. */
async function showAccounts(page) {
    await goTo(page, "Accounts");
    await page.getByRole("heading", { name: "Accounts" }).waitFor();
}

/** A message in plain words: a sentence, what to do, and the number in small print only. Ledgerhall's own may have one. */
function assertPlain(text, { isOfLedgerhall = false } = {}) {
    const [what, todo] = text.split(/\n+/);
    assert.match(what, /^[A-Z“][^]*[.!]$/);
    assert.doesNotMatch(what, isOfLedgerhall ? /undefined|\[object/ : /0x[0-9A-F]{8}|E_[A-Z]{4}|undefined|\[object/);
    assert.ok(todo && todo.length > 10, `nothing to do about: ${text}`);
}

pageTest("each result of the request processor has words of its own", async ({ page, workbench }) => {
    await openView(page, workbench, "faults");
    const results = await shown(page).getByLabel("returns").locator("option").evaluateAll((options) => options.map((option) => option.value));
    assert.ok(results.length >= 12);
    const said = new Set();
    for (const result of results) {
        await planFault(page, "RequestProcessor.ProcessRequest", result);
        await showAccounts(page);
        const text = await outcome(page, "failed");
        assertPlain(text);
        assert.ok(text.includes(result), `${result} in small print of: ${text}`);
        said.add(text.split("\n")[0]);
    }
    assert.equal(said.size, results.length);
});

pageTest("each call on the way to the request processor is told where it fails", async ({ page, workbench }) => {
    await openView(page, workbench, "faults");
    const words = {
        "ObjectBroker.CreateObjectFromClassId": /^Ledgerhall could not do it and did not say why\./,
        "RequestProcessor.OpenConnection": /^Ledgerhall was not connected when the request came\./,
        "RequestProcessor.BeginSession": /^Ledgerhall does not know the session of the request\./,
        "RequestProcessor.ProcessRequest": /^Ledgerhall could not do it and did not say why\./,
    };
    for (const [call, expected] of Object.entries(words)) {
        await planFault(page, call);
        await showAccounts(page);
        const text = await outcome(page, "failed");
        assertPlain(text);
        assert.match(text, expected, call);
        await clearFaults(page);
    }
});

pageTest("what fails after the answer is there does not matter", async ({ page, workbench }) => {
    await openView(page, workbench, "faults");
    for (const call of ["RequestProcessor.EndSession", "RequestProcessor.CloseConnection"]) {
        await planFault(page, call);
        await showAccounts(page);
        await page.locator("#accounts-list tbody tr").first().waitFor();
        await page.locator("#fault-count").waitFor({ state: "hidden" });
        assert.equal(await page.locator("#view-accounts .message").count(), 0, call);
        await clearFaults(page);
    }
});

pageTest("a company file that cannot be written records nothing and says so", async ({ page, workbench }) => {
    await openView(page, workbench, "faults");
    const calls = await plannable(page, (call) => call.startsWith("CompanyFile."));
    assert.deepEqual(calls.sort(), ["CompanyFile.Commit", "CompanyFile.Open", "CompanyFile.Sync", "CompanyFile.Write"]);
    // The journal stays open as long as the file.
    for (const call of calls.filter((call) => call !== "CompanyFile.Open")) {
        const before = await balances(page);
        await planFault(page, call, "0x8007001D", EVERY_TIME);
        await goTo(page, "Payment");
        await page.getByRole("button", { name: "Take payment" }).click();
        await page.locator("#view-payment > .messages .message.failed").waitFor();
        const text = await page.locator("#view-payment > .messages .message.failed").innerText();
        assertPlain(text, { isOfLedgerhall: true });
        assert.match(text, /Nothing was recorded\./, call);
        await clearFaults(page);
        await goTo(page, "Payment");
        assert.deepEqual(changesBetween(before, await balances(page)), {}, call);
        await page.getByRole("button", { name: "Record it now" }).click();
        assert.match(await outcome(page, "done"), /is in the books\./, call);
        assert.deepEqual(changesBetween(before, await balances(page)), { "Undeposited Funds": 2500, "Accounts Receivable": -2500 });
    }
});

// What the component itself makes good: a record that cannot be read counts as none, and these two it does not call.
const SILENT = ["Application.GetFolder", "DataFileRecord.Delete", "DataFileRecords.Add", "DataFileRecords.Item", "PropertyBag.Read"];

pageTest("a closing time that cannot be stored leaves the batch in the books and is told beside it", async ({ page, workbench }) => {
    await openView(page, workbench, "faults");
    const calls = await plannable(page, (call) => !/^(ObjectBroker|RequestProcessor|CompanyFile)\./.test(call));
    assert.ok(calls.length >= 14);
    for (const call of calls.filter((call) => !SILENT.includes(call))) {
        await planFault(page, call, E_FAIL, EVERY_TIME);
        await goTo(page, "Batch");
        await page.getByRole("button", { name: "Add sample sales" }).click();
        await page.getByRole("button", { name: "Close batch" }).click();
        assert.match(await outcome(page, "done"), /^The batch is in the books: 3 slips/, call);
        const text = await outcome(page, "failed");
        assertPlain(text);
        assert.match(text, /^The time of closing could not be stored in the company file\./, call);
        await clearFaults(page);
    }
});

pageTest("a refused slip stays in the batch, with Ledgerhall's own words", async ({ page, workbench }) => {
    await openView(page, workbench, "batch");
    await page.getByRole("button", { name: "Add sample sales" }).click();
    await page.evaluate(() => {
        const till = JSON.parse(sessionStorage.getItem("terminal-till"));
        till.slips[0].item = "Nothing of the kind";
        sessionStorage.setItem("terminal-till", JSON.stringify(till));
    });
    await page.reload();
    await page.locator("html[data-connection=connected]").waitFor();
    await page.getByRole("button", { name: "Close batch" }).click();
    const text = await outcome(page, "failed");
    assertPlain(text, { isOfLedgerhall: true });
    assert.match(text, /Nothing of the kind/);
    assert.match(text, /1 of 4 requests were refused; the others are in the books\./);
    assert.equal(await page.locator("#batch-slips tbody tr").count(), 1);
});

pageTest("planned faults are counted in the navigation, and gone once they came", async ({ page, workbench }) => {
    await openView(page, workbench, "faults");
    await planFault(page, "RequestProcessor.ProcessRequest", E_FAIL, "1");
    assert.match(await page.locator("#fault-count").innerText(), /^1/);
    await showAccounts(page);
    await outcome(page, "failed");
    await page.locator("#fault-count").waitFor({ state: "hidden" });
});
