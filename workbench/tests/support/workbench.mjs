// The workbench as a test uses it: started on a fresh company file, ended, and its books checked.

import { execFile, spawn } from "node:child_process";
import { createHash } from "node:crypto";
import { copyFileSync, mkdtempSync, readFileSync } from "node:fs";
import { createServer } from "node:net";
import { join } from "node:path";
import { promisify } from "node:util";

import { ARCHITECTURE, BUILD, SAMPLE_COMPANY, WINE, windowsPath } from "./places.mjs";

const STARTING_SECONDS = 60;
const ENDING_SECONDS = 30;
const run = promisify(execFile);

export class Workbench {
    #program;
    #output = "";
    #checked = "";

    /** A fresh copy of the sample company, which this workbench and those that follow it work on. */
    constructor({ page } = {}) {
        this.page = page;
        this.folder = mkdtempSync(join(process.cwd(), "workbench-"));
        this.company = join(this.folder, "riverside.lhcompany");
        copyFileSync(SAMPLE_COMPANY, this.company);
        this.port = 0;
    }

    static async start(options) {
        const workbench = new Workbench(options);
        await workbench.start();
        return workbench;
    }

    /** The address at which the component's site lock accepts pages. */
    get address() {
        return `http://dev.ledgerhall.example:${this.port}/`;
    }

    get processId() {
        return this.#program.pid;
    }

    /** Starts the program; one that was ended before starts again on the same port. */
    async start() {
        this.port ||= await freePort();
        const words = ["--company", windowsPath(this.company), "--port", String(this.port), "--ends-with-input"];
        if (this.page) {
            words.push("--page", windowsPath(this.page));
        }
        this.#output = "";
        this.#program = spawn(WINE, [join(BUILD, ARCHITECTURE, "workbench", "workbench.exe"), ...words], { stdio: ["pipe", "pipe", "pipe"] });
        this.exited = new Promise((resolve) => this.#program.on("exit", (code, signal) => resolve(code ?? signal)));
        for (const stream of [this.#program.stdout, this.#program.stderr]) {
            stream.on("data", (data) => (this.#output += data));
        }
        await this.#waitForAddress();
    }

    async #waitForAddress() {
        const until = Date.now() + STARTING_SECONDS * 1000;
        let ending;
        void this.exited.then((code) => (ending = code));
        while (!this.#output.includes(`:${this.port}/`)) {
            if (ending !== undefined || Date.now() > until) {
                throw new Error(`the workbench did not start (${ending ?? "no address"}): ${this.#output}`);
            }
            await new Promise((resolve) => setTimeout(resolve, 50));
        }
    }

    /** Ends the program as its user would; throws when that does not succeed. */
    async stop() {
        if (!this.#program || this.#program.exitCode !== null || this.#program.signalCode !== null) {
            return;
        }
        this.#program.stdin.end();
        const late = new Promise((resolve) => setTimeout(() => resolve("late"), ENDING_SECONDS * 1000).unref());
        const code = await Promise.race([this.exited, late]);
        if (code !== 0) {
            this.#program.kill("SIGKILL");
            throw new Error(`the workbench ended with ${code}: ${this.#output}`);
        }
    }

    /**
     * Throws when the books are not true. While the workbench has its file open, a copy of it is checked; one that is the
     * same as at the last time is true still.
     */
    async checkBooks() {
        const copy = join(this.folder, "checked.lhcompany");
        copyFileSync(this.company, copy);
        const digest = createHash("sha256").update(readFileSync(copy)).digest("hex");
        if (digest !== this.#checked) {
            await company("check", windowsPath(copy));
            this.#checked = digest;
        }
    }
}

/** A command of company.exe; throws with what it printed when it fails. */
export async function company(...words) {
    try {
        return (await run(WINE, [join(BUILD, ARCHITECTURE, "refhost", "company.exe"), ...words])).stdout;
    } catch (error) {
        throw new Error(`company ${words.join(" ")}: ${error.stdout}${error.stderr}`);
    }
}

function freePort() {
    return new Promise((resolve, reject) => {
        const server = createServer();
        server.once("error", reject);
        server.listen(0, "127.0.0.1", () => {
            const { port } = server.address();
            server.close(() => resolve(port));
        });
    });
}
