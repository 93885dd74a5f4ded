// The program behind "./dev run": a page's script, its output, its errors and its exit status.

var files = new ActiveXObject("Scripting.FileSystemObject");
var folder = files.GetParentFolderName(companyFile());

function write(name, text) {
    var path = files.BuildPath(folder, name);
    var stream = files.CreateTextFile(path, true);
    stream.Write(text);
    stream.Close();
    return path;
}

// What a script printed, its errors among it, and its exit status.
function run(script, words) {
    var output = files.BuildPath(folder, "run.output");
    var command = 'cmd /c run.exe "' + script + '" ' + (words || "") + ' > "' + output + '" 2>&1';
    var status = new ActiveXObject("WScript.Shell").Run(command, 0, true);
    return { status: status, output: readFile(output).replace(/\r/g, "") };
}

function runText(text, words) {
    return run(write("page.js", text), words);
}

test("a script finds the accounting object and the control", function () {
    var result = runText('WScript.Echo(paylodge.GetAccounts("CreditCard").indexOf("Business Card") > 0);' +
        "WScript.Echo(paylodgeControl.EMVIsDeviceConnected());");
    equal(result.output, "true\nfalse\n");
    equal(result.status, 0);
});

test("a script creates objects by program id and by class id", function () {
    var result = runText('WScript.Echo(WScript.CreateObject("Paylodge.Paylodge").GetAccounts("Bank").length > 0);' +
        'WScript.Echo(WScript.CreateObject("{00A0CCCE-89E6-4779-AACD-E774651CB5AD}").EMVIsDeviceConnected());');
    equal(result.output, "true\nfalse\n");
});

test("a class that there is not is an error", function () {
    contains(runText('WScript.CreateObject("No.Such.Class");').output, "run: 0x800401F3");
    equal(runText("WScript.CreateObject(1);").status, 1);
    equal(runText("WScript.CreateObject();").status, 1);
});

test("a script finds the program that runs it, and hands it the switch of script hosts", function () {
    contains(runText("WScript.Echo(WScript.FullName);").output.toLowerCase(), "\\run.exe\n");
    var page = write("page.js", 'WScript.Echo("page", WScript.Arguments.length);');
    equal(run('//nologo" "' + page).output, "page 0\n");
    equal(run("//nologo").status, 2);
});

test("values are printed in one line, with blanks between them", function () {
    equal(runText('WScript.Echo("a", 1.5, true, null, -2); WScript.Echo();').output, "a 1.5 true null -2\n\n");
});

test("words behind the script reach it", function () {
    var script = "WScript.Echo(WScript.Arguments.length, WScript.Arguments(0), WScript.Arguments.Item(1));";
    equal(runText(script, "first second").output, "2 first second\n");
});

test("text is UTF-8 on both ways", function () {
    // The bytes of e with an acute accent, which readFile and write hand on as they are.
    contains(runText('WScript.Echo("caf\u00c3\u00a9", "\\u00e9".length);').output, "caf\u00c3\u00a9 1");
});

test("the exit status is the one that the script wants", function () {
    var result = runText('WScript.Echo("before"); WScript.Quit(7); WScript.Echo("after");');
    equal(result.output, "before\n");
    equal(result.status, 7);
});

test("an error that is not caught is named with file, line and HRESULT", function () {
    var result = runText("var x = 1;\n\npaylodge.CreateAccount(\"X\", \"Nonsense\", \"\");\n");
    contains(result.output, "page.js:3:");
    contains(result.output, "run: 0x80004005 E_FAIL");
    equal(result.status, 1);
});

test("an error that the script throws keeps its message", function () {
    var result = runText("throw new Error(\"no such customer\");");
    contains(result.output, "no such customer");
    equal(result.status, 1);
});

test("a script that is no script is named with its line", function () {
    var result = runText("var a = 1;\nvar b = ;\n");
    contains(result.output, "page.js:2:");
    equal(result.status, 1);
});

test("a script that does not exist is a wrong call", function () {
    var result = run("nowhere.js");
    equal(result.output, "run: the script nowhere.js does not exist or cannot be opened\n");
    equal(result.status, 2);
});

test("a script that is not UTF-8 is refused", function () {
    var result = runText("// caf\u00e9\n");
    contains(result.output, "is not UTF-8 text");
    equal(result.status, 2);
});
