#!/usr/bin/env bash
# feeds the component with hostile input

usage() {
    cat <<'END'
Usage: ./dev fuzz [--seconds N] [FUZZER]...

Runs the given fuzzers, without an argument all of them, for N seconds each (default 60).

Those of tests/fuzz run on this machine with its sanitizers. They begin with the seeds in tests/fuzz/corpus. What they
learn stays in build/fuzz/FUZZER; an input that breaks something is left in build/fuzz and named: it becomes a test.
The fuzzer "operations" runs under Wine, whose parser it needs: each operation reads responses that came to harm, and
what it returns is compared with a plain query. A document that breaks something is printed.
END
}

# run_fuzzer NAME SECONDS
run_fuzzer() {
    local name=${1%_fuzz} options=() seeds=()
    [ ! -f "tests/fuzz/$name.dict" ] || options=("-dict=tests/fuzz/$name.dict")
    [ ! -d "tests/fuzz/corpus/$name" ] || seeds=("tests/fuzz/corpus/$name")
    mkdir -p "build/fuzz/$1"
    say "fuzzing $1 for $2 s"
    "build/native/fuzz/$1" -max_total_time="$2" -timeout=10 -handle_int=0 -artifact_prefix="build/fuzz/$1-" -print_final_stats=1 \
        "${options[@]}" "build/fuzz/$1" "${seeds[@]}" 9>&- ||
        fail "$1 found something: the lines above say what; 'build/native/fuzz/$1 FILE' shows it again"
}

# fuzz_operations SECONDS
fuzz_operations() {
    build_preset x64 hostile_operations_tests
    use_wine
    start_wine
    say "fuzzing operations for $1 s"
    PAYLODGE_FUZZ_SECONDS=$1 run_wine $(($1 + 120)) build/x64 build/x64/tests/hostile_operations_tests.exe \
        '--gtest_filter=HarmedResponse.*' ||
        fail "operations found something: the lines above say what"
}

run() {
    local seconds=60 fuzzers=() fuzzer
    while [ $# -gt 0 ]; do
        case $1 in
            --seconds)
                [[ ${2-} =~ ^[0-9]+$ ]] || usage_error "--seconds needs a number"
                seconds=$2
                shift
                ;;
            -*) usage_error "'fuzz' does not know '$1'; './dev fuzz --help' says what it knows" ;;
            *) fuzzers+=("$1") ;;
        esac
        shift
    done
    install_packages
    lock_checkout
    . tools/wine.sh
    build_preset native fuzzers
    [ ${#fuzzers[@]} -gt 0 ] || mapfile -t fuzzers < <(cd build/native/fuzz && ls -- *_fuzz && printf 'operations\n')
    for fuzzer in "${fuzzers[@]}"; do
        [ "$fuzzer" = operations ] || [ -x "build/native/fuzz/$fuzzer" ] || usage_error "there is no fuzzer '$fuzzer' in tests/fuzz"
    done
    for fuzzer in "${fuzzers[@]}"; do
        case $fuzzer in
            operations) fuzz_operations "$seconds" ;;
            *) run_fuzzer "$fuzzer" "$seconds" ;;
        esac
    done
}
