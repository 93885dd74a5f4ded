// The browser of the tests: headless Chromium that finds the names of the workbench on this machine.

import { existsSync } from "node:fs";
import { createRequire } from "node:module";

import { thirdParty } from "./places.mjs";

const PROGRAMS = [process.env.PAYLODGE_CHROMIUM, "/usr/bin/chromium", "/usr/bin/chromium-browser", "/usr/bin/google-chrome"];
const ARGUMENTS = [
    "--host-resolver-rules=MAP *.example 127.0.0.1",
    "--disable-gpu",
    "--disable-background-networking",
    "--font-render-hinting=none",
];

/** The browser, or why there is none: a test that needs it is then skipped for that reason. */
export async function startBrowser() {
    const executablePath = PROGRAMS.find((program) => program && existsSync(program));
    if (!executablePath) {
        return { reason: "Chromium is missing: tools/setup.sh installs it" };
    }
    const { chromium } = createRequire(import.meta.url)(thirdParty("playwright-core"));
    const args = process.getuid?.() === 0 ? [...ARGUMENTS, "--no-sandbox"] : ARGUMENTS;
    try {
        return { browser: await chromium.launch({ executablePath, args, timeout: 60_000 }) };
    } catch (error) {
        return { reason: `Chromium does not start: ${String(error.message).split("\n")[0]}` };
    }
}
