#!/usr/bin/env bash
# builds what is to be tested and runs the tests

usage() {
    cat <<'END'
Usage: ./dev test [--filter TEXT] [--time-limit SECONDS] [KIND]...

Builds and runs the tests of the given kinds; without a KIND all of them:

  x64     programs for 64-bit Windows, under Wine
  x86     programs for 32-bit Windows, under Wine
  native  programs for this machine, under sanitizers
  script  page scripts, on both Windows architectures
  package what ./dev package makes, installed into a Wine prefix of its own
  fuzz    a short run of each fuzzer
  tools   the tests of the tools themselves
  format  the format of the C++ sources

  --filter TEXT         only tests with TEXT in their full name, as a failure prints it
  --time-limit SECONDS  how long a program may run before it counts as hanging (default 120)

The last line says "N passed, N failed" (", N skipped"); the exit status is 0 only when nothing failed.
docs/testing.md says how tests are laid out and how to add one.
END
}

# The flavours that have to be built for the given kinds of test.
flavours_for() {
    local kind
    for kind in "$@"; do
        case $kind in
            x64 | x86 | native) printf '%s\n' "$kind" ;;
            script | package) printf 'x64\nx86\n' ;;
            fuzz) printf 'native\n' ;;
        esac
    done | sort -u
}

# targets_for PRESET KIND...: what to build of a flavour for the given kinds of test.
targets_for() {
    local preset=$1 kind
    shift
    for kind in "$@"; do
        case $preset/$kind in
            x64/x64 | x86/x86 | native/native) printf 'all\ntests/all\n' ;;
            x64/script | x86/script) printf 'Paylodge\nrefhost/all\n' ;;
            x64/package | x86/package) printf 'package_test_programs\nrefhost/all\n' ;;
            native/fuzz) printf 'fuzzers\n' ;;
        esac
    done
}

run() {
    local options=() kinds=() preset
    while [ $# -gt 0 ]; do
        case $1 in
            --filter)
                [ $# -ge 2 ] || usage_error "--filter needs a text"
                options+=("--filter=$2")
                shift
                ;;
            --time-limit)
                [[ ${2-} =~ ^[1-9][0-9]*$ ]] || usage_error "--time-limit needs a number of seconds"
                options+=("--time-limit=$2")
                shift
                ;;
            x64 | x86 | native | script | package | fuzz | tools | format) kinds+=("$1") ;;
            *) usage_error "'test' does not know '$1'; './dev test --help' says what it knows" ;;
        esac
        shift
    done
    [ ${#kinds[@]} -gt 0 ] || kinds=(x64 x86 native script package fuzz tools format)

    install_packages
    lock_checkout
    for preset in $(flavours_for "${kinds[@]}"); do
        build_preset "$preset" $(targets_for "$preset" "${kinds[@]}")
    done
    . tools/wine.sh
    prepare_wine
    export UBSAN_OPTIONS=print_stacktrace=1 PYTHONDONTWRITEBYTECODE=1
    say "testing"
    python3 tools/run_tests.py "${options[@]}" "${kinds[@]}"
}
