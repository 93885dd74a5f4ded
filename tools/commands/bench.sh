#!/usr/bin/env bash
# measures each operation beside what it cannot avoid

usage() {
    cat <<'END'
Usage: ./dev bench

Measures each operation of the component (x64, under Wine) beside its floor in the same run: the same request sent,
the same response loaded, the leanest walk over the records. Prints a table and writes build/benchmarks/operations.json.
END
}

run() {
    [ $# -eq 0 ] || usage_error "'bench' takes no argument, not '$1'"
    install_packages
    lock_checkout
    build_preset x64 operations_bench refhost/all
    . tools/wine.sh
    prepare_wine
    mkdir -p build/benchmarks
    say "measuring (a few minutes)"
    start_wine
    run_wine 1800 build/x64 build/x64/benchmarks/operations_bench.exe \
        "$(windows_path build/benchmarks/operations.json)" || fail "the measurement broke off: the lines above say why"
}
