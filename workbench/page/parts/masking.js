// @ts-check
// Card numbers stay out of sight: of each only the last four digits are ever shown or kept.

const MASK = "•••• ";

// A number of 13 to 19 digits, also with blanks or dashes between them, that is not part of a longer one.
const LONG_NUMBER = /(?<![0-9])[0-9](?:[ -]?[0-9]){12,18}(?![0-9])/g;

// The account number and the track data of a card among tags, lengths and values in hexadecimal text.
const CARD_TAGS = /(5A|57)(0[1-9A-F]|1[0-3])([0-9A-F]+)/gi;

// The same, decoded.
const DECODED_CARD_TAGS = /("(?:5A|57)"\s*:\s*")([^"]*)"/gi;

/**
 * The text with every card number in it masked.
 * @param {string} text
 */
export function maskCards(text) {
    return text
        .replace(DECODED_CARD_TAGS, (_, start, value) => `${start}${maskNumber(value)}"`)
        .replace(CARD_TAGS, maskTag)
        .replace(LONG_NUMBER, (number) => (passesCheckDigit(number) ? maskNumber(number) : number));
}

/**
 * A card number as it may be shown.
 * @param {string} number
 */
export function maskNumber(number) {
    return MASK + lastFour(number);
}

/**
 * The last four digits of a card number, or of track data the last four before its separator.
 * @param {string} number
 */
export function lastFour(number) {
    return number.toUpperCase().split("D")[0].replace(/[^0-9]/g, "").slice(-4);
}

/**
 * @param {string} whole
 * @param {string} tag
 * @param {string} length
 * @param {string} rest
 */
function maskTag(whole, tag, length, rest) {
    const digits = 2 * parseInt(length, 16);
    const value = rest.slice(0, digits);
    // A card number has at least six bytes; anything shorter is other data that looks like the tag.
    return value.length < digits || digits < 12 ? whole : tag + length + maskNumber(value) + rest.slice(digits);
}

/** @param {string} number */
function passesCheckDigit(number) {
    const digits = number.replace(/[^0-9]/g, "");
    let sum = 0;
    for (let i = 0; i < digits.length; ++i) {
        const digit = Number(digits[digits.length - 1 - i]) * (i % 2 === 0 ? 1 : 2);
        sum += digit > 9 ? digit - 9 : digit;
    }
    return sum % 10 === 0;
}
