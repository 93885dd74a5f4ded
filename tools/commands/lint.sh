#!/usr/bin/env bash
# checks the format of the C++ sources and runs clang-tidy over them

usage() {
    cat <<'END'
Usage: ./dev lint [native|x64]...

Checks that every C++ source is formatted, then runs clang-tidy: over the pure core as this machine compiles it
(native), and over everything else as it is compiled for Windows (x64). Without an argument both. Sources that have not
changed since clang-tidy last found nothing in them are left out. .clang-tidy says which checks are off, and why.
END
}

run() {
    local preset
    for preset in "$@"; do
        case $preset in
            native | x64) ;;
            *) usage_error "'lint' knows native and x64, not '$preset'" ;;
        esac
    done
    [ $# -gt 0 ] || set -- native x64
    install_packages
    lock_checkout
    bash tools/format_sources.sh --check >&2 || fail "not every source is formatted: './dev format' mends that"
    # The headers that are generated have to be there, and ninja has to know which headers a source uses. What is
    # compiled natively is the pure core.
    for preset in $(printf '%s\n' native "$@" | sort -u); do
        build_preset "$preset" all tests/all
    done
    python3 tools/lint.py "$@" || fail "clang-tidy found something: the lines above say what"
}
