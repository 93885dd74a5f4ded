#!/usr/bin/env bash
# checks the format of the C++ sources and what clang and clang-tidy find in them

usage() {
    cat <<'END'
Usage: ./dev lint [native|x64|clang]...

Checks that every C++ source is formatted, then:

  native  runs clang-tidy over the pure core, as this machine compiles it
  x64     runs clang-tidy over everything else, as it is compiled for Windows
  clang   compiles everything for 64-bit Windows with clang, a second compiler beside mingw-w64's, with warnings as
          errors. It only reads the sources: nothing is linked, and what it compiles is not tested

Without an argument all three. Sources that have not changed since nothing was found in them are left out. .clang-tidy
says which checks are off, and why.
END
}

run() {
    local preset
    for preset in "$@"; do
        case $preset in
            native | x64 | clang) ;;
            *) usage_error "'lint' knows native, x64 and clang, not '$preset'" ;;
        esac
    done
    [ $# -gt 0 ] || set -- clang native x64
    install_packages
    lock_checkout
    bash tools/format_sources.sh --check >&2 || fail "not every source is formatted: './dev format' mends that"
    # The headers that are generated have to be there, and ninja has to know which headers a source uses. What is
    # compiled natively is the pure core.
    for preset in $(printf '%s\n' native "${@/clang/x64}" | sort -u); do
        build_preset "$preset" all tests/all
    done
    python3 tools/lint.py "$@" || fail "something was found: the lines above say what"
}
