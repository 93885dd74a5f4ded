// @ts-check
// Recording payments in the books, each once.

import { ask, lh } from "../parts/host.js";
import { field, group, records, reference, request, response, textAt } from "../parts/lhxml.js";
import { addUnrecorded, dateOf, removeUnrecorded } from "./till.js";

/** @typedef {import("./till.js").Payment} Payment */

export const MERCHANT_ACCOUNT = "TERMINAL-0042";

/**
 * Records a payment that the bank approved. The till holds it until it is in the books.
 * @param {Payment} payment
 * @returns {Element} its record in the books, the `ReceivePaymentRet`
 */
export function recordPayment(payment) {
    addUnrecorded(payment);
    return recordHeld(payment);
}

/**
 * Records a payment that the till still holds. One that is in the books already, since only the answer got lost, is not
 * recorded again.
 * @param {Payment} payment
 * @returns {Element} its record in the books
 */
export function recordAgain(payment) {
    const found = findPayment(payment.number);
    if (found) {
        removeUnrecorded(payment.number);
    }
    return found ?? recordHeld(payment);
}

/** @param {Payment} payment */
function recordHeld(payment) {
    const record = payment.record === "create" ? create(payment) : save(payment);
    removeUnrecorded(payment.number);
    return record;
}

/** @param {string} number */
function findPayment(number) {
    const found = ask(request("ReceivePaymentQueryRq", "find", field("RefNumber", number)));
    return records(response(found, "ReceivePaymentQueryRs"), "ReceivePaymentRet")[0];
}

/** @param {Payment} payment */
function create(payment) {
    const { card } = payment;
    const seconds = String(Math.floor(new Date(payment.time).getTime() / 1000));
    const text = lh().CreatePaymentTxn(payment.customer, payment.time.slice(0, 10), payment.amount, payment.number,
        payment.method, "", "true", maskedNumber(card.lastFour), card.month, card.year, "", "0", "Approved",
        payment.number, MERCHANT_ACCOUNT, card.cryptogram.slice(-6), payment.time.slice(0, 10), "1", "Completed",
        payment.time, seconds, payment.number);
    return recordIn(text);
}

/** @param {Payment} payment */
function save(payment) {
    const { card } = payment;
    return recordIn(lh().SavePaymentTxn(request("ReceivePaymentAddRq", "payment", group("ReceivePaymentAdd",
        reference("CustomerRef", payment.customer),
        field("TxnDate", payment.time.slice(0, 10)),
        field("RefNumber", payment.number),
        field("TotalAmount", payment.amount),
        reference("PaymentMethodRef", payment.method),
        group("CreditCardTxnInfo",
            group("CreditCardTxnInputInfo", field("CreditCardNumber", maskedNumber(card.lastFour)),
                field("ExpirationMonth", card.month), field("ExpirationYear", card.year)),
            group("CreditCardTxnResultInfo", field("ResultCode", "0"), field("ResultMessage", "Approved"),
                field("CreditCardTransID", payment.number), field("MerchantAccountNumber", MERCHANT_ACCOUNT),
                field("AuthorizationCode", card.cryptogram.slice(-6)), field("PaymentStatus", "Completed"),
                field("TxnAuthorizationTime", payment.time), field("ClientTransID", payment.number))),
        field("IsAutoApply", "true")))));
}

/**
 * Records a check; what is left of it after the customer's open invoices stays as credit.
 * @param {string} customer
 * @param {string} amount
 * @param {string} number
 */
export function recordCheck(customer, amount, number) {
    const nothing = /** @type {const} */ (["", "", "", "", "", "", "", "", "", "", "", "", "", "", ""]);
    return recordIn(lh().CreatePaymentTxn(customer, dateOf(new Date()), amount, number, "Check", "", "true",
        ...nothing));
}

/** The customer, invoices and amounts of a payment's record. @param {Element} record */
export function describePayment(record) {
    const invoices = records(record, "AppliedToTxnRet").map((applied) => ({
        number: textAt(applied, "RefNumber"),
        amount: textAt(applied, "Amount"),
    }));
    return { id: textAt(record, "TxnID"), invoices, unused: textAt(record, "UnusedPayment") };
}

/** @param {string} text */
function recordIn(text) {
    return records(response(text, "ReceivePaymentAddRs"), "ReceivePaymentRet")[0];
}

/** @param {string} lastFour */
function maskedNumber(lastFour) {
    return "xxxxxxxxxxxx" + lastFour;
}
