// Many calls and many pushes in a row: none is lost, none comes out of order, and memory stays flat.
//
// WORKBENCH_LOAD=full in the environment makes 10,000 calls and 1,000 pushes instead of a tenth or so.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";

import { openView, pageTest } from "./support/stage.mjs";

const IS_FULL = process.env.WORKBENCH_LOAD === "full";
const CALLS = IS_FULL ? 10_000 : 1_000;
const PUSHES = IS_FULL ? 1_000 : 150;
// The workbench keeps this many entries of its log; only what comes after them may not grow.
const KEPT_BY_THE_LOG = 2_000;
const GROWTH_KILOBYTES = 4_096;

/** Makes calls in a row, each with a value of its own that it reads back; returns the first one that came back wrong. */
async function makeCalls(page, count) {
    return page.evaluate(async (count) => {
        const lh = new ActiveXObject("Paylodge.Paylodge");
        for (let call = 0; call < count; call += 2) {
            lh.TransactionID = `T-${call}`;
            if (lh.TransactionID !== `T-${call}`) {
                return call;
            }
            if (call % 100 === 0) {
                await new Promise((resolve) => setTimeout(resolve));
            }
        }
        return -1;
    }, count);
}

/** Kilobytes that a process holds. */
function residentKilobytes(id) {
    return Number(readFileSync(`/proc/${id}/status`, "utf-8").match(/VmRSS:\s+(\d+)/)[1]);
}

async function heapKilobytes(client) {
    await client.send("HeapProfiler.collectGarbage");
    return (await client.send("Runtime.getHeapUsage")).usedSize / 1024;
}

pageTest(`${CALLS} calls in a row come back each with its own result, and memory stays flat`, async ({ page, context, workbench }) => {
    await openView(page, workbench);
    const client = await context.newCDPSession(page);
    assert.equal(await makeCalls(page, KEPT_BY_THE_LOG), -1);
    await page.waitForTimeout(500);
    const [resident, heap] = [residentKilobytes(workbench.processId), await heapKilobytes(client)];
    assert.equal(await makeCalls(page, CALLS), -1);
    await page.waitForTimeout(500);
    const grown = residentKilobytes(workbench.processId) - resident;
    const heapGrown = (await heapKilobytes(client)) - heap;
    assert.ok(grown < GROWTH_KILOBYTES, `the workbench grew by ${grown} KB`);
    assert.ok(heapGrown < GROWTH_KILOBYTES, `the page grew by ${heapGrown} KB`);
    assert.ok(await page.locator("#log-entries li").count() <= 200);
});

for (const [instance, way] of [["page", "script"], ["none", "event"]]) {
    pageTest(`${PUSHES} pushes as ${way} arrive without loss and in their order`, async ({ page, workbench }) => {
        await openView(page, workbench);
        const received = await page.evaluate(async ([instance, pushes]) => {
            const workbench = window.paylodgeWorkbench;
            await workbench.request("POST", "/workbench/browser", { instance });
            const received = [];
            const all = new Promise((resolve) => {
                const receive = (value) => {
                    received.push(value);
                    if (received.length === pushes) {
                        resolve(undefined);
                    }
                };
                window.app.lhProxy.invoiceIdFromLH = receive;
                document.getElementById("control").attachEvent("TransactionID", receive);
            });
            for (let push = 0; push < pushes; ++push) {
                await workbench.request("POST", "/workbench/push", { method: "SetTransactionID", arguments: [`T-${push}`] });
            }
            await all;
            return received;
        }, [instance, PUSHES]);
        assert.deepEqual(received, Array.from({ length: PUSHES }, (_, push) => `T-${push}`));
    });
}

pageTest("objects that a page lets go by the hundred do not stay", async ({ page, workbench }) => {
    await openView(page, workbench);
    const limit = await page.evaluate(() => {
        const made = [];
        try {
            for (let i = 0; i < 1_000; ++i) {
                made.push(new ActiveXObject("Paylodge.Paylodge"));
            }
        } catch (error) {
            return { count: made.length, message: error.message };
        }
        return { count: made.length, message: "" };
    });
    assert.ok(limit.count < 64, `a page got ${limit.count} objects`);
    assert.notEqual(limit.message, "");
    await page.reload();
    await page.locator("html[data-connection=connected]").waitFor();
});
