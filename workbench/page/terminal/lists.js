// @ts-check
// The lists of the company file that forms offer, read once for each connection.

import { ask, lh } from "../parts/host.js";
import { field, records, request, response, textAt, texts } from "../parts/lhxml.js";

const CARDS = ["Visa", "MasterCard", "American Express", "Discover", "Diners Club"];

/** @type {Map<string, string[]>} */
const kept = new Map();

/** The company file may be another one from now on. */
export function forgetLists() {
    kept.clear();
}

export const customers = () =>
    once("customers", () => {
        const found = ask(request("CustomerQueryRq", "customers", field("IncludeRetElement", "FullName")));
        return records(response(found, "CustomerQueryRs"), "CustomerRet").map((customer) => textAt(customer, "FullName"));
    });

/** The payment methods of the company file that are cards. */
export const cards = () =>
    once("cards", () => {
        const methods = texts(lh().GetPaymentMethods(), "PayMethName");
        return CARDS.filter((card) => methods.includes(card));
    });

/** What can be sold; refunds have items of their own. */
export const items = () =>
    once("items", () => texts(lh().GetItems(), "ItemName").filter((item) => !item.startsWith("Net Refund - ")));

/** The accounts that money can be moved between. */
export function moneyAccounts() {
    return texts(lh().GetAccountsForMultipleTypes("Bank, OtherCurrentAsset"), "AccountName");
}

/**
 * @param {string} name
 * @param {() => string[]} read
 */
function once(name, read) {
    const list = kept.get(name) ?? read();
    kept.set(name, list);
    return list;
}
