#!/usr/bin/env bash
# measures calls beside what they cannot avoid, on x64 and x86, the books, and the XML writer beside other libraries

usage() {
    cat <<'END'
Usage: ./dev bench [--quick] [x64|x86|books|workbench|page|writer]...

Measures and prints tables; without a part, all of them:

  x64, x86  each operation of the component under Wine beside its floor in the same run (the same request sent, the same
            response loaded, the leanest walk over the records), properties by name and through the slot, pushes in both
            modes, and loading the module. Both sides take turns; a row is measured until two halves of its runs agree
            within 3 percent, or its time is up. The column "agreement" says how far apart they are.
  books     how the books of the reference host grow from 100 to 100,000 transactions; fails when one grows too much
  workbench 10,000 calls of a page of the workbench beside empty requests, and 1,000 pushes
  page      the list of a page by GetAccountsForMultipleTypes, and by ProcessLHRequest with a parser in the page
  writer    XMLBuilder on this machine beside pugixml, RapidXML and libxml2, whose packages are installed for it, with
            times and with counts of instructions

  --quick   fewer runs, at most 10,000 records, and no counts of instructions; without x86 unless it is named

The rows go to build/bench.json; 'python3 benchmarks/draw.py draw' draws docs/pictures/performance-*.svg from them.
All of it takes about a quarter of an hour; nothing else should run meanwhile.
END
}

# Those of the parts.
packages=(libpugixml-dev librapidxml-dev libxml2-dev valgrind)

install_bench_packages() {
    dpkg -s "${packages[@]}" >/dev/null 2>&1 && return
    say "installing ${packages[*]}"
    local as_root=()
    [ "$(id -u)" -eq 0 ] || as_root=(sudo)
    "${as_root[@]}" apt-get install -y --no-install-recommends "${packages[@]}" >build/bench-packages.log 2>&1 ||
        fail "the packages could not be installed: build/bench-packages.log says why"
}

measure_module() {
    local arch=$1 bench
    build_preset "$arch" operations_bench module_bench refhost/all
    use_wine
    start_wine
    for bench in operations module; do
        say "measuring ($arch, $bench)"
        run_wine 7200 "build/$arch" "build/$arch/benchmarks/${bench}_bench.exe" \
            "$(windows_path "build/bench-results/$arch-$bench.json")" $quick ||
            fail "the measurement broke off: the lines above say why"
    done
}

measure_books() {
    build_preset x64 books_bench
    use_wine
    start_wine
    run_wine 600 build/x64 build/x64/benchmarks/books_bench.exe "$(windows_path build/bench.lhcompany)" ||
        fail "the books are slower than they may be: the table above says where"
}

measure_workbench() {
    build_preset x64 refhost/all workbench/all
    use_wine
    start_wine
    make_sample_company build/x64
    python3 -B tests/workbench/test_load.py --measure || fail "the workbench was not measured: the lines above say why"
}

# In a process of its own: ./dev run locks the checkout, too.
measure_page() {
    build_preset x64 Paylodge refhost/all
    use_wine
    start_wine
    python3 -B benchmarks/big_company.py examples/riverside.xml build/bench-results/company.xml
    rm -f build/bench-results/company.lhcompany
    run_wine 300 build/x64 build/x64/refhost/company.exe import build/bench-results/company.xml build/bench-results/company.lhcompany >/dev/null ||
        fail "the company for the page cannot be imported: the line above says why"
    exec 9>&-
    ./dev run benchmarks/page_list.js --company build/bench-results/company.lhcompany
    lock_checkout
}

measure_writer() {
    install_bench_packages
    build_preset bench xml_writer_bench
    local program=build/bench/benchmarks/xml_writer_bench writer count start
    "$program" --benchmark_out=build/bench-results/writer.json --benchmark_out_format=json
    [ -z "$quick" ] || return 0
    count_of() {
        valgrind --tool=callgrind --callgrind-out-file=/dev/null "$program" "$1" 2>&1 | sed -n 's/.*Collected : //p'
    }
    # What the program costs before it writes anything.
    start=$(count_of --benchmark_list_tests)
    printf '%-12s %14s\n' '' instructions
    for writer in XMLBuilder pugixml RapidXML libxml2; do
        count=$(($(count_of "$writer") - start))
        printf '%-12s %14d\n' "$writer" "$count"
    done | tee build/bench-results/writer-instructions.txt
}

run() {
    quick=
    local parts=() part
    while [ $# -gt 0 ]; do
        case $1 in
            --quick) quick=--quick ;;
            x64 | x86 | books | workbench | page | writer) parts+=("$1") ;;
            *) usage_error "'bench' does not know '$1'; './dev bench --help' says what it knows" ;;
        esac
        shift
    done
    if [ ${#parts[@]} -eq 0 ]; then
        parts=(x64 x86 books workbench page writer)
        [ -z "$quick" ] || parts=(x64 books workbench page writer)
    fi
    install_packages
    lock_checkout
    mkdir -p build/bench-results
    . tools/wine.sh
    for part in "${parts[@]}"; do
        case $part in
            x64 | x86) measure_module "$part" ;;
            *) "measure_$part" ;;
        esac
    done
    python3 -B benchmarks/draw.py collect
}
