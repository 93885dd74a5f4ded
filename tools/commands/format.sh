#!/usr/bin/env bash
# formats the C++ sources in place

usage() {
    cat <<'END'
Usage: ./dev format

Formats every C++ source of the checkout with clang-format, in place.
END
}

run() {
    [ $# -eq 0 ] || usage_error "'format' takes no argument, not '$1'"
    install_packages
    bash tools/format_sources.sh
}
