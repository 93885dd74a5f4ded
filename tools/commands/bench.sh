#!/usr/bin/env bash
# measures the operations and the XML writer

usage() {
    cat <<'END'
Usage: ./dev bench

Measures every list operation and a batch at 100, 10,000 and 100,000 records, each beside its floor in the same run (the
same request sent, the same response loaded, the leanest walk that reads the needed texts), under Wine on x64; then the
XML writer on this machine. Prints medians and ratios; the operations' are in build/bench.json too.
Takes a few minutes. Nothing else should run on the machine meanwhile.
END
}

run() {
    [ $# -eq 0 ] || usage_error "'bench' takes no arguments"
    install_packages
    lock_checkout
    build_preset x64 operations_bench LHUtilities
    build_preset bench xml_builder_bench
    . tools/wine.sh
    prepare_wine
    WINEPATH=$(windows_path build/x64/refhost) \
        wine build/x64/benchmarks/operations_bench.exe "$(windows_path build/bench.json)" </dev/null 9>&-
    build/bench/benchmarks/xml_builder_bench
}
