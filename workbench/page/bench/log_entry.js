// @ts-check
// An entry of the log in words.

import { el } from "../parts/dom.js";
import { formatXml } from "../parts/lhxml.js";
import { maskCards } from "../parts/masking.js";

const CONTROL_CLASS = "{00A0CCCE-89E6-4779-AACD-E774651CB5AD}";
const SHORT_ARGUMENT = 28;
const SHORT_LINE = 120;

/** @param {WorkbenchLogEntry} entry */
export function isFailure(entry) {
    return entry.kind === "refused" || Boolean(entry.error) || parseInt(entry.hresult ?? "0", 16) >= 0x80000000;
}

/**
 * @param {WorkbenchLogEntry} entry
 * @returns {{title: string, outcome: string, duration: string}}
 */
export function describeEntry(entry) {
    const duration = entry.microseconds === undefined ? "" : showDuration(entry.microseconds);
    const outcome = entry.error ? "failed" : entry.kind === "refused" ? "refused" : entry.hresultName || entry.hresult || "";
    return { title: shorten(maskCards(titleOf(entry)), SHORT_LINE), outcome, duration };
}

/** @param {WorkbenchLogEntry} entry */
function titleOf(entry) {
    const call = entry.member ? `${entry.member}(${(entry.arguments ?? []).map(shortValue).join(", ")})` : "";
    switch (entry.kind) {
        case "create":
            return `Created ${nameOfClass(entry)}`;
        case "release":
            return `Released ${nameOfClass(entry)}`;
        case "push":
            return `Push ${call}`;
        case "event":
            return `Event ${call}`;
        case "script":
            return `Script ${entry.text ?? ""}`;
        case "delivered":
            return entry.error ? `The page raised an error: ${entry.error}` : "Delivered to the page";
        case "fault":
            return entry.text || `Fault ${entry.member ?? ""}`;
        case "page":
            return `Page ${entry.page ?? ""} ${entry.text ?? ""}`;
        case "request":
            return "Request of the host";
        default:
            return call || entry.text || entry.kind;
    }
}

/**
 * What belongs to an entry, part by part.
 * @param {WorkbenchLogEntry} entry
 * @returns {HTMLElement[]}
 */
export function detailsOf(entry) {
    const facts = [
        entry.page && `page ${entry.page}`,
        entry.object && `object ${entry.object}`,
        entry.hresult && `${entry.hresult} ${entry.hresultName ?? ""}`.trim(),
    ].filter(Boolean).join(" · ");
    return [
        ...(facts ? [el("p", { class: "facts" }, facts)] : []),
        ...(entry.arguments ?? []).map((value, index) => part(`Argument ${index + 1}`, wholeValue(value))),
        ...(entry.result === undefined ? [] : [part("Result", wholeValue(entry.result))]),
        ...(entry.out ? [part("Results by reference", JSON.stringify(entry.out, null, 2))] : []),
        ...(entry.error ? [part("Error", entry.error)] : []),
        ...(entry.text ? [part("Text", entry.text)] : []),
        ...(entry.traffic ?? []).flatMap(({ request, response }) => [
            part("LHXML to Ledgerhall", formatXml(request)),
            part("LHXML from Ledgerhall", formatXml(response)),
        ]),
    ];
}

/**
 * @param {string} title
 * @param {string} text
 */
function part(title, text) {
    return el("div", { class: "part" }, el("h3", {}, title), el("pre", { tabindex: 0, "aria-label": title }, maskCards(text)));
}

/** @param {unknown} value */
function shortValue(value) {
    return shorten(JSON.stringify(plain(value)) ?? "undefined", SHORT_ARGUMENT);
}

/** @param {unknown} value */
function wholeValue(value) {
    const known = plain(value);
    return typeof known === "string" ? formatXml(known) || "(empty)" : JSON.stringify(known) ?? "(nothing)";
}

/** Values travel as themselves, other than "nothing" and those by reference. @param {unknown} value */
function plain(value) {
    const { type, value: inner } = /** @type {{type?: string, value?: unknown}} */ (value ?? {});
    return type === "empty" ? undefined : type === "reference" ? inner : value;
}

/**
 * @param {string} text
 * @param {number} length
 */
function shorten(text, length) {
    const line = text.replace(/\s+/g, " ");
    return line.length > length ? `${line.slice(0, length - 1)}…` : line;
}

/** @param {WorkbenchLogEntry} entry */
function nameOfClass(entry) {
    return entry.class?.toUpperCase() === CONTROL_CLASS ? "the control" : entry.class ?? "an object";
}

/** @param {number} microseconds */
function showDuration(microseconds) {
    if (microseconds < 1000) {
        return `${microseconds} µs`;
    }
    const milliseconds = microseconds / 1000;
    return `${milliseconds < 10 ? milliseconds.toFixed(1) : Math.round(milliseconds)} ms`;
}
