// @ts-check
// Requests and responses in LHXML: written as text, read as a document.

import { Refusal } from "./failures.js";

/** @param {string} text */
export function escapeXml(text) {
    const entities = { "&": "&amp;", "<": "&lt;", ">": "&gt;", '"': "&quot;", "'": "&apos;" };
    return text.replace(/[&<>"']/g, (character) => entities[/** @type {keyof entities} */ (character)]);
}

/**
 * An element that holds text; nothing when there is none.
 * @param {string} name
 * @param {string} text
 */
export function field(name, text) {
    return text === "" ? "" : `<${name}>${escapeXml(text)}</${name}>`;
}

/**
 * An element that holds others.
 * @param {string} name
 * @param {...string} content
 */
export function group(name, ...content) {
    return `<${name}>${content.join("")}</${name}>`;
}

/**
 * A reference to a record by its name.
 * @param {string} name
 * @param {string} fullName
 */
export function reference(name, fullName) {
    return fullName === "" ? "" : group(name, field("FullName", fullName));
}

/**
 * A request, such as `AccountQueryRq`.
 * @param {string} name
 * @param {string} id comes back in the response
 * @param {...string} content
 */
export function request(name, id, ...content) {
    return `<${name} requestID="${escapeXml(id)}">${content.join("")}</${name}>`;
}

/**
 * The root element of a text that is one XML document, or a run of elements.
 * @param {string} text
 */
export function readXml(text) {
    const parser = new DOMParser();
    const whole = parser.parseFromString(text, "application/xml");
    if (!whole.querySelector("parsererror")) {
        return whole.documentElement;
    }
    const run = parser.parseFromString(`<run>${text}</run>`, "application/xml");
    return run.querySelector("parsererror") ? undefined : run.documentElement;
}

/**
 * The texts of all elements of a name, in a result of the component.
 * @param {string} xml
 * @param {string} name
 */
export function texts(xml, name) {
    const root = readXml(xml);
    return root ? Array.from(root.getElementsByTagName(name), (element) => element.textContent ?? "") : [];
}

/**
 * The text of the first element on a path below this one; empty without it.
 * @param {Element} element
 * @param {...string} path
 */
export function textAt(element, ...path) {
    /** @type {Element | undefined} */
    let found = element;
    for (const name of path) {
        found = found && Array.from(found.children).find((child) => child.nodeName === name);
    }
    return found?.textContent ?? "";
}

/**
 * The records in a result, such as every `AccountRet`.
 * @param {string | Element} from
 * @param {string} name
 */
export function records(from, name) {
    const root = typeof from === "string" ? readXml(from) : from;
    return root ? Array.from(root.getElementsByTagName(name)) : [];
}

/**
 * The response of this name; throws a refusal when its status is an error, or when there is none.
 * @param {string} text
 * @param {string} name such as `InvoiceQueryRs`
 */
export function response(text, name) {
    const found = readXml(text)?.getElementsByTagName(name)[0];
    if (!found) {
        throw new Refusal("", `Ledgerhall's response holds no ${name}.`);
    }
    throwIfRefused(found);
    return found;
}

/** @param {Element} element a response with its status */
export function throwIfRefused(element) {
    if (element.getAttribute("statusSeverity") === "Error") {
        throw refusalOf(element);
    }
}

/** @param {Element} element a response with its status */
export function refusalOf(element) {
    return new Refusal(element.getAttribute("statusCode") ?? "", element.getAttribute("statusMessage") ?? "");
}

/**
 * The same XML with a line for each element; text that is no XML as it is.
 * @param {string} text
 */
export function formatXml(text) {
    const trimmed = text.trim();
    const root = trimmed.startsWith("<") ? readXml(trimmed) : undefined;
    if (!root) {
        return text;
    }
    const head = trimmed.match(/^(?:<\?[^>]*\?>\s*)*/)?.[0].trim().replaceAll(/\?>\s*</g, "?>\n<") ?? "";
    const elements = root.nodeName === "run" ? Array.from(root.children) : [root];
    return [...(head ? [head] : []), ...elements.flatMap((element) => lines(element, ""))].join("\n");
}

/**
 * @param {Element} element
 * @param {string} indent
 * @returns {string[]}
 */
function lines(element, indent) {
    const attributes = Array.from(element.attributes, ({ name, value }) => ` ${name}="${escapeXml(value)}"`).join("");
    const start = `${indent}<${element.nodeName}${attributes}`;
    if (element.children.length > 0) {
        const inner = Array.from(element.children).flatMap((child) => lines(child, indent + "  "));
        return [`${start}>`, ...inner, `${indent}</${element.nodeName}>`];
    }
    const text = element.textContent ?? "";
    return [text === "" ? `${start}/>` : `${start}>${escapeXml(text)}</${element.nodeName}>`];
}
