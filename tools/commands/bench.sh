#!/usr/bin/env bash
# measures the operations beside what they cannot avoid, the books, and the XML writer

usage() {
    cat <<'END'
Usage: ./dev bench

Measures each operation of the component (x64, under Wine) at 100, 10,000 and 100,000 records beside its floor in the
same run: the same request sent, the same response loaded, the leanest walk over the records. Prints medians and ratios
as a table and writes them to build/bench.json. Then measures how the books of the reference host grow, from 100 to
100,000 transactions: opening, adding a payment, finding records; it fails when one of them grows too much; 10,000 calls of
a page of the workbench beside empty requests, and 1,000 pushes. At last it measures the XML writer on this machine.
Takes a few minutes; nothing else should run meanwhile.
END
}

run() {
    [ $# -eq 0 ] || usage_error "'bench' takes no argument, not '$1'"
    install_packages
    lock_checkout
    build_preset x64 operations_bench books_bench refhost/all workbench/all
    . tools/wine.sh
    use_wine
    say "measuring (a few minutes)"
    start_wine
    run_wine 1800 build/x64 build/x64/benchmarks/operations_bench.exe "$(windows_path build/bench.json)" ||
        fail "the measurement broke off: the lines above say why"
    run_wine 600 build/x64 build/x64/benchmarks/books_bench.exe build/bench.lhcompany ||
        fail "the books are slower than they may be: the table above says where"
    make_sample_company build/x64
    python3 -B tests/workbench/test_load.py --measure || fail "the workbench was not measured: the lines above say why"
    build_preset bench xml_builder_bench
    build/bench/benchmarks/xml_builder_bench
}
