#!/usr/bin/env bash
# measures which lines the tests reach

usage() {
    cat <<'END'
Usage: ./dev coverage [--missed] [native|x64]...

Builds the tests with counters, runs them and prints how many lines of each folder they reach: on this machine, where the
pure core is tested (native), and under Wine (x64), with page scripts and the tests of the workbench's server. Without an
argument both, and their lines together: what one of the two reaches is reached. Building takes most of the time.

  --missed  also prints the lines that no test reaches
END
}

run() {
    local options=() presets=() kinds=() preset
    while [ $# -gt 0 ]; do
        case $1 in
            --missed) options+=("$1") ;;
            native | x64) presets+=("$1-coverage") ;;
            *) usage_error "'coverage' does not know '$1'; './dev coverage --help' says what it knows" ;;
        esac
        shift
    done
    [ ${#presets[@]} -gt 0 ] || presets=(native-coverage x64-coverage)
    install_packages
    lock_checkout
    export PYTHONDONTWRITEBYTECODE=1
    for preset in "${presets[@]}"; do
        build_preset "$preset" all tests/all $([ "$preset" = native-coverage ] || printf workbench/all)
        find "build/$preset" -name '*.gcda' -delete
    done
    kinds=("${presets[@]}")
    . tools/wine.sh
    if [[ ${presets[*]} == *x64* ]]; then
        kinds+=(script-coverage server-coverage)
        use_wine
        make_sample_company build/x64-coverage
    fi
    say "testing"
    # A test that measures memory or time may fail with counters in the code; what it reached counts all the same.
    python3 tools/testrun/run_tests.py --time-limit 600 "${kinds[@]}" >&2 || say "some tests failed with counters in the code"
    python3 tools/coverage.py "${options[@]}" "${presets[@]}"
}
