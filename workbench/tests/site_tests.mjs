// Which pages are served, and which of them the component works for.

import assert from "node:assert/strict";
import { createServer, request } from "node:http";

import { goTo, openView, outcome, pageTest, shown } from "./support/stage.mjs";

/** Status and body of a plain request, with whatever Host it is to have. */
function fetchAs(port, path, headers) {
    return new Promise((resolve, reject) => {
        const sent = request({ host: "127.0.0.1", port, path, headers }, (reply) => {
            let body = "";
            reply.on("data", (data) => (body += data));
            reply.on("end", () => resolve({ status: reply.statusCode, headers: reply.headers, body }));
        });
        sent.on("error", reject);
        sent.end();
    });
}

for (const host of ["127.0.0.1", "localhost"]) {
    pageTest(`a page at ${host} is refused by the site lock, visibly`, async ({ page, workbench }) => {
        await page.goto(`http://${host}:${workbench.port}/`);
        await page.locator("html[data-connection=refused]").waitFor();
        const banner = page.getByRole("alert");
        assert.equal(await banner.count(), 1);
        assert.match(await banner.innerText(), new RegExp(`The component's site lock refuses this page: http://${host}:${workbench.port} is no approved site\\.`));
        await page.getByRole("button", { name: "Take payment" }).click();
        assert.match(await outcome(page, "failed"), /^The component's site lock refuses this page\./);
        assert.equal(await page.locator("#reader-steps li").first().getAttribute("data-state"), "waiting");
        await banner.getByRole("link").click();
        await page.locator("html[data-connection=connected]").waitFor();
        assert.equal(new URL(page.url()).hostname, "dev.ledgerhall.example");
    });
}

pageTest("a refused page's calls succeed without doing anything, but for ProcessLHRequest", async ({ page, workbench }) => {
    await page.goto(`http://127.0.0.1:${workbench.port}/`);
    await page.locator("html[data-connection=refused]").waitFor();
    const seen = await page.evaluate(() => {
        const lh = new ActiveXObject("Paylodge.Paylodge");
        const seen = { accounts: String(lh.GetAccounts("Bank") ?? ""), error: 0 };
        try {
            lh.ProcessLHRequest('<AccountQueryRq requestID="1"/>');
        } catch (error) {
            seen.error = error.number;
        }
        return seen;
    });
    assert.deepEqual(seen, { accounts: "", error: -2147467259 });
});

pageTest("a name that somebody points at this machine is not answered", async ({ page, workbench }) => {
    const reply = await page.goto(`http://rebound.example:${workbench.port}/`);
    assert.equal(reply.status(), 421);
    assert.equal((await fetchAs(workbench.port, "/", { Host: "dev.ledgerhall.example" })).status, 421);
    assert.equal((await fetchAs(workbench.port, "/", { Host: `dev.ledgerhall.example:${workbench.port}` })).status, 200);
});

pageTest("a foreign page can neither call the workbench nor read its token", async ({ page, workbench }) => {
    const foreign = createServer((_, reply) => reply.setHeader("Content-Type", "text/html").end("<!doctype html><title>foreign</title>"));
    await new Promise((resolve) => foreign.listen(0, "127.0.0.1", resolve));
    try {
        await page.goto(`http://foreign.example:${foreign.address().port}/`);
        const seen = await page.evaluate(async (address) => {
            const read = async (path, options) => {
                try {
                    return (await (await fetch(address + path, options)).text()).length;
                } catch (error) {
                    return error.name;
                }
            };
            const socket = new Promise((resolve) => {
                const tried = new WebSocket(`${address.replace("http", "ws")}workbench/socket?page=1&token=guessed`);
                tried.onopen = () => resolve("open");
                tried.onerror = () => resolve("refused");
            });
            return [
                await read(""),
                await read("workbench/session"),
                await read("workbench/call", { method: "POST", body: "{}", headers: { "Content-Type": "text/plain" } }),
                await socket,
            ];
        }, workbench.address);
        assert.deepEqual(seen, ["TypeError", "TypeError", "TypeError", "refused"]);
    } finally {
        foreign.close();
    }
}, { errors: ["Failed to fetch"] });

pageTest("nothing below /workbench/ is answered without the token of this start", async ({ workbench }) => {
    const Host = `dev.ledgerhall.example:${workbench.port}`;
    for (const path of ["/workbench/state", "/workbench/log", "/workbench/journal", "/workbench/empty"]) {
        assert.equal((await fetchAs(workbench.port, path, { Host })).status, 403, path);
        assert.equal((await fetchAs(workbench.port, path, { Host, "X-Workbench-Token": "guessed" })).status, 403, path);
    }
});

pageTest("the page runs no script but its files, and no other site may frame it", async ({ page, workbench }) => {
    await openView(page, workbench);
    const { headers } = await fetchAs(workbench.port, "/", { Host: `dev.ledgerhall.example:${workbench.port}` });
    assert.match(headers["content-security-policy"], /frame-ancestors 'self'/);
    const ran = await page.evaluate(() => {
        const script = document.createElement("script");
        script.textContent = "window.injected = true";
        document.head.append(script);
        return window.injected === true;
    });
    assert.equal(ran, false);
});

pageTest("nothing outside the page's folder is served", async ({ workbench }) => {
    const Host = `dev.ledgerhall.example:${workbench.port}`;
    for (const path of ["/../README.md", "/..%2f..%2fREADME.md", "/%2e%2e/README.md", "/..%5cREADME.md", "/parts/../../README.md", "/C:/windows/win.ini", "/index.html%00"]) {
        const { status } = await fetchAs(workbench.port, path, { Host });
        assert.ok(status >= 400 && status < 500, `${path}: ${status}`);
    }
});

pageTest("names of customers are text, whatever stands in them", async ({ page, workbench }) => {
    await openView(page, workbench);
    await page.evaluate(() => window.paylodgeWorkbench.request("POST", "/workbench/request",
        { body: '<CustomerAddRq requestID="1"><CustomerAdd><Name>&lt;img src=x onerror=alert(1)&gt;</Name></CustomerAdd></CustomerAddRq>' }));
    await page.reload();
    await page.locator("html[data-connection=connected]").waitFor();
    await shown(page).getByLabel("Customer").selectOption("<img src=x onerror=alert(1)>");
    await page.getByRole("button", { name: "Take payment" }).click();
    assert.match(await outcome(page, "done"), /of <img src=x onerror=alert\(1\)> is in the books/);
    await goTo(page, "Journal");
    await page.locator("#journal-list tbody").first().waitFor();
    assert.equal(await page.locator("main img, aside img").count(), 0);
});
