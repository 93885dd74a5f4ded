// The books as the host itself sees them, beside what a page shows.

/** The balance of each account by its full name, as text. */
export async function balances(page) {
    const response = await hostRequest(page, '<AccountQueryRq requestID="1"><ActiveStatus>All</ActiveStatus></AccountQueryRq>');
    const accounts = [...response.matchAll(/<AccountRet>.*?<\/AccountRet>/gs)];
    return Object.fromEntries(accounts.map(([account]) => [textOf(account, "FullName"), textOf(account, "Balance")]));
}

/** How many cents each account has more than before; those without a change are left out. */
export function changesBetween(before, after) {
    const cents = (text) => Math.round(Number(text ?? "0") * 100);
    const names = new Set([...Object.keys(before), ...Object.keys(after)]);
    const changes = [...names].map((name) => [name, cents(after[name]) - cents(before[name])]);
    return Object.fromEntries(changes.filter(([, change]) => change !== 0));
}

/** A request that the host sends on its own behalf. */
export async function hostRequest(page, body) {
    return page.evaluate(async (body) => (await window.paylodgeWorkbench.request("POST", "/workbench/request", { body })).response, body);
}

export async function journal(page, count = 25) {
    return page.evaluate(async (count) => (await window.paylodgeWorkbench.request("GET", `/workbench/journal?count=${count}`)).transactions, count);
}

/** The entries of the workbench's log. */
export async function logEntries(page) {
    return page.evaluate(async () => (await window.paylodgeWorkbench.request("GET", "/workbench/log")).entries);
}

export function textOf(xml, name) {
    return xml.match(new RegExp(`<${name}>([^<]*)</${name}>`))?.[1] ?? "";
}
