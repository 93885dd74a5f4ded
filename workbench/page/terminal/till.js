// @ts-check
// What this terminal holds until it is in the books: the slips of the open batch, and payments that the bank approved
// but that could not be recorded. It stays when the page is reloaded, and each tab has its own.

/**
 * @typedef {object} Slip a sale or a refund of the open batch
 * @property {"sale" | "refund"} kind
 * @property {string} number its reference number in the books
 * @property {string} card the payment method
 * @property {string} lastFour
 * @property {string} item
 * @property {string} memo
 * @property {string} customer
 * @property {number} cents
 *
 * @typedef {object} Payment an approved payment of a customer
 * @property {string} number
 * @property {string} customer
 * @property {string} amount
 * @property {string} method
 * @property {"create" | "save"} record
 * @property {string} time
 * @property {import("./reader.js").Card} card
 */

const KEY = "terminal-till";

/** @type {{slips: Slip[], unrecorded: Payment[]}} */
const till = { slips: [], unrecorded: [], ...JSON.parse(sessionStorage.getItem(KEY) ?? "{}") };

/** Its listeners are told of every change, by an event "change". */
export const changes = new EventTarget();

/** @returns {readonly Slip[]} */
export const slips = () => till.slips;

/** @returns {readonly Payment[]} */
export const unrecorded = () => till.unrecorded;

/** @param {...Slip} added */
export function addSlips(...added) {
    keep({ ...till, slips: [...till.slips, ...added] });
}

/** @param {Iterable<string>} numbers of slips that are in the books, or not wanted any more */
export function removeSlips(numbers) {
    const gone = new Set(numbers);
    keep({ ...till, slips: till.slips.filter((slip) => !gone.has(slip.number)) });
}

/** @param {Payment} payment */
export function addUnrecorded(payment) {
    keep({ ...till, unrecorded: [...till.unrecorded, payment] });
}

/** @param {string} number */
export function removeUnrecorded(number) {
    keep({ ...till, unrecorded: till.unrecorded.filter((payment) => payment.number !== number) });
}

/**
 * A reference number that no other terminal makes: a letter for the kind, the time, and three random characters.
 * @param {string} letter
 */
export function newNumber(letter) {
    const now = new Date();
    const parts = [now.getFullYear() % 100, now.getMonth() + 1, now.getDate(), now.getHours(), now.getMinutes(), now.getSeconds()];
    const [year, month, day, ...time] = parts.map((part) => String(part).padStart(2, "0"));
    const letters = "ABCDEFGHJKLMNPQRSTUVWXYZ23456789";
    const random = Array.from(crypto.getRandomValues(new Uint8Array(3)), (byte) => letters[byte % letters.length]);
    return `${letter}-${year}${month}${day}-${time.join("")}-${random.join("")}`;
}

/** A date as the books have it. @param {Date} date */
export function dateOf(date) {
    return [date.getFullYear(), date.getMonth() + 1, date.getDate()].map((part) => String(part).padStart(2, "0")).join("-");
}

/** Date and time as the books have them. @param {Date} date */
export function timeOf(date) {
    const time = [date.getHours(), date.getMinutes(), date.getSeconds()];
    return `${dateOf(date)}T${time.map((part) => String(part).padStart(2, "0")).join(":")}`;
}

/** @param {typeof till} next */
function keep(next) {
    Object.assign(till, next);
    sessionStorage.setItem(KEY, JSON.stringify(till));
    changes.dispatchEvent(new Event("change"));
}
