// What the workbench's bridge script gives this page besides the component's own objects, which paylodge.d.ts declares.
/// <reference path="../../docs/page-kit/paylodge.d.ts" />

/** What the control is as an element. */
interface PaylodgeControlElement {
    attachEvent(name: string, handler: (...values: any[]) => void): void;
    detachEvent(name: string, handler: (...values: any[]) => void): void;
}

interface WorkbenchState {
    company: { file: string; name: string };
    version: string;
    architecture: string;
    site: string;
    browser: { mode: "page" | "none"; instance: string };
    channel: string;
    pages: { page: string; address: string; approved: boolean; objects: number; connected: boolean }[];
    objects: number;
    faults: WorkbenchFault[];
    calls: string[];
}

interface WorkbenchFault {
    call: string;
    hresult: string | number;
    hresultName: string;
    nth: number;
}

interface WorkbenchLogEntry {
    n: number;
    time: string;
    page?: string;
    kind: string;
    object?: number;
    class?: string;
    member?: string;
    arguments?: unknown[];
    result?: unknown;
    out?: Record<string, unknown>;
    hresult?: string;
    hresultName?: string;
    microseconds?: number;
    traffic?: { request: string; response: string }[];
    text?: string;
    error?: string;
}

interface WorkbenchTransaction {
    type: string;
    id: string;
    date: string;
    number: string;
    name: string;
    memo: string;
    total: string;
    postings: { account: string; name: string; amount: string }[];
}

interface Window {
    paylodgeWorkbench?: {
        readonly state: "connecting" | "connected" | "lost";
        readonly approved: boolean | null;
        readonly page: string;
        readonly company: string;
        request(method: string, path: string, body?: unknown): Promise<any>;
        watch(isOn: boolean): void;
    };
    app: { lhProxy: Record<string, (...values: string[]) => void> };
    $: { fn: Record<string, (...values: string[]) => void> };
}
