// A working day at the terminal, by clicks: what the page says, and what is in the books afterwards.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";

import { balances, changesBetween, hostRequest, journal, logEntries } from "./support/books.mjs";
import { clearLog, goTo, openView, outcome, pageTest, shown } from "./support/stage.mjs";

const WHOLE_CARD_NUMBER = "0000000000001119";

async function takePayment(page, { amount = "25.00", record = "now, field by field", answer = "approve it" } = {}) {
    await shown(page).getByLabel("Amount").fill(amount);
    await shown(page).getByLabel("The bank will").selectOption(answer);
    await shown(page).getByLabel(record).check();
    await page.getByRole("button", { name: "Take payment" }).click();
}

function steps(page) {
    return page.locator("#reader-steps li");
}

pageTest("a card payment is taken step by step and is in the books afterwards", async ({ page, workbench }) => {
    await openView(page, workbench);
    const before = await balances(page);
    await takePayment(page, { amount: "25.00" });
    const said = await outcome(page, "done");
    assert.match(said, /^25\.00 of Eastgate Library is in the books\./);
    const states = await steps(page).evaluateAll((rows) => rows.map((row) => row.dataset.state));
    assert.deepEqual(states, Array(11).fill("done"));
    assert.match(await steps(page).nth(4).innerText(), /card ending in 1119/);
    assert.deepEqual(changesBetween(before, await balances(page)), { "Undeposited Funds": 2500, "Accounts Receivable": -2500 });
    const number = said.match(/P-[0-9]{6}-[0-9]{6}-[A-Z2-9]{3}/)[0];
    const [newest] = await journal(page);
    assert.equal(newest.number, number);
    assert.equal(newest.type, "ReceivePayment");
});

pageTest("a payment is recorded by the page's own request as well", async ({ page, workbench }) => {
    await openView(page, workbench);
    const before = await balances(page);
    await takePayment(page, { amount: "10.5", record: "now, by a request of the page" });
    assert.match(await outcome(page, "done"), /^10\.50 of Eastgate Library is in the books\./);
    assert.deepEqual(changesBetween(before, await balances(page)), { "Undeposited Funds": 1050, "Accounts Receivable": -1050 });
    const calls = (await logEntries(page)).map((entry) => entry.member);
    assert.ok(calls.includes("SavePaymentTxn"));
});

pageTest("a declined card leaves the books alone and the reader ready", async ({ page, workbench }) => {
    await openView(page, workbench);
    const before = await balances(page);
    await takePayment(page, { answer: "decline it" });
    assert.match(await outcome(page, "failed"), /^The bank declined the card\.\s+Nothing was recorded\./);
    assert.equal(await steps(page).nth(6).getAttribute("data-state"), "failed");
    assert.deepEqual(changesBetween(before, await balances(page)), {});
    await takePayment(page, { amount: "1.00" });
    assert.match(await outcome(page, "done"), /^1\.00 of/);
});

pageTest("a payment is cancelled before its next step", async ({ page, workbench }) => {
    await openView(page, workbench);
    const before = await balances(page);
    await shown(page).getByLabel("Stop before each step").check();
    await page.getByRole("button", { name: "Take payment" }).click();
    for (let step = 0; step < 4; ++step) {
        await steps(page).nth(step).and(page.locator("[data-state=running]")).waitFor();
        await page.getByRole("button", { name: "Next step" }).click();
    }
    await steps(page).nth(4).and(page.locator("[data-state=running]")).waitFor();
    await page.getByRole("button", { name: "Cancel payment" }).click();
    assert.match(await outcome(page, "failed"), /^The payment was cancelled\. Nothing was charged or recorded\./);
    assert.deepEqual(changesBetween(before, await balances(page)), {});
});

pageTest("an amount that is none is told before the reader is asked", async ({ page, workbench }) => {
    await openView(page, workbench);
    for (const amount of ["abc", "0", "-5", "1.234"]) {
        await takePayment(page, { amount });
        assert.match(await outcome(page, "failed"), /^The amount has to be a number above zero/);
    }
    assert.equal(await steps(page).first().getAttribute("data-state"), "waiting");
});

pageTest("a refund is recorded as a net refund of the card", async ({ page, workbench }) => {
    await openView(page, workbench, "refund");
    const before = await balances(page);
    await shown(page).getByLabel("Amount").fill("12.50");
    await page.getByRole("button", { name: "Refund" }).click();
    assert.match(await outcome(page, "done"), /^12\.50 refunded to Visa\./);
    assert.equal(changesBetween(before, await balances(page))["Accounts Receivable"], -1250);
    const [newest] = await journal(page);
    assert.equal(newest.type, "CreditMemo");
    assert.equal(newest.name, "Paylodge Net Refund");
    assert.equal(newest.memo, "Visa net refund: Returned goods");
});

for (const card of ["MasterCard", "American Express", "Discover"]) {
    pageTest(`a refund to ${card} finds the item that the component makes for it`, async ({ page, workbench }) => {
        await openView(page, workbench, "refund");
        await shown(page).getByLabel("Card").selectOption(card);
        await page.getByRole("button", { name: "Refund" }).click();
        assert.match(await outcome(page, "done"), new RegExp(`^12\\.50 refunded to ${card}\\.`));
    });
}

pageTest("sales and refunds wait for the batch, which is closed by one CreateTxns", async ({ page, workbench }) => {
    await openView(page, workbench);
    const before = await balances(page);
    await takePayment(page, { amount: "40.00", record: "as a sale, when the batch is closed" });
    assert.match(await outcome(page, "done"), /is in the open batch/);
    await goTo(page, "Refund");
    await shown(page).getByLabel("Amount").fill("5.00");
    await shown(page).getByLabel("when the batch is closed").check();
    await page.getByRole("button", { name: "Refund" }).click();
    assert.match(await outcome(page, "done"), /is in the open batch/);
    assert.deepEqual(changesBetween(before, await balances(page)), {});

    await goTo(page, "Batch");
    assert.equal(await page.locator("#batch-slips tfoot td.num").innerText(), "35.00");
    await page.evaluate(() => window.paylodgeWorkbench.request("DELETE", "/workbench/log"));
    await page.getByRole("button", { name: "Close batch" }).click();
    const said = await outcome(page, "done");
    assert.match(said, /^The batch is in the books: 2 slips, in one document\./);
    assert.match(said, /Deposit to Credit Card Holding Account/);
    const changes = changesBetween(before, await balances(page));
    assert.equal(changes["Credit Card Holding Account"], 4000);
    assert.equal(changes["Undeposited Funds"], undefined);
    assert.equal(changes["Accounts Receivable"], -500);
    const batches = (await logEntries(page)).filter((entry) => entry.member === "CreateTxns");
    assert.equal(batches.length, 1);
    assert.match(await page.locator("#batch-slips").innerText(), /^The batch is empty\./);
    assert.match(await page.locator("#batch-since").innerText(), /^The last batch of this terminal was closed at 20/);
});

pageTest("an empty batch is not sent", async ({ page, workbench }) => {
    await openView(page, workbench, "batch");
    await page.getByRole("button", { name: "Close batch" }).click();
    assert.match(await outcome(page, "note"), /^The batch is empty\./);
});

pageTest("a slip is taken out of the batch", async ({ page, workbench }) => {
    await openView(page, workbench, "batch");
    await page.getByRole("button", { name: "Add sample sales" }).click();
    await page.getByRole("button", { name: /^Remove S-/ }).first().click();
    assert.equal(await page.locator("#batch-slips tbody tr").count(), 2);
    assert.equal(await page.locator("#batch-slips tfoot td.num").innerText(), "25.50");
});

pageTest("a scanned check is matched to its customer and invoice, and recorded", async ({ page, workbench }) => {
    await openView(page, workbench, "check");
    const open = await hostRequest(page, '<InvoiceQueryRq requestID="1"><EntityFilter><FullName>Smith Co</FullName></EntityFilter><PaidStatus>NotPaidOnly</PaidStatus></InvoiceQueryRq>');
    const [, number] = open.match(/<RefNumber>([^<]*)<\/RefNumber>/);
    const [, amount] = open.match(/<BalanceRemaining>([^<]*)<\/BalanceRemaining>/);
    await shown(page).getByLabel("Payor, as printed on the check").fill("  smith CO ");
    await shown(page).getByLabel("Amount").fill(amount);
    await page.getByRole("button", { name: "Find customer and invoices" }).click();
    const match = page.locator("#check-match");
    await match.getByRole("heading", { name: "Smith Co" }).waitFor();
    assert.match(await match.innerText(), new RegExp(`The check pays invoice ${number}\\.`));
    const before = await balances(page);
    await match.getByRole("button", { name: "Record the check" }).click();
    assert.match(await outcome(page, "done"), new RegExp(`^Check 2041 of Smith Co is in the books[^]*Invoice ${number}: `));
    const cents = Math.round(Number(amount) * 100);
    assert.deepEqual(changesBetween(before, await balances(page)), { "Undeposited Funds": cents, "Accounts Receivable": -cents });
});

pageTest("a payor that nobody is named like is told", async ({ page, workbench }) => {
    await openView(page, workbench, "check");
    await shown(page).getByLabel("Payor, as printed on the check").fill("Nobody & Daughters");
    await page.getByRole("button", { name: "Find customer and invoices" }).click();
    assert.match(await outcome(page, "note"), /^No customer is named “Nobody & Daughters”\./);
});

pageTest("money is moved between accounts, with both balances before and after", async ({ page, workbench }) => {
    await openView(page, workbench, "transfer");
    const before = await balances(page);
    await shown(page).getByLabel("From").selectOption("Riverside Savings");
    await shown(page).getByLabel("To", { exact: true }).selectOption("Riverside Checking");
    await shown(page).getByLabel("Amount").fill("1,000.00");
    await page.getByRole("button", { name: "Transfer" }).click();
    const said = await outcome(page, "done");
    assert.match(said, /^1,000\.00 moved to Riverside Checking\./);
    assert.match(said, /Riverside Savings\s+50,000\.00\s+49,000\.00/);
    assert.deepEqual(changesBetween(before, await balances(page)), { "Riverside Savings": -100000, "Riverside Checking": 100000 });
    await shown(page).getByLabel("To", { exact: true }).selectOption("Riverside Savings");
    await page.getByRole("button", { name: "Transfer" }).click();
    assert.match(await outcome(page, "failed"), /^Choose two different accounts\./);
});

pageTest("accounts show the balances of the books, and no whole card number", async ({ page, workbench }) => {
    await openView(page, workbench, "accounts");
    const known = await balances(page);
    const row = page.getByRole("row", { name: /Riverside Checking/ });
    await row.waitFor();
    const balance = Number(known["Riverside Checking"]).toLocaleString("en-US", { minimumFractionDigits: 2 });
    assert.ok((await row.innerText()).includes(balance));
    const text = await page.locator("#accounts-list").innerText();
    assert.doesNotMatch(text, /4000000000000002/);
    assert.match(text, /•••• 0002/);
    await shown(page).getByLabel("Type").selectOption("Bank");
    await page.getByRole("row", { name: /Business Card/ }).waitFor({ state: "detached" });
    assert.equal(await page.locator("#accounts-list tbody tr").count(), 4);
});

pageTest("the journal shows each transaction with its postings", async ({ page, workbench }) => {
    await openView(page, workbench, "transfer");
    await shown(page).getByLabel("From").selectOption("Riverside Savings");
    await shown(page).getByLabel("To", { exact: true }).selectOption("Petty Cash");
    await shown(page).getByLabel("Amount").fill("3.21");
    await shown(page).getByLabel("Memo").fill("Stamps & co");
    await page.getByRole("button", { name: "Transfer" }).click();
    await outcome(page, "done");
    await goTo(page, "Journal");
    const newest = page.locator("#journal-list tbody").first();
    await newest.waitFor();
    assert.match(await newest.innerText(), /Deposit[^]*Stamps & co[^]*Petty Cash\s+3\.21[^]*Riverside Savings\s+3\.21/);
});

pageTest("the log shows each call with its LHXML, can be searched, and is saved on request", async ({ page, workbench }) => {
    await openView(page, workbench, "accounts");
    await page.locator("#accounts-list tbody tr").first().waitFor();
    await clearLog(page);
    await shown(page).getByLabel("Type").selectOption("Bank");
    const entry = page.locator("#log-entries li").filter({ hasText: 'GetBalanceForAccountType("Bank")' }).first();
    await entry.locator("summary").click();
    assert.match(await entry.innerText(), /S_OK/);
    const requests = entry.getByLabel("LHXML to Ledgerhall");
    assert.match(await requests.innerText(), /\n {4}<AccountQueryRq requestID="[^"]*">\n {6}<ActiveStatus>ActiveOnly<\/ActiveStatus>/);
    assert.match(await entry.getByLabel("LHXML from Ledgerhall").innerText(), /<FullName>Riverside Checking<\/FullName>/);

    await page.getByLabel("Search the log").fill("getbalance");
    await page.waitForFunction(() => Array.from(document.querySelectorAll("#log-entries .what"), (title) => title.textContent)
        .every((title) => title.startsWith("GetBalance")));
    for (const title of await page.locator("#log-entries .what").allInnerTexts()) {
        assert.match(title, /GetBalanceForAccountType/);
    }
    const [download] = await Promise.all([page.waitForEvent("download"), page.getByRole("button", { name: "Save" }).click()]);
    const { entries } = JSON.parse(readFileSync(await download.path(), "utf-8"));
    assert.ok(entries.some((saved) => saved.member === "GetBalanceForAccountType" && saved.traffic.length === 1));
});

pageTest("no whole card number is on screen or in the log", async ({ page, workbench }) => {
    await openView(page, workbench);
    await takePayment(page);
    await outcome(page, "done");
    for (const summary of await page.locator("#log-entries summary").all()) {
        await summary.click();
    }
    assert.ok(!(await page.locator("body").textContent()).includes(WHOLE_CARD_NUMBER));
    const leaking = (await logEntries(page)).filter((entry) => JSON.stringify(entry).includes(WHOLE_CARD_NUMBER));
    assert.deepEqual(leaking, []);
    assert.ok(!(await page.evaluate(() => JSON.stringify({ ...sessionStorage, ...localStorage }))).includes(WHOLE_CARD_NUMBER));
});
