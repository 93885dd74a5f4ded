// @ts-check
// Making and finding elements. Text only ever enters the page as text, never as markup.

/**
 * @typedef {string | number | Node | null | undefined | false} Child
 * @typedef {Record<string, string | number | boolean | undefined | ((event: any) => void)>} Attributes
 */

/**
 * An element with attributes, listeners (`onclick: …`) and children.
 * @template {keyof HTMLElementTagNameMap} Tag
 * @param {Tag} tag
 * @param {Attributes} [attributes] `true` stands for an attribute without a value, `false` and `undefined` for none
 * @param {...(Child | Child[])} children
 * @returns {HTMLElementTagNameMap[Tag]}
 */
export function el(tag, attributes = {}, ...children) {
    const element = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes)) {
        if (typeof value === "function") {
            element.addEventListener(name.slice(2), value);
        } else if (value !== undefined && value !== false) {
            element.setAttribute(name, value === true ? "" : String(value));
        }
    }
    element.append(...nodes(children));
    return element;
}

/**
 * Replaces everything in an element.
 * @param {Element} element
 * @param {...(Child | Child[])} children
 */
export function fill(element, ...children) {
    element.replaceChildren(...nodes(children));
}

/**
 * The element that a page has to have.
 * @template {Element} [Kind=HTMLElement]
 * @param {string} selector
 * @param {ParentNode} [within]
 * @returns {Kind}
 */
export function find(selector, within = document) {
    const element = within.querySelector(selector);
    if (!element) {
        throw new Error(`The page has no element ${selector}`);
    }
    return /** @type {Kind} */ (element);
}

/**
 * The trimmed value of a field of a form.
 * @param {HTMLFormElement} form
 * @param {string} name
 */
export function valueOf(form, name) {
    return String(new FormData(form).get(name) ?? "").trim();
}

/**
 * Makes a select offer these values, and keeps the choice where it is still there.
 * @param {HTMLSelectElement} select
 * @param {(string | [value: string, label: string])[]} choices
 * @param {string} [preferred]
 */
export function offer(select, choices, preferred) {
    const chosen = select.value;
    const pairs = choices.map((choice) => (typeof choice === "string" ? [choice, choice] : choice));
    fill(select, pairs.map(([value, label]) => el("option", { value }, label)));
    const wanted = [chosen, preferred].find((value) => pairs.some((pair) => pair[0] === value));
    if (wanted !== undefined) {
        select.value = wanted;
    }
}

/** Lets the browser draw what has changed; calls to the component hold everything else up. */
export function nextFrame() {
    return new Promise((resolve) => requestAnimationFrame(() => setTimeout(resolve, 0)));
}

/**
 * @param {(Child | Child[])[]} children
 * @returns {(string | Node)[]}
 */
function nodes(children) {
    return children
        .flat()
        .filter((child) => child !== null && child !== undefined && child !== false)
        .map((child) => (child instanceof Node ? child : String(child)));
}
