#!/usr/bin/env bash
# removes everything that was built

usage() {
    cat <<'END'
Usage: ./dev clean

Removes build/: what was compiled, the Wine prefix, the demo's copy of the company file, and what tools/try-release made.
Installed packages stay.
END
}

run() {
    [ $# -eq 0 ] || usage_error "'clean' takes no argument, not '$1'"
    lock_checkout
    if command -v wineserver >/dev/null; then
        . tools/wine.sh
        stop_wine
    fi
    # Nothing that is mounted there, for example in a system of tools/try-release that is in use.
    rm -rf --one-file-system build
}
