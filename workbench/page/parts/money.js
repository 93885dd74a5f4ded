// @ts-check
// Amounts: in the books they are text such as "1250.00", in sums whole cents, on screen "1,250.00".

const AMOUNT = /^-?[0-9]{1,9}(?:\.[0-9]{1,2})?$/;
const SHOWN = new Intl.NumberFormat("en-US", { minimumFractionDigits: 2, maximumFractionDigits: 2 });

/**
 * Whole cents; nothing for a text that is no amount.
 * @param {string} text
 * @returns {number | undefined}
 */
export function centsOf(text) {
    const plain = text.trim();
    return AMOUNT.test(plain) ? Math.round(Number(plain) * 100) : undefined;
}

/** @param {number} cents as the books have it */
export function amountOf(cents) {
    return (cents / 100).toFixed(2);
}

/** @param {number} cents as people read it */
export function showCents(cents) {
    return SHOWN.format(cents / 100).replace("-", "−");
}

/** @param {string} amount an amount of the books as people read it; other text as it is */
export function showAmount(amount) {
    const cents = centsOf(amount);
    return cents === undefined ? amount : showCents(cents);
}

/**
 * The amount that a form has, in cents. Throws a plain sentence where there is none above zero.
 * @param {string} text
 */
export function readAmount(text) {
    const cents = centsOf(text.replaceAll(",", ""));
    if (cents === undefined || cents <= 0) {
        throw new RangeError("The amount has to be a number above zero with at most two decimals, such as 12.50.");
    }
    return cents;
}
