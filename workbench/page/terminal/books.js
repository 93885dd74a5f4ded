// @ts-check
// The views that show the books, and the one that moves money between accounts.

import { el, fill, find, offer, valueOf } from "../parts/dom.js";
import { Problem } from "../parts/failures.js";
import { ask, lh } from "../parts/host.js";
import { field, records, request, response, textAt } from "../parts/lhxml.js";
import { maskCards } from "../parts/masking.js";
import { attempt, messagePlace, onSubmit, showDone } from "../parts/messages.js";
import { amountOf, centsOf, readAmount, showAmount, showCents } from "../parts/money.js";
import { send } from "../bench/server.js";
import { moneyAccounts } from "./lists.js";

/** @type {Record<string, string>} */
const ACCOUNT_TYPES = {
    Bank: "Bank", AccountsReceivable: "Accounts receivable", OtherCurrentAsset: "Other current asset", FixedAsset: "Fixed asset",
    OtherAsset: "Other asset", AccountsPayable: "Accounts payable", CreditCard: "Credit card", OtherCurrentLiability: "Other current liability",
    LongTermLiability: "Long-term liability", Equity: "Equity", Income: "Income", CostOfGoodsSold: "Cost of goods sold", Expense: "Expense",
    OtherIncome: "Other income", OtherExpense: "Other expense", NonPosting: "Non-posting",
};

/** @typedef {{name: string, type: string, number: string, bank: string, balance: string}} Account */

export function transferView() {
    const form = /** @type {HTMLFormElement} */ (find("#transfer-form"));
    const place = messagePlace();
    form.before(place);
    onSubmit(form, place, () => {
        const [from, to] = [valueOf(form, "from"), valueOf(form, "to")];
        const cents = readAmount(valueOf(form, "amount"));
        if (from === to) {
            throw new RangeError("Choose two different accounts.");
        }
        const before = balances([from, to]);
        lh().TransferFunds(from, to, amountOf(cents), valueOf(form, "memo"));
        const after = balances([from, to]);
        const rows = [from, to].map((name) => el("tr", {},
            el("th", { scope: "row" }, name),
            el("td", { class: "num" }, showAmount(before.get(name) ?? "")),
            el("td", { class: "num" }, showAmount(after.get(name) ?? ""))));
        showDone(place, `${showCents(cents)} moved to ${to}.`, el("table", {},
            el("caption", { class: "hidden" }, "Balances"),
            el("thead", {}, el("tr", {}, el("th", { scope: "col" }, "Account"),
                ["Before", "After"].map((name) => el("th", { scope: "col", class: "num" }, name)))),
            el("tbody", {}, rows)));
    });
    return {
        show() {
            const names = moneyAccounts();
            offer(find("#transfer-from"), names, "Undeposited Funds");
            offer(find("#transfer-to"), names, "Riverside Checking");
        },
    };
}

/** @param {string[]} names */
function balances(names) {
    const accounts = readAccounts("").filter((account) => names.includes(account.name));
    return new Map(accounts.map((account) => [account.name, account.balance]));
}

export function accountsView() {
    const form = /** @type {HTMLFormElement} */ (find("#accounts-form"));
    const select = /** @type {HTMLSelectElement} */ (find("#accounts-type"));
    const place = messagePlace();
    form.after(place);
    offer(select, [["", "All types"], .../** @type {[string, string][]} */ (Object.entries(ACCOUNT_TYPES))]);
    const show = () => showAccounts(readAccounts(select.value));
    onSubmit(form, place, show);
    select.addEventListener("change", () => attempt(place, null, show));
    return { show };
}

/**
 * The active accounts of a type with their balances; of all types when it is empty.
 * @param {string} type
 * @returns {Account[]}
 */
function readAccounts(type) {
    if (type !== "") {
        return records(lh().GetBalanceForAccountType(type), "AccountRet").map((account) => ({
            name: textAt(account, "AccountName"),
            type,
            number: textAt(account, "AccountNumber"),
            bank: textAt(account, "BankNumber"),
            balance: textAt(account, "Balance"),
        }));
    }
    const text = ask(request("AccountQueryRq", "accounts", field("ActiveStatus", "ActiveOnly")));
    return records(response(text, "AccountQueryRs"), "AccountRet").map((account) => ({
        name: textAt(account, "FullName"),
        type: textAt(account, "AccountType"),
        number: textAt(account, "AccountNumber"),
        bank: textAt(account, "BankNumber"),
        balance: textAt(account, "Balance"),
    }));
}

/** @param {Account[]} accounts */
function showAccounts(accounts) {
    const place = find("#accounts-list");
    if (accounts.length === 0) {
        fill(place, el("p", { class: "empty" }, "No active account is of this type."));
        return;
    }
    const rows = accounts.map((account) => el("tr", {},
        el("td", { class: "quiet num left" }, account.number),
        el("th", { scope: "row" }, account.name),
        el("td", {}, ACCOUNT_TYPES[account.type] ?? account.type),
        el("td", { class: "quiet num left" }, maskCards(account.bank)),
        el("td", { class: "num" }, showAmount(account.balance))));
    fill(place, el("table", { class: "card wide" },
        el("caption", { class: "hidden" }, "Accounts with their balances"),
        el("thead", {}, el("tr", {}, ["Number", "Account", "Type", "Bank number"].map((name) => el("th", { scope: "col" }, name)),
            el("th", { scope: "col", class: "num" }, "Balance"))),
        el("tbody", {}, rows)));
}

export function journalView() {
    const form = /** @type {HTMLFormElement} */ (find("#journal-form"));
    const place = messagePlace();
    form.after(place);
    const show = async () => {
        const { transactions } = await send("GET", `/workbench/journal?count=${valueOf(form, "count")}`);
        if (!Array.isArray(transactions)) {
            throw new Problem("The journal cannot be read.", "Reload the page, then try again.");
        }
        showJournal(transactions);
    };
    onSubmit(form, place, show);
    find("#journal-count").addEventListener("change", () => attempt(place, null, show));
    return { show: () => attempt(place, null, show) };
}

/** @param {WorkbenchTransaction[]} transactions newest first */
function showJournal(transactions) {
    const place = find("#journal-list");
    if (transactions.length === 0) {
        fill(place, el("p", { class: "empty" }, "The books are empty."));
        return;
    }
    fill(place, el("table", { class: "card journal wide" },
        el("caption", { class: "hidden" }, "Transactions with their postings, newest first"),
        el("thead", {}, el("tr", {}, el("th", { scope: "col" }, "Date"), el("th", { scope: "col" }, "Transaction and accounts"),
            ["Debit", "Credit"].map((name) => el("th", { scope: "col", class: "num" }, name)))),
        transactions.map((transaction) => el("tbody", {}, transactionRow(transaction), ...transaction.postings.map(postingRow)))));
}

/** @param {WorkbenchTransaction} transaction */
function transactionRow(transaction) {
    const { type, id, date, number, name, memo } = transaction;
    const title = [spaced(type), number, name].filter(Boolean).join(" · ");
    return el("tr", { class: "transaction" },
        el("td", { class: "num left" }, date),
        el("th", { scope: "rowgroup" }, maskCards(title), el("span", { class: "quiet" }, ` ${id}`),
            memo ? el("span", { class: "memo" }, maskCards(memo)) : null),
        el("td", {}), el("td", {}));
}

/** @param {WorkbenchTransaction["postings"][number]} posting */
function postingRow(posting) {
    const cents = centsOf(posting.amount) ?? 0;
    return el("tr", { class: "posting" },
        el("td", {}),
        el("td", {}, posting.account),
        el("td", { class: "num" }, cents >= 0 ? showCents(cents) : ""),
        el("td", { class: "num" }, cents < 0 ? showCents(-cents) : ""));
}

/** "ReceivePayment" as people read it. @param {string} name */
function spaced(name) {
    const words = name.replace(/([a-z])([A-Z])/g, "$1 $2").toLowerCase();
    return words.charAt(0).toUpperCase() + words.slice(1);
}
