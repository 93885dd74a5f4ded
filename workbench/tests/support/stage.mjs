// What most tests begin and end with: a workbench and a browser for the file, a page for each test, true books after it.

import assert from "node:assert/strict";
import { after, test } from "node:test";

import { startBrowser } from "./browser.mjs";
import { Workbench } from "./workbench.mjs";

const STEP_SECONDS = 20;

/** @type {Promise<{browser?: object, reason?: string, workbench?: Workbench}> | undefined} */
let stage;
let options = {};

/** For a file whose workbench is not the usual one. */
export function prepareStage(workbenchOptions) {
    options = workbenchOptions;
}

async function setStage() {
    const { browser, reason } = await startBrowser();
    try {
        return { browser, reason, workbench: browser ? await Workbench.start(options) : undefined };
    } catch (error) {
        await browser?.close();
        throw error;
    }
}

after(async () => {
    const { browser, workbench } = (await stage?.catch(() => undefined)) ?? {};
    await browser?.close();
    await workbench?.stop();
    await workbench?.checkBooks();
});

/**
 * A test with a page of its own at the workbench's approved address, which has to be without errors of script, and after
 * which the books have to be true.
 */
export function pageTest(name, work, { options = {}, errors = [] } = {}) {
    test(name, async (running) => {
        const { browser, reason, workbench } = await (stage ??= setStage());
        if (!browser) {
            running.skip(reason);
            return;
        }
        const context = await browser.newContext({ viewport: { width: 1360, height: 900 }, locale: "en-US", ...options });
        context.setDefaultTimeout(STEP_SECONDS * 1000);
        const problems = [];
        context.on("weberror", (error) => problems.push(String(error.error())));
        try {
            const page = await context.newPage();
            await work({ page, context, workbench, browser });
            assert.deepEqual(problems.filter((problem) => !errors.some((known) => problem.includes(known))), []);
        } finally {
            await context.close();
            await workbench.checkBooks();
        }
    });
}

/** Opens a view of the workbench's page and waits until it is connected. */
export async function openView(page, workbench, view = "payment") {
    await page.goto(`${workbench.address}#${view}`);
    await page.locator("html[data-connection=connected]").waitFor();
    await page.locator(`#view-${view}`).waitFor();
}

/** Goes to a view by its link, as a user does, and waits until it is there: the page hears of it after the click. */
export async function goTo(page, name) {
    const link = page.getByRole("navigation").getByRole("link", { name: new RegExp(`^${name}`) });
    await link.click();
    await link.and(page.locator("[aria-current=page]")).waitFor();
}

/** Clears the log by its button until it stays empty: calls of a view that was just opened may still be coming. */
export async function clearLog(page) {
    const entries = page.locator("#log-entries li");
    do {
        await page.locator("aside").getByRole("button", { name: "Clear" }).click();
        await page.waitForTimeout(250);
    } while (await entries.count() > 0);
}

/** The text of what a view says came of something, once it says it. */
export async function outcome(page, kind) {
    const message = page.locator(`main section:not([hidden]) .message.${kind}`).first();
    await message.waitFor();
    return message.innerText();
}

/** The view that is shown; the others have fields of the same names. */
export function shown(page) {
    return page.locator("main section:not([hidden])");
}
