// Where things are: the checkout, what was built of it, and how programs for Windows are run.

import { dirname, join, resolve } from "node:path";
import { fileURLToPath } from "node:url";

export const TOP = resolve(dirname(fileURLToPath(import.meta.url)), "../../..");
export const BUILD = process.env.PAYLODGE_BUILD ?? join(TOP, "build");
export const ARCHITECTURE = process.env.PAYLODGE_ARCHITECTURE ?? "x64";
export const WINE = process.env.PAYLODGE_WINE ?? "wine";
export const SAMPLE_COMPANY = join(BUILD, "riverside.lhcompany");

/** What third-party.sh fetched. */
export function thirdParty(...path) {
    return join(TOP, "build", "third-party", ...path);
}

/** The name under which Windows programs see a file of this machine. */
export function windowsPath(path) {
    return "Z:" + resolve(path).replaceAll("/", "\\");
}
