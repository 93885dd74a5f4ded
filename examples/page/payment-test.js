// An end-to-end test of the page against the real component and real books: docs/workbench.md says how it is run.
var assert = require("node:assert");
var { test } = require("node:test");
var { chromium } = require("playwright-core");

test("a payment is recorded in the books", async () => {
    const browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: ["--no-sandbox", "--host-resolver-rules=MAP *.example 127.0.0.1"] });
    const page = await browser.newPage();
    await page.goto(process.env.WORKBENCH || "http://dev.ledgerhall.example:8137/");
    await page.getByLabel("Amount").fill("17.25");
    await page.getByRole("button", { name: "Record payment" }).click();
    assert.match(await page.getByRole("status").textContent(), /^17\.25 of Eastgate Library, recorded as T-\d+$/);
    await browser.close();
});
