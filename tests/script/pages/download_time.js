// A page that runs in a host of its own: cscript //nologo download_time.js RESULT ACCOUNT [TIME]
//
// Stores the account's last download time when one is given; writes what is stored then, or the error, to RESULT.

function run(account, time) {
    var paylodge = new ActiveXObject("Paylodge.Paylodge");
    if (time !== null) {
        paylodge.SetLastTxnDownloadTime(account, time);
    }
    return paylodge.GetLastTxnDownloadTime(account);
}

function text() {
    try {
        return run(WScript.Arguments(1), WScript.Arguments.length > 2 ? WScript.Arguments(2) : null);
    } catch (error) {
        return "error " + error.number + " " + error.message;
    }
}

var file = new ActiveXObject("Scripting.FileSystemObject").CreateTextFile(WScript.Arguments(0), true);
file.Write(text());
file.Close();
