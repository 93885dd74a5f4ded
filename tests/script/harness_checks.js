// The checks of harness.js themselves: a check that never fails would let every other test pass.

function failureOf(check) {
    try {
        check();
    } catch (error) {
        return describeError(error);
    }
    return "";
}

test("equal accepts the same value and type only", function () {
    equal(failureOf(function () { equal("1", "1"); }), "");
    contains(failureOf(function () { equal("1", 1); }), 'but got  "1"');
    contains(failureOf(function () { equal("a\r\n", "a"); }), 'but got  "a\\r\\n"');
    contains(failureOf(function () { equal(undefined, null); }), "undefined");
});

test("isTrue refuses what only counts as true", function () {
    equal(failureOf(function () { isTrue(true); }), "");
    equal(failureOf(function () { isTrue(-1, "the flag"); }), "the flag is not true but number -1");
});

test("contains looks for the very text", function () {
    equal(failureOf(function () { contains("abc", "bc"); }), "");
    contains(failureOf(function () { contains("abc", "B"); }), 'expected a text with "B"');
});

test("throwsHResult wants that error and no other", function () {
    var missing = function () { new ActiveXObject("No.Such.Class"); };
    equal(failureOf(function () { throwsHResult(0x800A01AD, missing); }), "");
    contains(failureOf(function () { throwsHResult(0x80004005, missing); }), "but got  Error 0x800A01AD");
    contains(failureOf(function () { throwsHResult(0x80004005, function () { }); }), "but the call succeeded");
    var another = function () { throw new Error(0x8002000E | 0, "an error"); };
    equal(failureOf(function () { throwsHResult(0x8002000E, another); }), "");
    contains(failureOf(function () { throwsHResult(0x80020005, another); }), "but got  Error 0x8002000E");
});

test("skip ends a test", function () {
    equal(failureOf(function () { skip("no host"); throw new Error("went on"); }), "no host");
});

test("each script has a company file", function () {
    equal(readFile(companyFile()).substr(0, 15), "SQLite format 3");
});
