#!/usr/bin/env bash
# Wine for tests and demo: a prefix of this checkout's own, quiet and without a display. Sourced at the top of the
# checkout.

export WINEPREFIX=$PWD/build/wine WINEDEBUG=-all WINEDLLOVERRIDES=mscoree,mshtml= LC_ALL=C.UTF-8
# The 64-bit loader runs both kinds of program; the one that "wine" may stand for takes the 64-bit system folder for the
# 32-bit one.
PAYLODGE_WINE=/usr/lib/wine/wine64
[ -x "$PAYLODGE_WINE" ] || PAYLODGE_WINE=$(command -v wine64 || printf wine)
export PAYLODGE_WINE
unset DISPLAY WAYLAND_DISPLAY WINEARCH WINEPATH WINESERVER WINELOADER

# Names what the prefix was made by and for; a prefix of another kind, or of another folder, is made anew.
wine_stamp() {
    pwd -P
    wine --version
    ls /usr/lib/wine
    cat tools/wine.sh
}

# Ends every program of the prefixes of this checkout; tests of the package have one of their own.
stop_wine() {
    local prefix
    for prefix in "$PWD"/build/wine "$PWD"/build/wine-package; do
        [ -d "$prefix" ] || continue
        WINEPREFIX=$prefix wineserver -k 2>/dev/null || true
        WINEPREFIX=$prefix wineserver -w 2>/dev/null || true
    done
}

# Windows are drawn where there is a display and nowhere else; a crash ends in a backtrace instead of a dialog.
set_up_prefix() {
    rm -rf "$WINEPREFIX"
    timeout --foreground 300 wineboot -i &&
        "$PAYLODGE_WINE" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d x11,null /f &&
        "$PAYLODGE_WINE" reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f &&
        wineserver -k &&
        wineserver -w
}

prepare_wine() {
    local stamp
    stamp=$(wine_stamp | sha256sum)
    [ "$(cat "$WINEPREFIX/.stamp" 2>/dev/null)" = "$stamp" ] && return
    say "making the Wine prefix build/${WINEPREFIX##*/} (about 10 seconds, once)"
    wineserver -k 2>/dev/null || true
    # In a shell of its own, so that what happens at Ctrl-C is not printed into the log.
    if ! (set_up_prefix) </dev/null >build/wine.log 2>&1 9>&-; then
        cat build/wine.log >&2
        fail "Wine could not set up its prefix: the lines above say why"
    fi
    printf '%s\n' "$stamp" >"$WINEPREFIX/.stamp"
}

# For a command: whatever it leaves running under Wine ends with it.
use_wine() {
    at_exit stop_wine
    prepare_wine
}

# One Wine server for all programs of a command. One that runs already, which status 2 says, is as good.
start_wine() {
    wineserver -p60 9>&- >/dev/null 2>&1 || [ $? -eq 2 ] || fail "Wine's server does not start"
}

# run_wine SECONDS FOLDER PROGRAM [ARGUMENT]...: runs a Windows program that finds the host's libraries built in FOLDER.
# Ctrl-C is no signal to such a program; the shell hears it while it waits, and then has Wine's server end the program.
run_wine() {
    local seconds=$1 folder=$2
    shift 2
    WINEPATH="$(windows_path "$folder/refhost");$(windows_path "$folder")" \
        timeout "$seconds" "$PAYLODGE_WINE" "$@" 9>&- </dev/null &
    wait $!
}

# make_sample_company FOLDER: the sample company of examples/ as a company file, build/riverside.lhcompany, made by the
# program built in FOLDER. Made anew when either is newer.
make_sample_company() {
    local program=$1/refhost/company.exe text=examples/riverside.xml file=build/riverside.lhcompany
    [ ! "$text" -nt "$file" ] && [ ! "$program" -nt "$file" ] && return
    rm -f "$file"
    run_wine 120 "$1" "$program" import "$text" "$file" >/dev/null ||
        fail "the sample company $text cannot be imported: the line above says why"
}

# windows_path FILE: the name under which Windows programs see a file of this machine.
windows_path() {
    local path
    path=$(realpath -m "$1")
    printf 'Z:%s' "${path//\//\\}"
}
