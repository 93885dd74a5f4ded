// What the page is made of and needs no browser: types, masks, amounts, requests, words for failures.

import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { existsSync, readdirSync, readFileSync } from "node:fs";
import { join } from "node:path";
import { test } from "node:test";

import { NOTIFICATIONS } from "../page/bench/notification_table.js";
import { Problem, Refusal, explain, hex, numberOf } from "../page/parts/failures.js";
import { escapeXml, field, group, reference, request } from "../page/parts/lhxml.js";
import { lastFour, maskCards } from "../page/parts/masking.js";
import { amountOf, centsOf, readAmount, showAmount, showCents } from "../page/parts/money.js";
import { TOP, thirdParty } from "./support/places.mjs";

const PAGE = join(TOP, "workbench", "page");

test("the page has the types that paylodge.d.ts declares", () => {
    const compiler = thirdParty("typescript", "lib", "tsc.js");
    assert.ok(existsSync(compiler), "tools/third-party.sh fetches the compiler");
    try {
        execFileSync("node", [compiler, "-p", join(PAGE, "tsconfig.json")], { encoding: "utf-8", stdio: "pipe" });
    } catch (error) {
        assert.fail(error.stdout);
    }
});

test("every module of the page asks to be checked", () => {
    const modules = readdirSync(PAGE, { recursive: true }).filter((name) => name.endsWith(".js"));
    assert.ok(modules.length > 15);
    for (const name of modules) {
        assert.match(readFileSync(join(PAGE, name), "utf-8"), /^\/\/ @ts-check\n/, name);
    }
});

test("card numbers are masked but for their last four digits", () => {
    assert.equal(maskCards("paid with 4000000000000002 today"), "paid with •••• 0002 today");
    assert.equal(maskCards("4000 0000 0000 0002"), "•••• 0002");
    assert.equal(maskCards("4000-0000-0000-0002"), "•••• 0002");
    assert.equal(maskCards("378282246310005"), "•••• 0005");
    assert.equal(maskCards("4222222222222"), "•••• 2222");
    assert.equal(maskCards("4000000000000000006"), "•••• 0006");
});

test("numbers that no card has stay as they are", () => {
    for (const number of ["4000000000000003", "000123456789", "20261122034512", "1234567890123456789012"]) {
        assert.equal(maskCards(number), number);
    }
});

test("the card's number in chip data is masked, whatever its check digit", () => {
    assert.equal(maskCards("5A0800000000000011195F2403301231"), "5A08•••• 11195F2403301231");
    assert.equal(maskCards('{"5A":"0000000000001119","5F24":"301231"}'), '{"5A":"•••• 1119","5F24":"301231"}');
    assert.equal(maskCards("57114000000000000002D30122010000000000"), "57114000000000000002D30122010000000000".replace(/4000.*/, "•••• 0002"));
    assert.equal(lastFour("4000000000000002D3012"), "0002");
});

test("chip data without a whole number in it stays", () => {
    for (const data of ["5A", "5A0812", "5A03123456"]) {
        assert.equal(maskCards(data), data);
    }
});

test("amounts are whole cents", () => {
    assert.equal(centsOf("12.5"), 1250);
    assert.equal(centsOf("-0.07"), -7);
    assert.equal(centsOf("0.29"), 29);
    assert.equal(centsOf("1.005"), undefined);
    assert.equal(centsOf("1e3"), undefined);
    assert.equal(centsOf(""), undefined);
    assert.equal(amountOf(1250), "12.50");
    assert.equal(amountOf(7), "0.07");
});

test("amounts are shown as people read them", () => {
    assert.equal(showCents(123456789), "1,234,567.89");
    assert.equal(showCents(-2000), "−20.00");
    assert.equal(showAmount("50000.00"), "50,000.00");
    assert.equal(showAmount("none"), "none");
});

test("an amount to pay is above zero", () => {
    assert.equal(readAmount("1,250.5"), 125050);
    for (const text of ["0", "-1", "abc", "", "1.234", "12345678901"]) {
        assert.throws(() => readAmount(text), RangeError, text);
    }
});

test("requests are written without empty elements and with their text escaped", () => {
    assert.equal(escapeXml(`a<b & "c" 'd'>`), "a&lt;b &amp; &quot;c&quot; &apos;d&apos;&gt;");
    assert.equal(field("Memo", ""), "");
    assert.equal(reference("CustomerRef", ""), "");
    assert.equal(
        request("CustomerQueryRq", `1"`, group("NameFilter", field("Name", "Juniper & Sons"))),
        '<CustomerQueryRq requestID="1&quot;"><NameFilter><Name>Juniper &amp; Sons</Name></NameFilter></CustomerQueryRq>');
});

test("a failure is told with what to do and the number for those who look for the cause", () => {
    const failure = Object.assign(new Error("E_FAIL"), { number: -2147467259, hresultName: "E_FAIL" });
    const { what, todo, detail } = explain(failure);
    assert.equal(what, "Ledgerhall could not do it and did not say why.");
    assert.match(todo, /clear it/);
    assert.equal(detail, "0x80004005 E_FAIL");
});

test("an unknown HRESULT is told as well", () => {
    const { what, todo, detail } = explain(Object.assign(new Error(), { number: 0x8badf00d }));
    assert.equal(what, "Ledgerhall could not do it.");
    assert.notEqual(todo, "");
    assert.equal(detail, "0x8BADF00D");
});

test("a refused request is told in Ledgerhall's own words", () => {
    const { what, todo, detail } = explain(new Refusal("2040", "there is no customer named \"X\""));
    assert.equal(what, "There is no customer named \"X\".");
    assert.equal(todo, "Choose a name that is in the company file.");
    assert.equal(detail, "Status 2040");
});

test("what the page itself found wrong needs no number", () => {
    assert.deepEqual(explain(new Problem("The bank declined the card.", "Ask for another card.")),
        { what: "The bank declined the card.", todo: "Ask for another card.", detail: "" });
});

test("numbers of HRESULTs are signed, and shown as the platform writes them", () => {
    assert.equal(hex(-2147467259), "0x80004005");
    assert.equal(numberOf({ number: 0x80004005 }), -2147467259);
    assert.equal(numberOf(new Error("x")), undefined);
    assert.equal(numberOf(null), undefined);
});

test("every notification of the control is in the operator's panel, under the names of the type library", () => {
    const declarations = readFileSync(join(TOP, "docs/page-kit/paylodge.d.ts"), "utf-8");
    const control = declarations.slice(declarations.indexOf("interface PaylodgeControl {"), declarations.indexOf("interface PaylodgeControlEvents {"));
    const events = declarations.slice(declarations.indexOf("interface PaylodgeControlEvents {"));
    assert.equal(NOTIFICATIONS.length, 12);
    for (const { method, event, arguments: values } of NOTIFICATIONS) {
        const declared = control.match(new RegExp(`\\n    ${method}\\(([^)]*)\\)`))?.[1];
        assert.ok(declared, method);
        assert.equal(values.map(({ name, type }) => `${name}: ${type}`).join(", "), declared);
        assert.match(events, new RegExp(`\\n    ${event}\\(`));
    }
    assert.equal(new Set(NOTIFICATIONS.map(({ event }) => event)).size, 12);
});
