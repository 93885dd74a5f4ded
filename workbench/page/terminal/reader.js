// @ts-check
// A payment on the card reader, step by step, as the control offers it.

import { control } from "../parts/host.js";
import { Problem } from "../parts/failures.js";
import { lastFour } from "../parts/masking.js";

/**
 * @typedef {object} Card what the page keeps of a card
 * @property {string} label
 * @property {string} lastFour
 * @property {string} month
 * @property {string} year
 * @property {string} cryptogram
 *
 * @typedef {object} Step
 * @property {string} title what a merchant sees
 * @property {string} call the member that it calls, if any
 * @property {() => string} run returns what came of it, in words
 */

const REPAIR = "Take the payment again from its first step.";

/** One payment on the reader: an amount, and what the bank is going to say to it. */
export class ReaderPayment {
    /**
     * @param {string} amount such as "12.50"
     * @param {string} answer the bank's response code; "00" approves
     */
    constructor(amount, answer) {
        this.amount = amount;
        this.answer = answer;
        /** @type {Card | undefined} */
        this.card = undefined;
    }

    /** @returns {Step[]} */
    steps() {
        const reader = control();
        return [
            step("Open a session", "InitializeSession", () => {
                reader.InitializeSession();
                return this.#expect("Idle", "ready");
            }),
            step("Connect the reader", "ConnectDevice", () => {
                reader.ConnectDevice();
                if (!reader.EMVIsDeviceConnected()) {
                    throw new Problem("No card reader is connected.", "Connect the reader, then take the payment again.");
                }
                return this.#expect("Idle", "connected");
            }),
            step("Start the payment", "StartEMV", () => {
                reader.StartEMV(this.amount);
                return this.#expect("ApplicationSelection", "card inserted");
            }),
            step("Take the card's application", "HandleAidSelecttion", () => {
                reader.HandleAidSelecttion();
                return this.#expect("OnlineAuthorization", "taken");
            }),
            step("Read the card", "EMVGetCardParameters", () => {
                this.card = readCard(reader.EMVGetCardParameters());
                return `card ending in ${this.card.lastFour}`;
            }),
            step("Ask the bank", "", () => (this.answer === "00" ? "approved" : "declined")),
            step("Tell the card", "SendOnlineProcessResult", () => {
                reader.SendOnlineProcessResult(this.answer);
                if (this.answer !== "00") {
                    this.#expect("Declined", "");
                    throw new Problem("The bank declined the card.",
                        "Nothing was recorded. Ask for another card or another way to pay.");
                }
                return this.#expect("FinalConfirmation", "accepted");
            }),
            step("Confirm", "ShowFinalConfirmationWindow", () => {
                reader.ShowFinalConfirmationWindow();
                return this.#expect("Completed", "confirmed");
            }),
            step("Keep the settlement data", "EMVGetBatchData", () => {
                const data = reader.EMVGetBatchData();
                if (data === "") {
                    throw new Problem("The reader has no settlement data.", REPAIR);
                }
                return `${data.length / 2} bytes`;
            }),
            step("Disconnect the reader", "DisconnectDevice", () => {
                reader.DisconnectDevice();
                return "done";
            }),
        ];
    }

    /** Ends a payment that is not to be finished; the reader is free afterwards. */
    abandon() {
        const reader = control();
        reader.CancelCheckCard();
        reader.DisconnectDevice();
    }

    /**
     * @param {string} state what the reader has to say of itself
     * @param {string} words
     */
    #expect(state, words) {
        const text = control().EMVProcessorResult();
        if (text === "") {
            throw new Problem("The card reader does not answer.",
                "Oskerin.dll is missing or does not load: start the workbench again.");
        }
        const result = JSON.parse(text);
        if (result.state !== state) {
            throw new Problem(`The card reader says: ${result.message}`, REPAIR);
        }
        return words;
    }
}

/**
 * @param {string} title
 * @param {string} call
 * @param {() => string} run
 * @returns {Step}
 */
function step(title, call, run) {
    return { title, call, run };
}

/**
 * @param {string} data tags, lengths and values in hexadecimal text
 * @returns {Card}
 */
function readCard(data) {
    if (data === "") {
        throw new Problem("The reader has read no card.", REPAIR);
    }
    const tags = JSON.parse(control().DecodeTlvData(data, "50 5A 5F24 9F26"));
    const expiry = tags["5F24"] ?? "";
    return {
        label: textOf(tags["50"] ?? ""),
        lastFour: lastFour(tags["5A"] ?? ""),
        month: expiry.slice(2, 4),
        year: `20${expiry.slice(0, 2)}`,
        cryptogram: tags["9F26"] ?? "",
    };
}

/** @param {string} hexadecimal */
function textOf(hexadecimal) {
    return (hexadecimal.match(/../g) ?? []).map((pair) => String.fromCharCode(parseInt(pair, 16))).join("");
}
