#!/usr/bin/env bash
# removes everything that was built

usage() {
    cat <<'END'
Usage: ./dev clean

Removes build/: what was compiled, the Wine prefix, and the demo's copy of the company file.
Installed packages stay.
END
}

run() {
    [ $# -eq 0 ] || usage_error "'clean' takes no argument, not '$1'"
    if [ -d build/wine ] && command -v wineserver >/dev/null; then
        . tools/wine.sh
        stop_wine
    fi
    rm -rf build
}
