// What the page looks like, compared with the pictures of docs/pictures.
//
// Fonts are drawn a little differently on other machines, and times and numbers differ on each run. So what is compared
// is the mean lightness of cells of 8 by 8 pixels: that of text hardly changes, that of what moves or changes colour does.
//
// WORKBENCH_PICTURES=write in the environment writes the pictures anew.

import assert from "node:assert/strict";
import { existsSync, readFileSync, writeFileSync } from "node:fs";
import { join } from "node:path";

import { TOP } from "./support/places.mjs";
import { clearLog, goTo, openView, outcome, pageTest, shown } from "./support/stage.mjs";

const FOLDER = join(TOP, "docs", "pictures");
const CELL = 8;
// Of 255: a cell that differs by more is another one; and this share of them may be.
const LIGHTNESS = 8;
const SHARE = 0.025;
const VIEWPORT = { width: 1360, height: 860 };

/** The share of cells that differ between two pictures; 1 when they are of different size. */
async function difference(page, first, second) {
    const canvas = await page.context().newPage();
    try {
        return await canvas.evaluate(async ([urls, cell, lightness]) => {
            const pictures = await Promise.all(urls.map(async (url) => {
                const image = new Image();
                image.src = url;
                await image.decode();
                const surface = Object.assign(document.createElement("canvas"), { width: image.width, height: image.height });
                const context = surface.getContext("2d");
                context.drawImage(image, 0, 0);
                return context.getImageData(0, 0, image.width, image.height);
            }));
            const [a, b] = pictures;
            if (a.width !== b.width || a.height !== b.height) {
                return 1;
            }
            const mean = ({ data, width }, left, top) => {
                let sum = 0;
                for (let y = top; y < top + cell; ++y) {
                    for (let x = left; x < left + cell; ++x) {
                        const at = 4 * (y * width + x);
                        sum += (data[at] + data[at + 1] + data[at + 2]) / 3;
                    }
                }
                return sum / (cell * cell);
            };
            let [cells, different] = [0, 0];
            for (let top = 0; top + cell <= a.height; top += cell) {
                for (let left = 0; left + cell <= a.width; left += cell) {
                    cells += 1;
                    different += Math.abs(mean(a, left, top) - mean(b, left, top)) > lightness ? 1 : 0;
                }
            }
            return different / cells;
        }, [[first, second].map((picture) => `data:image/png;base64,${picture.toString("base64")}`), CELL, LIGHTNESS]);
    } finally {
        await canvas.close();
    }
}

async function compareWithPicture(page, name) {
    const file = join(FOLDER, `${name}.png`);
    await page.mouse.move(0, 0);
    const taken = await page.screenshot({ animations: "disabled", caret: "hide" });
    if (process.env.WORKBENCH_PICTURES === "write") {
        writeFileSync(file, taken);
    }
    assert.ok(existsSync(file), `${file} is missing: WORKBENCH_PICTURES=write makes it`);
    const share = await difference(page, readFileSync(file), taken);
    if (share > SHARE) {
        writeFileSync(`${name}.png`, taken);
    }
    assert.ok(share <= SHARE, `${(100 * share).toFixed(1)} % of the picture differ from ${file}; this run's is beside its log`);
}

async function takePayment(page, workbench) {
    await openView(page, workbench);
    await page.evaluate(() => window.paylodgeWorkbench.request("DELETE", "/workbench/log"));
    await page.reload();
    await page.locator("html[data-connection=connected]").waitFor();
    await shown(page).getByLabel("Customer").selectOption("Eastgate Library");
    await shown(page).getByLabel("Amount").fill("25.00");
    await page.getByRole("button", { name: "Take payment" }).click();
    await outcome(page, "done");
    await page.locator("#log-entries li").filter({ hasText: "CreatePaymentTxn" }).first().waitFor();
}

for (const colorScheme of ["light", "dark"]) {
    pageTest(`the terminal looks as in its picture, ${colorScheme}`, async ({ page, workbench }) => {
        await takePayment(page, workbench);
        await compareWithPicture(page, `workbench-payment-${colorScheme}`);
    }, { options: { viewport: VIEWPORT, colorScheme, reducedMotion: "reduce" } });
}

pageTest("the operator's panel looks as in its picture", async ({ page, workbench }) => {
    await openView(page, workbench, "notifications");
    await shown(page).getByLabel(/script in this page/).check();
    await clearLog(page);
    for (const method of ["NotifyTransactionChanged", "SetReconPaymentData"]) {
        await shown(page).getByLabel("Notification", { exact: true }).selectOption(method);
        await page.getByRole("button", { name: "Push", exact: true }).click();
        await outcome(page, "done");
    }
    await page.locator("#arrivals li").nth(1).waitFor();
    await page.getByRole("button", { name: "Clear" }).first().hover();
    await compareWithPicture(page, "workbench-notifications");
}, { options: { viewport: VIEWPORT, reducedMotion: "reduce" } });

pageTest("the comparison notices what moved and what changed its colour", async ({ page, workbench }) => {
    await takePayment(page, workbench);
    const before = await page.screenshot();
    assert.ok((await difference(page, before, before)) === 0);
    const changes = {
        "the card reader is gone": () => (document.querySelector(".reader").style.visibility = "hidden"),
        "the form is lower by 12 pixels": () => (document.querySelector("#payment-form").style.marginTop = "12px"),
        "the log is as dark as its text": () => (document.querySelector(".log").style.background = "#16202a"),
    };
    for (const [change, apply] of Object.entries(changes)) {
        await page.evaluate(apply);
        assert.ok((await difference(page, before, await page.screenshot())) > SHARE, change);
        await page.evaluate(() => document.querySelectorAll("[style]").forEach((element) => element.removeAttribute("style")));
    }
}, { options: { viewport: VIEWPORT, reducedMotion: "reduce" } });
