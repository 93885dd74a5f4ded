#!/usr/bin/env bash
# builds what is to be tested and runs the tests

usage() {
    cat <<'END'
Usage: ./dev test [--filter TEXT] [--time-limit SECONDS] [KIND]...

Builds and runs the tests of the given kinds; without a KIND all of them:

  x64          programs for 64-bit Windows, under Wine
  x86          programs for 32-bit Windows, under Wine
  x64-checked  those for 64-bit Windows with asserts, traps for undefined behaviour, and a checked standard library
  native       programs for this machine, under sanitizers
  script       page scripts, on both Windows architectures
  workbench    the workbench's page in headless Chromium, against the component
  server       the workbench's server, attacked and used as a page does, on both Windows architectures
  commands     ./dev run and ./dev workbench at work, in a checkout with a Wine prefix of its own
  package      what ./dev package makes, installed into a Wine prefix of its own
  fuzz         a short run of each fuzzer
  tools        the tests of the tools themselves
  format       the format of the C++ sources
  lint         clang-tidy over what differs from the upstream branch, as far as it has been compiled

  --filter TEXT         only tests with TEXT in their full name, as a failure prints it, or in the name of their file:
                        "payment" or "operations/payment.cpp" for what tests that source; letter case does not count
  --time-limit SECONDS  how long a program may run before it counts as hanging (default 120)

The last line says "N passed, N failed" (", N skipped"); the exit status is 0 only when nothing failed.
docs/testing.md says how tests are laid out and how to add one.
END
}

# The flavours that the given kinds of test may need.
flavours_for() {
    local kind
    for kind in "$@"; do
        case $kind in
            x64 | x86 | x64-checked | native) printf '%s\n' "$kind" ;;
            script | server | commands | package) printf 'x64\nx86\n' ;;
            workbench) printf 'x64\n' ;;
            fuzz) printf 'native\n' ;;
        esac
    done | sort -u
}

run() {
    local options=() filter=() kinds=() preset targets
    while [ $# -gt 0 ]; do
        case $1 in
            --filter)
                [ $# -ge 2 ] || usage_error "--filter needs a text"
                filter=("--filter=$2")
                shift
                ;;
            --time-limit)
                [[ ${2-} =~ ^[1-9][0-9]*$ ]] || usage_error "--time-limit needs a number of seconds"
                options+=("--time-limit=$2")
                shift
                ;;
            x64 | x86 | x64-checked | native | script | workbench | server | commands | package | fuzz | tools | format | lint)
                kinds+=("$1")
                ;;
            *) usage_error "'test' does not know '$1'; './dev test --help' says what it knows" ;;
        esac
        shift
    done
    [ ${#kinds[@]} -gt 0 ] || kinds=(x64 x86 x64-checked native script workbench server commands package fuzz tools format lint)

    install_packages
    lock_checkout
    export PYTHONDONTWRITEBYTECODE=1
    for preset in $(flavours_for "${kinds[@]}"); do
        configure "$preset"
    done
    # A line for each flavour: its name and what to build of it.
    targets=$(python3 tools/testrun/build_targets.py "${filter[@]}" "${kinds[@]}")
    for preset in $(cut -d ' ' -f 1 <<<"$targets"); do
        build_preset "$preset" $(sed -n "s/^$preset //p" <<<"$targets")
    done
    . tools/wine.sh
    if [[ $targets == *x64* || $targets == *x86* ]]; then
        use_wine
    fi
    for preset in $(cut -d ' ' -f 1 <<<"$targets"); do
        [ "$preset" = native ] || make_sample_company "build/$preset"
    done
    export UBSAN_OPTIONS=print_stacktrace=1
    say "testing"
    python3 tools/testrun/run_tests.py "${filter[@]}" "${options[@]}" "${kinds[@]}"
}
