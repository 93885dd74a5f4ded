// @ts-check
// What went wrong, in plain words, and what to do about it.

/**
 * @typedef {object} Words
 * @property {string} what what happened
 * @property {string} todo what to do about it
 */

/** A response of Ledgerhall with an error status. */
export class Refusal extends Error {
    /**
     * @param {string} code the status code
     * @param {string} message Ledgerhall's own words
     */
    constructor(code, message) {
        super(message);
        this.code = code;
    }
}

/** Something that the page itself found wrong, such as a card that the bank declined. */
export class Problem extends Error {
    /**
     * @param {string} message what happened
     * @param {string} todo what to do about it
     */
    constructor(message, todo) {
        super(message);
        this.todo = todo;
    }
}

export const E_FAIL = -2147467259;

const FAULTS_TODO = "If a fault is planned under Faults, clear it; otherwise the log shows the request that failed. Then try again.";

/** @type {Record<string, Words>} */
const RESULTS = {
    "0x80004005": { what: "Ledgerhall could not do it and did not say why.", todo: FAULTS_TODO },
    "0x80004001": { what: "Ledgerhall does not offer this function.", todo: "Use a version of Ledgerhall that has it." },
    "0x80004003": { what: "Ledgerhall handed over nothing where something was expected.", todo: FAULTS_TODO },
    "0x80004004": { what: "Ledgerhall broke the work off.", todo: FAULTS_TODO },
    "0x8000FFFF": { what: "Something happened in Ledgerhall that must not happen.", todo: "Close the company file, open it again, and check it with ./dev company check." },
    "0x80070005": { what: "Access to the company file was denied.", todo: "See that you may read and change the file and its folder, then try again." },
    "0x80070002": { what: "The company file is missing.", todo: "Start the workbench again with --company and a file that is there." },
    "0x80070013": { what: "The company file is write-protected.", todo: "Take the write protection away, then try again." },
    "0x8007001D": { what: "The company file cannot be written.", todo: "Check the disk, then try again." },
    "0x80070020": { what: "Another program uses the company file.", todo: "Close the other program, then try again." },
    "0x80070570": { what: "The company file is damaged.", todo: "Stop working in it and restore a copy." },
    "0x80070070": { what: "The disk is full.", todo: "Make room on the disk of the company file, then try again." },
    "0x8007000E": { what: "There is not enough memory.", todo: "Close other programs, then try again." },
    "0x80070057": { what: "Something that is needed is missing or has the wrong form.", todo: "Fill in every field, then try again." },
    "0x80040401": { what: "Ledgerhall was not connected when the request came.", todo: FAULTS_TODO },
    "0x80040402": { what: "Ledgerhall was connected already.", todo: FAULTS_TODO },
    "0x80040403": { what: "Ledgerhall does not know the session of the request.", todo: FAULTS_TODO },
    "0x80040421": { what: "No company file is open.", todo: "Start the workbench again with --company and your file." },
    "0x80040422": { what: "The company file was made by a newer version.", todo: "Use the version of Ledgerhall that made it." },
    "0x80040423": { what: "The file is no company file.", todo: "Start the workbench again with --company and a company file." },
    "0x80040424": { what: "Another company file is open now.", todo: "Reload this page." },
    "0x800401FD": { what: "The company file was closed meanwhile.", todo: "Reload this page." },
    "0x80080005": { what: "The card reader or another part of Ledgerhall did not start.", todo: "Start the workbench again." },
    "0x80040154": { what: "A part of Ledgerhall is not installed.", todo: "Build the workbench again with ./dev build, then start it again." },
    "0x800706BA": { what: "The workbench is not running any more.", todo: "Start it again with ./dev workbench. This page connects by itself." },
    "0x80010108": { what: "The workbench was started anew, and this page still had its old connection.", todo: "Try again." },
    "0x800A01AD": { what: "This page did not get its object.", todo: "Open the page from the workbench, at the address that ./dev workbench prints." },
    "0x800A01B6": { what: "The component has no member of this name.", todo: "Compare the name with the script reference." },
    "0x8002000E": { what: "The call had too many or too few arguments.", todo: "Compare the call with the script reference." },
    "0x80020005": { what: "An argument is of the wrong kind.", todo: "Compare the call with the script reference." },
};

/** @type {Record<string, string>} */
const STATUS_TODO = {
    "1000": "The request is no XML. The log shows it; the message says where it breaks off.",
    "1110": "An earlier request of the batch failed. Mend that one first.",
    "2000": "Fill in the field that is named, then try again.",
    "2030": "Write the value in the form that is named, then try again.",
    "2035": "Use a smaller amount.",
    "2040": "Choose a name that is in the company file.",
    "2045": "Choose an account of another type.",
    "3100": "Choose another name.",
    "3180": "Choose another name.",
    "3200": "Somebody else changed the record. Show it again, then try again.",
    "3210": "Make the record active in Ledgerhall, or choose another one.",
    "3220": "Enter values that the books allow.",
    "4000": "Start the workbench again with --company and your file.",
    "4010": "Nothing was recorded. Check the disk and the faults that are planned, then try again.",
    "4020": "Nothing was recorded. Take the write protection away, then try again.",
    "4030": "Nothing was recorded. Make room on the disk, then try again.",
    "4040": "Stop working in the company file and restore a copy.",
};

/**
 * The number of a failed call; nothing for other errors.
 * @param {unknown} error
 * @returns {number | undefined}
 */
export function numberOf(error) {
    const number = /** @type {{number?: unknown}} */ (error)?.number;
    return typeof number === "number" ? number | 0 : undefined;
}

/** @param {number} number an HRESULT as script has it */
export function hex(number) {
    return "0x" + (number >>> 0).toString(16).toUpperCase().padStart(8, "0");
}

/**
 * An error in plain words.
 * @param {unknown} error
 * @returns {Words & {detail: string}} `detail` is for those who look for the cause
 */
export function explain(error) {
    if (error instanceof Refusal) {
        const todo = STATUS_TODO[error.code] ?? "The log shows the request and the response.";
        return { what: sentence(error.message), todo, detail: error.code ? `Status ${error.code}` : "" };
    }
    if (error instanceof Problem) {
        return { what: sentence(error.message), todo: error.todo, detail: "" };
    }
    if (error instanceof RangeError) {
        return { what: error.message, todo: "", detail: "" };
    }
    const number = numberOf(error);
    const message = error instanceof Error ? error.message : String(error);
    if (number === undefined) {
        return { what: "Something in this page went wrong.", todo: "Reload the page, then try again.", detail: message };
    }
    const name = /** @type {{hresultName?: string}} */ (error).hresultName;
    const detail = hex(number) + (name ? ` ${name}` : "");
    const words = RESULTS[hex(number)] ?? { what: "Ledgerhall could not do it.", todo: FAULTS_TODO };
    return { ...words, detail };
}

/** @param {string} text */
function sentence(text) {
    const trimmed = text.trim();
    const whole = trimmed.charAt(0).toUpperCase() + trimmed.slice(1);
    return /[.!?]$/.test(whole) ? whole : `${whole}.`;
}
