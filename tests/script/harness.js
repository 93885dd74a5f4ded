// Runs a file of page-script tests: cscript //nologo harness.js FILE
//
// The file calls test() and, inside, the checks below. Each test prints a line, PASS, FAIL with the reason or SKIP with
// the reason; END says that nothing cut the run short, which the script host does not tell in its exit code.

function test(name, body) {
    if (name.indexOf(": ") >= 0) {
        throw new Error("a test's name must not contain a colon and a space: " + name);
    }
    try {
        body();
        WScript.Echo("PASS " + name);
    } catch (error) {
        var word = error instanceof Skipped ? "SKIP " : "FAIL ";
        WScript.Echo(word + name + ": " + describeError(error).replace(/\r?\n/g, "\r\n    "));
    }
}

function equal(actual, expected) {
    if (actual !== expected) {
        throw new Failure("expected " + show(expected) + "\nbut got  " + show(actual));
    }
}

function isTrue(value, what) {
    if (value !== true) {
        throw new Failure((what || "the condition") + " is not true but " + show(value));
    }
}

function contains(text, part) {
    if (String(text).indexOf(part) < 0) {
        throw new Failure("expected a text with " + show(part) + "\nbut got  " + show(text));
    }
}

// What the engine of Windows makes of some HRESULTs: numbers of its own. Wine's hands them on as they are.
var ENGINE_NUMBERS = {
    0x80020005: 0x800A000D,
    0x8002000E: 0x800A01C2,
    0x80070057: 0x800A0005,
    0x8007000E: 0x800A0007
};

// The call has to raise an error with this HRESULT, for example throwsHResult(0x80004005, function () { ... }).
function throwsHResult(code, call) {
    try {
        call();
    } catch (error) {
        if ((error.number | 0) !== (code | 0) && (error.number | 0) !== (ENGINE_NUMBERS[code] | 0)) {
            throw new Failure("expected the error " + hex(code) + "\nbut got  " + describeError(error));
        }
        return;
    }
    throw new Failure("expected the error " + hex(code) + "\nbut the call succeeded");
}

// Ends the test at hand without a result.
function skip(reason) {
    throw new Skipped(reason);
}

// A page has the control as an element of its own. A script asks for it by its class: of the engine, or of the reference
// host's own script host. Where neither can do that, it needs a name for it, which the control does not bring along.
function createControl() {
    var controlClass = "{00A0CCCE-89E6-4779-AACD-E774651CB5AD}";
    try {
        return GetObject("new:" + controlClass);
    } catch (error) {
        return createControlWithoutEngine(controlClass);
    }
}

function createControlWithoutEngine(controlClass) {
    try {
        return WScript.CreateObject(controlClass);
    } catch (error) {
        var name = "PaylodgeTests.Control";
        new ActiveXObject("WScript.Shell").RegWrite("HKLM\\Software\\Classes\\" + name + "\\CLSID\\", controlClass);
        return new ActiveXObject(name);
    }
}

function readFile(path) {
    var stream = new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(path, 1);
    try {
        return stream.AtEndOfStream ? "" : stream.ReadAll();
    } finally {
        stream.Close();
    }
}

// The path of the company file that the reference host opens, a copy of the sample that the tests may change.
function companyFile() {
    return environment("LEDGERHALL_COMPANY_FILE");
}

// What the reference host was given to run in pages so far, as Oskerin.dll writes it down: for each script a line with
// the browser instance and the length, and the script.
function pageScripts() {
    var path = environment("OSKERIN_SCRIPT_FILE");
    return new ActiveXObject("Scripting.FileSystemObject").FileExists(path) ? readFile(path) : "";
}

function environment(name) {
    var reference = "%" + name + "%";
    // Some script hosts leave the terminating NUL in the text.
    var value = new ActiveXObject("WScript.Shell").ExpandEnvironmentStrings(reference).replace(/\u0000$/, "");
    if (value === reference) {
        throw new Error("the environment has no " + name);
    }
    return value;
}

function Failure(message) {
    this.message = message;
}

function Skipped(message) {
    this.message = message;
}

function describeError(error) {
    if (error instanceof Failure || error instanceof Skipped) {
        return error.message;
    }
    if (error instanceof Error) {
        return error.name + " " + hex(error.number) + " " + error.message;
    }
    return "thrown: " + show(error);
}

function hex(number) {
    var digits = (number < 0 ? number + 0x100000000 : number).toString(16).toUpperCase();
    return "0x" + "00000000".substr(digits.length) + digits;
}

// A value as it would be written in a script, so that line ends and types can be told apart.
function show(value) {
    if (typeof value !== "string") {
        return typeof value + " " + String(value);
    }
    var text = value.replace(/\\/g, "\\\\").replace(/"/g, '\\"').replace(/\t/g, "\\t");
    text = text.replace(/\r/g, "\\r").replace(/\n/g, "\\n").replace(/\u0000/g, "\\0");
    return '"' + text + '"';
}

// The file's text is run here, in the global scope, for the sake of what it declares.
try {
    eval(readFile(WScript.Arguments(0)));
} catch (error) {
    WScript.Echo("FAIL (script): " + describeError(error));
}
WScript.Echo("END");
