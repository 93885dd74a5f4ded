// The page for everybody: by keyboard, with a screen reader, enlarged, light and dark.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";

import { thirdParty } from "./support/places.mjs";
import { goTo, openView, outcome, pageTest, shown } from "./support/stage.mjs";

const AXE = readFileSync(thirdParty("axe-core", "axe.min.js"), "utf-8");
const VIEWS = ["payment", "refund", "batch", "check", "transfer", "accounts", "journal", "notifications", "faults"];

/**
 * What axe finds wrong, with the elements that are concerned. The entries of the log are the same beside every view and
 * take most of the time, so that one view with them is enough.
 */
async function findings(page, view) {
    await page.evaluate(AXE);
    const context = view === "payment" ? { include: ["html"] } : { include: ["html"], exclude: ["#log-entries > li"] };
    const { violations } = await page.evaluate((context) => window.axe.run(context, { resultTypes: ["violations"] }), context);
    return violations.map(({ id, nodes }) => `${id}: ${nodes.map((node) => node.html).join(" ")}`);
}

/** Brings a view into a state with something to see in it. */
const FILLED = {
    payment: async (page) => {
        await page.getByRole("button", { name: "Take payment" }).click();
        await outcome(page, "done");
        await page.locator("#log-entries summary").first().click();
    },
    refund: async (page) => {
        await shown(page).getByLabel("Amount").fill("none");
        await page.getByRole("button", { name: "Refund" }).click();
        await outcome(page, "failed");
    },
    batch: async (page) => {
        await page.getByRole("button", { name: "Add sample sales" }).click();
        await page.getByRole("button", { name: "Close batch" }).click();
        await outcome(page, "done");
        await page.getByRole("button", { name: "Add sample sales" }).click();
    },
    check: async (page) => {
        await page.getByRole("button", { name: "Find customer and invoices" }).click();
        await page.locator("#check-match h2").waitFor();
    },
    transfer: async (page) => {
        await page.getByRole("button", { name: "Transfer" }).click();
        await outcome(page, "done");
    },
    accounts: async (page) => page.locator("#accounts-list tbody tr").first().waitFor(),
    journal: async (page) => page.locator("#journal-list tbody").first().waitFor(),
    notifications: async (page) => {
        await page.getByRole("button", { name: "Push all twelve" }).click();
        await page.locator("#arrivals li").nth(11).waitFor();
    },
    faults: async (page) => {
        await shown(page).getByLabel("A call of Ledgerhall").selectOption("Application.GetFolder");
        await page.getByRole("button", { name: "Plan fault" }).click();
        await page.locator("#faults-planned table").waitFor();
    },
};

for (const colorScheme of ["light", "dark"]) {
    pageTest(`axe finds nothing in any view, ${colorScheme}`, async ({ page, workbench }) => {
        for (const view of VIEWS) {
            await openView(page, workbench, view);
            await FILLED[view](page);
            assert.deepEqual(await findings(page, view), [], view);
        }
    }, { options: { colorScheme, reducedMotion: "reduce" } });
}

async function expectEveryViewToFit({ page, workbench }) {
    for (const view of VIEWS) {
        await openView(page, workbench, view);
        await FILLED[view](page);
        const tooWide = await page.evaluate(() => document.documentElement.scrollWidth - window.innerWidth);
        assert.ok(tooWide <= 0, `${view} is ${tooWide} pixels too wide`);
        assert.deepEqual(await findings(page, view), [], view);
    }
}

// What a window of 1280 pixels shows at 200 % and at 400 %.
pageTest("every view fits into 640 pixels without scrolling sideways", expectEveryViewToFit,
    { options: { viewport: { width: 640, height: 512 } } });
pageTest("every view fits into 320 pixels without scrolling sideways", expectEveryViewToFit,
    { options: { viewport: { width: 320, height: 256 } } });

pageTest("a payment is taken with the keyboard alone", async ({ page, workbench }) => {
    await openView(page, workbench);
    await page.keyboard.press("Tab");
    assert.equal(await page.evaluate(() => document.activeElement.textContent), "Skip to the terminal");
    await page.keyboard.press("Enter");
    assert.equal(await page.evaluate(() => document.activeElement.textContent), "Take a card payment");
    await page.keyboard.press("Tab");
    assert.equal(await page.evaluate(() => document.activeElement.id), "payment-amount");
    await page.keyboard.press("Control+a");
    await page.keyboard.type("7.00");
    await page.keyboard.press("Enter");
    assert.match(await outcome(page, "done"), /^7\.00 of/);
});

pageTest("choosing a view moves the focus to its heading and names the page after it", async ({ page, workbench }) => {
    await openView(page, workbench);
    await goTo(page, "Journal");
    assert.equal(await page.evaluate(() => document.activeElement.closest("h1")?.textContent), "Journal");
    assert.equal(await page.title(), "Journal · Ledgerhall workbench");
    assert.equal(await page.locator("nav [aria-current=page]").innerText(), "Journal");
    await page.goBack();
    await page.locator("#view-payment").waitFor();
    assert.equal(await page.title(), "Take a card payment · Ledgerhall workbench");
});

pageTest("what has the focus can be seen", async ({ page, workbench }) => {
    await openView(page, workbench);
    for (let press = 0; press < 25; ++press) {
        await page.keyboard.press("Tab");
        const seen = await page.evaluate(() => {
            const { outlineStyle, outlineWidth } = getComputedStyle(document.activeElement);
            return document.activeElement === document.body || (outlineStyle !== "none" && parseFloat(outlineWidth) >= 1);
        });
        assert.ok(seen, await page.evaluate(() => document.activeElement.outerHTML.slice(0, 200)));
    }
});
