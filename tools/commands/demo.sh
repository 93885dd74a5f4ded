#!/usr/bin/env bash
# shows the component at work against the reference host

usage() {
    cat <<'END'
Usage: ./dev demo [--fresh]

Builds the component for x64 and runs two page scripts of examples/ against the company file of the reference host:
first-steps.js, with each call, the LHXML request that went out, the response and the result; and working-day.js, a day
at the payment terminal from the morning's accounts to the evening's totals.

The demo works on a copy of the sample company, build/demo/riverside.lhcompany, and finds there what it recorded
the last time.

  --fresh  start over with a new copy
END
}

company_file=build/demo/riverside.lhcompany
time_limit_seconds=60

run_system_program() { run_wine "$time_limit_seconds" build/x64 "C:\\windows\\system32\\$1" "${@:2}"; }

register_library() {
    run_system_program regsvr32.exe /s "$(windows_path "$1")" ||
        fail "registering $1 failed; './dev clean' and another try may help"
}

# run_script FILE TRANSCRIPT: with 1 for TRANSCRIPT the host shows the requests and responses.
run_script() {
    export LEDGERHALL_COMPANY_FILE LEDGERHALL_TRANSCRIPT=$2
    LEDGERHALL_COMPANY_FILE=$(windows_path "$company_file")
    run_wine "$time_limit_seconds" build/x64 build/x64/refhost/run.exe "$1" | tr -d '\r' ||
        fail "the page script $1 failed: the lines above say why"
}

run() {
    local fresh=
    while [ $# -gt 0 ]; do
        case $1 in
            --fresh) fresh=yes ;;
            *) usage_error "'demo' does not know '$1'; './dev demo --help' says what it knows" ;;
        esac
        shift
    done

    install_packages
    lock_checkout
    build_preset x64 Paylodge refhost/all
    . tools/wine.sh
    use_wine
    start_wine
    make_sample_company build/x64
    mkdir -p build/demo
    if [ -n "$fresh" ] || [ ! -f "$company_file" ]; then
        rm -f "$company_file"-journal
        cp build/riverside.lhcompany "$company_file"
    fi

    register_library build/x64/refhost/refhost.dll
    register_library build/x64/Paylodge.dll
    cp "$company_file" "$company_file.before"
    run_script examples/first-steps.js 1
    say ""
    say "== A working day"
    run_script examples/working-day.js 0
    ! cmp -s "$company_file" "$company_file.before" ||
        fail "the page script recorded nothing in $company_file: what it printed above should say why"
    say ""
    run_wine "$time_limit_seconds" build/x64 build/x64/refhost/company.exe check "$company_file" ||
        fail "the books are not true any more: the lines above say why"
    say "The company file is $company_file. './dev demo' goes on with it; './dev demo --fresh' starts over."
}
