// Gives a page in any browser what it has in Ledgerhall's: ActiveXObject, and the control as an <object> element. The
// workbench serves it as the first script of every document; workbench/README.md describes what a page can do with it.
(function () {
    "use strict";

    const CONTROL_CLASS = "{00A0CCCE-89E6-4779-AACD-E774651CB5AD}";
    const SERVER_UNAVAILABLE = 0x800706ba | 0;
    const DISCONNECTED = 0x80010108 | 0;
    const NO_SUCH_MEMBER = 0x800a01b6 | 0;
    const TYPE_MISMATCH = 0x80020005 | 0;
    const RECONNECT_MILLISECONDS = 500;

    const ownScript = document.currentScript;
    const nonce = ownScript.nonce;
    let page = ownScript.dataset.page;
    let token = ownScript.dataset.token;
    // The document stays as its author wrote it.
    ownScript.remove();

    // Errors, as script sees the failure of a member.

    function failure(number, message, name) {
        const error = new Error(message);
        error.number = number;
        error.description = message;
        error.hresult = "0x" + (number >>> 0).toString(16).toUpperCase().padStart(8, "0");
        error.hresultName = name || error.hresult;
        return error;
    }

    function unavailable() {
        return failure(SERVER_UNAVAILABLE, "The RPC server is unavailable: the workbench does not answer.", "RPC_S_SERVER_UNAVAILABLE");
    }

    function disconnected() {
        return failure(DISCONNECTED, "The object has disconnected from its clients: create it again.", "RPC_E_DISCONNECTED");
    }

    // Requests

    // Resolves nothing and waits: members of the component are synchronous.
    function send(method, path, body) {
        const request = new XMLHttpRequest();
        request.open(method, path, false);
        request.setRequestHeader("X-Workbench-Token", token);
        if (body !== undefined) {
            request.setRequestHeader("Content-Type", "application/json");
        }
        try {
            request.send(body === undefined ? null : toJson(body));
        } catch (error) {
            throw unavailable();
        }
        return { status: request.status, reply: readJson(request.responseText) };
    }

    function readJson(text) {
        try {
            return JSON.parse(text);
        } catch (error) {
            return {};
        }
    }

    // Half of a surrogate pair cannot be sent as UTF-8.
    function toJson(body) {
        return JSON.stringify(body).replace(/\\(?:u(d[89a-f][0-9a-f]{2})|.)/g, (escaped, half) => (half ? "\\ufffd" : escaped));
    }

    function errorOf(status, reply) {
        const described = reply.error || {};
        const message = described.message || "The workbench answered with the status " + status + ".";
        if (typeof described.number === "number") {
            return failure(described.number, message, described.hresultName);
        }
        const error = new Error(message);
        error.status = status;
        return error;
    }

    function ask(path, body) {
        const { status, reply } = send("POST", path, body);
        if (status === 403) {
            // The server was started anew: what this object belonged to is gone.
            throw disconnected();
        }
        if (status !== 200 || reply.error) {
            throw errorOf(status, reply);
        }
        return reply;
    }

    // Values

    function isReference(value) {
        return value !== null && typeof value === "object" && "value" in value;
    }

    function encode(value) {
        switch (typeof value) {
            case "string":
            case "boolean":
                return value;
            case "undefined":
                return { type: "empty" };
            case "number":
                return Number.isFinite(value) ? value : String(value);
            case "bigint":
                return String(value);
        }
        if (value === null) {
            return null;
        }
        if (value instanceof String || value instanceof Number || value instanceof Boolean) {
            return encode(value.valueOf());
        }
        if (isReference(value)) {
            return { type: "reference", value: encodeReferenced(value.value) };
        }
        throw failure(TYPE_MISMATCH, "An object cannot be passed here.", "DISP_E_TYPEMISMATCH");
    }

    function encodeReferenced(value) {
        const encoded = encode(value);
        return encoded !== null && typeof encoded === "object" && encoded.type === "reference" ? null : encoded;
    }

    // Objects

    // An object of the component, by the number that the server knows it by.
    class RemoteObject {
        constructor(className) {
            const description = create(className);
            this.number = description.object;
            this.page = page;
            this.members = new Map(description.members.map((member) => [member.name.toLowerCase(), member]));
            this.events = new Map(description.events.map((event) => [event.name.toLowerCase(), event.name]));
            this.methods = new Map();
            this.listeners = new Map();
            if (this.events.size > 0) {
                objectsWithEvents.set(this.number, this);
            }
        }

        member(name) {
            return typeof name === "string" ? this.members.get(name.toLowerCase()) : undefined;
        }

        call(member, kind, values) {
            if (this.page !== page) {
                throw disconnected();
            }
            const reply = ask("/workbench/call", {
                page: this.page,
                object: this.number,
                member: member.name,
                kind,
                arguments: Array.from(values, encode),
            });
            for (const [index, value] of Object.entries(reply.out || {})) {
                values[index].value = value;
            }
            return kind === "call" && member.result === "void" ? undefined : reply.result;
        }

        get(member) {
            if (member.kind === "property") {
                return this.call(member, "get", []);
            }
            if (!this.methods.has(member.name)) {
                const remote = this;
                this.methods.set(member.name, function () {
                    return remote.call(member, "call", arguments);
                });
            }
            return this.methods.get(member.name);
        }

        put(name, value) {
            const member = this.member(name);
            if (!member || !member.put) {
                throw failure(NO_SUCH_MEMBER, "Object doesn't support this property or method", "0x800A01B6");
            }
            this.call(member, "put", [value]);
        }

        // Events. Names count in any letter case, with or without "on" in front.

        eventName(name) {
            const lower = String(name).toLowerCase();
            return this.events.get(lower) || (lower.startsWith("on") ? this.events.get(lower.slice(2)) : undefined);
        }

        attach(name, listener) {
            const event = this.eventName(name);
            if (!event || typeof listener !== "function") {
                return false;
            }
            this.listeners.set(event, [...(this.listeners.get(event) || []), listener]);
            return true;
        }

        detach(name, listener) {
            const event = this.eventName(name);
            const listeners = this.listeners.get(event) || [];
            const index = listeners.indexOf(listener);
            if (index >= 0) {
                this.listeners.set(event, listeners.filter((_, i) => i !== index));
            }
        }

        release() {
            objectsWithEvents.delete(this.number);
            if (this.page === page && state === "connected") {
                request("POST", "/workbench/release", { page: this.page, object: this.number }).catch(() => {});
            }
            this.page = null;
        }
    }

    const objectsWithEvents = new Map();

    function create(className) {
        const wanted = () => send("POST", "/workbench/objects", { page, class: className });
        let { status, reply } = wanted();
        if (status === 403 || (status === 404 && reply.error && reply.error.number === DISCONNECTED)) {
            // This document outlived its server, or its own page there.
            renew();
            ({ status, reply } = wanted());
        }
        if (status !== 200 || reply.error) {
            throw errorOf(status, reply);
        }
        return reply;
    }

    function renew() {
        const { status, reply } = send("GET", sessionPath());
        if (status !== 200) {
            throw errorOf(status, reply);
        }
        startSession(reply);
    }

    const proxyHandler = {
        get(target, name) {
            const member = target.remote.member(name);
            if (member) {
                return target.remote.get(member);
            }
            if (name === "attachEvent") {
                return (event, listener) => target.remote.attach(event, listener);
            }
            if (name === "detachEvent") {
                return (event, listener) => target.remote.detach(event, listener);
            }
            return Object.prototype[name];
        },
        set(target, name, value) {
            target.remote.put(String(name), value);
            return true;
        },
        has: (target, name) => target.remote.member(name) !== undefined,
        ownKeys: () => [],
        getOwnPropertyDescriptor: () => undefined,
        defineProperty: () => false,
        deleteProperty: () => false,
        getPrototypeOf: () => ActiveXObject.prototype,
    };

    function ActiveXObject(name) {
        return new Proxy({ remote: new RemoteObject(String(name)) }, proxyHandler);
    }
    Object.defineProperty(window, "ActiveXObject", { value: ActiveXObject, writable: true, configurable: true });

    // Elements

    const remotes = new WeakMap();
    const handlers = new WeakMap();

    function isControl(node) {
        // One that has become a control has another prototype since.
        const isObject = remotes.has(node) || node instanceof HTMLObjectElement;
        const classId = isObject ? node.getAttribute("classid") : null;
        return classId !== null && classId.trim().replace(/^clsid:\{?([^}]*)\}?$/i, "{$1}").toUpperCase() === CONTROL_CLASS;
    }

    // The element's own members come before those of the control, which come before what the page adds.
    const elementHandler = {
        get(target, name, element) {
            const remote = remotes.get(element);
            if (!remote || Reflect.has(target, name)) {
                return Reflect.get(target, name, element);
            }
            const member = remote.member(name);
            if (member) {
                return remote.get(member);
            }
            if (name === "attachEvent") {
                return (event, listener) => remotes.get(element).attach(event, listener);
            }
            if (name === "detachEvent") {
                return (event, listener) => remotes.get(element).detach(event, listener);
            }
            return isHandlerName(remote, name) ? handlers.get(element)[remote.eventName(name)] || null : undefined;
        },
        set(target, name, value, element) {
            const remote = remotes.get(element);
            if (!remote || Reflect.has(target, name)) {
                return Reflect.set(target, name, value, element);
            }
            if (remote.member(name)) {
                remote.put(name, value);
                return true;
            }
            if (isHandlerName(remote, name)) {
                handlers.get(element)[remote.eventName(name)] = value;
                return true;
            }
            return Reflect.defineProperty(element, name, { value, writable: true, enumerable: true, configurable: true });
        },
        has: (target, name) => Reflect.has(target, name),
    };
    const controlPrototype = new Proxy(HTMLObjectElement.prototype, elementHandler);

    function isHandlerName(remote, name) {
        return typeof name === "string" && /^on/i.test(name) && remote.eventName(name) !== undefined;
    }

    function becomeControl(element) {
        const before = remotes.get(element);
        if (before && before.page === page) {
            return;
        }
        const remote = new RemoteObject(CONTROL_CLASS);
        if (before) {
            // The page's listeners outlive the server.
            remote.listeners = before.listeners;
            objectsWithEvents.delete(before.number);
        } else {
            handlers.set(element, {});
            Object.setPrototypeOf(element, controlPrototype);
            const addListener = element.addEventListener;
            element.addEventListener = function (name, listener, options) {
                addListener.call(element, remotes.get(element).eventName(name) || name, listener, options);
            };
        }
        remote.element = element;
        remotes.set(element, remote);
    }

    function tryToBecomeControl(element) {
        try {
            becomeControl(element);
        } catch (error) {
            console.error("The control could not be created: " + error.message);
        }
    }

    function controlsIn(node) {
        if (!(node instanceof Element)) {
            return [];
        }
        return [node, ...node.querySelectorAll("object")].filter(isControl);
    }

    // Before the parser runs a script, it reports what it has read until then.
    new MutationObserver((changes) => {
        for (const change of changes) {
            for (const node of change.type === "attributes" ? [change.target] : change.addedNodes) {
                controlsIn(node).forEach(tryToBecomeControl);
            }
            for (const node of change.removedNodes) {
                for (const element of controlsIn(node)) {
                    if (!element.isConnected && remotes.has(element)) {
                        remotes.get(element).release();
                    }
                }
            }
        }
    }).observe(document, { childList: true, subtree: true, attributes: true, attributeFilter: ["classid"] });

    // An element that a script makes is used by the same script.
    const setAttribute = Element.prototype.setAttribute;
    HTMLObjectElement.prototype.setAttribute = function (name, value) {
        setAttribute.call(this, name, value);
        if (String(name).toLowerCase() === "classid" && isControl(this)) {
            tryToBecomeControl(this);
        }
    };
    Object.defineProperty(HTMLObjectElement.prototype, "classid", {
        get() {
            return this.getAttribute("classid") || "";
        },
        set(value) {
            this.setAttribute("classid", value);
        },
        configurable: true,
    });

    // What comes from the server

    let socket = null;
    let state = "connecting";
    let approved = null;
    let company = "";
    let isWatching = false;
    let wasLost = false;
    let isParsed = false;
    document.addEventListener("DOMContentLoaded", () => (isParsed = true), { once: true });

    function tell(message) {
        if (socket && socket.readyState === WebSocket.OPEN) {
            socket.send(toJson(message));
        }
    }

    function runScript(text) {
        let problem = null;
        const onError = (event) => {
            problem = event.message || String(event.error);
        };
        const script = document.createElement("script");
        script.nonce = nonce;
        script.textContent = text;
        window.addEventListener("error", onError);
        (document.head || document.documentElement).appendChild(script);
        window.removeEventListener("error", onError);
        script.remove();
        return problem;
    }

    function scriptsFor(element, event) {
        return Array.from(document.querySelectorAll("script[for][event]"), (script) => {
            const target = script.getAttribute("for");
            const [, name, names] = /^\s*([^(\s]+)\s*(?:\(([^)]*)\))?\s*$/.exec(script.getAttribute("event")) || [];
            const isMeant = target !== "" && (target === element.id || target === element.getAttribute("name"));
            return isMeant && remotes.get(element).eventName(name || "") === event
                ? (...values) => new Function(names || "", script.text).apply(element, values)
                : null;
        }).filter(Boolean);
    }

    function listenersOf(remote, name) {
        const element = remote.element;
        const listeners = [...(remote.listeners.get(name) || [])];
        if (element) {
            const handler = handlers.get(element)[name];
            if (typeof handler === "function") {
                listeners.unshift(handler);
            }
            listeners.push(...scriptsFor(element, name), (...values) => {
                const event = new Event(name);
                event.arguments = values;
                element.dispatchEvent(event);
            });
        }
        return listeners;
    }

    // One listener that fails does not keep the event from the others.
    function raise(remote, name, values) {
        let problem = null;
        for (const listener of listenersOf(remote, name)) {
            try {
                listener.apply(remote.element || null, values);
            } catch (error) {
                problem = problem || String((error && error.message) || error);
                (window.reportError || console.error)(error);
            }
        }
        return problem;
    }

    function announce(name, detail, isCancelable) {
        return window.dispatchEvent(new CustomEvent(name, { detail, cancelable: Boolean(isCancelable) }));
    }

    const receivers = {
        hello(message) {
            approved = message.approved;
            company = message.company;
            if (isWatching) {
                tell({ type: "watch", on: true });
            }
            const isNew = wasLost;
            wasLost = false;
            if (isNew) {
                document.querySelectorAll("object").forEach((element) => isControl(element) && tryToBecomeControl(element));
            }
            enter("connected", isNew);
        },
        script(message) {
            const error = runScript(message.text);
            report(message.n, error);
            announce("workbenchscript", { n: message.n, text: message.text, error });
        },
        event(message) {
            const remote = objectsWithEvents.get(message.object);
            report(message.n, remote ? raise(remote, message.name, message.arguments) : null);
            announce("workbenchevent", { n: message.n, object: message.object, name: message.name, arguments: message.arguments });
        },
        log(message) {
            announce("workbenchlog", message.entry);
        },
    };

    function report(n, error) {
        tell(error === null ? { type: "delivered", n } : { type: "failed", n, message: error });
    }

    function connect() {
        const address = "ws://" + location.host + "/workbench/socket?page=" + page + "&token=" + token;
        const opened = new WebSocket(address);
        socket = opened;
        opened.onmessage = (message) => {
            const content = readJson(message.data);
            if (socket === opened && Object.hasOwn(receivers, content.type)) {
                receivers[content.type](content);
            }
        };
        opened.onclose = () => {
            if (socket === opened) {
                lose();
            }
        };
    }

    function lose() {
        socket = null;
        // Nothing of the old page is left on the server.
        page = "";
        if (!wasLost) {
            wasLost = true;
            enter("lost", false);
        }
        setTimeout(reconnect, RECONNECT_MILLISECONDS);
    }

    function sessionPath() {
        return "/workbench/session?path=" + encodeURIComponent(location.pathname + location.search);
    }

    function reconnect() {
        if (socket) {
            return;
        }
        fetch(sessionPath(), { cache: "no-store" })
            .then((reply) => (reply.ok ? reply.json() : Promise.reject(new Error("no session"))))
            .then((session) => socket || startSession(session))
            .catch(() => setTimeout(reconnect, RECONNECT_MILLISECONDS));
    }

    function startSession(session) {
        const before = socket;
        socket = null;
        if (before) {
            before.onclose = null;
            before.close();
        }
        wasLost = true;
        page = session.page;
        token = session.token;
        connect();
    }

    // What the page and its user see of it

    let bar = null;

    function showBar(text) {
        if (bar) {
            bar.remove();
            bar = null;
        }
        if (text && document.body) {
            bar = document.createElement("div");
            bar.setAttribute("role", "alert");
            bar.textContent = text;
            Object.assign(bar.style, {
                position: "fixed", left: "0", right: "0", bottom: "0", zIndex: "2147483647", padding: "0.6em 1em",
                font: "16px/1.4 sans-serif", color: "#ffffff", background: "#8a1c1c",
            });
            document.body.append(bar);
        }
    }

    function textOfBar() {
        if (state === "lost") {
            return "The workbench does not answer. This page goes on when it is back.";
        }
        return approved === false
            ? "The component refuses this page: its site, " + location.host + ", is not an approved one. Every member returns nothing."
            : "";
    }

    function enter(next, isNew) {
        state = next;
        const shown = state === "connected" && approved === false ? "refused" : state;
        document.documentElement.dataset.workbenchState = shown;
        const show = () => {
            const isUnhandled = announce("workbenchstate", { state, approved, page, isNew }, true);
            showBar(isUnhandled ? textOfBar() : "");
        };
        // The page's own scripts, modules too, listen from then on.
        if (isParsed) {
            show();
        } else {
            document.addEventListener("DOMContentLoaded", show, { once: true });
        }
    }

    // For pages that know where they run

    async function request(method, path, body) {
        let response;
        try {
            response = await fetch(path, {
                method,
                headers: { "X-Workbench-Token": token, ...(body === undefined ? {} : { "Content-Type": "application/json" }) },
                body: body === undefined ? undefined : toJson(body),
                cache: "no-store",
            });
        } catch (error) {
            throw unavailable();
        }
        const reply = readJson(await response.text());
        if (!response.ok || reply.error) {
            throw Object.assign(errorOf(response.status, reply), { status: response.status });
        }
        return reply;
    }

    function watch(isOn) {
        isWatching = Boolean(isOn);
        tell({ type: "watch", on: isWatching });
    }

    window.paylodgeWorkbench = Object.freeze({
        get state() {
            return state;
        },
        get approved() {
            return approved;
        },
        get page() {
            return page;
        },
        get company() {
            return company;
        },
        request,
        watch,
    });

    document.documentElement.dataset.workbenchState = state;
    connect();
})();
