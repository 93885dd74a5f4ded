#!/usr/bin/env bash
# runs a page's own script against the reference host

usage() {
    cat <<'END'
Usage: ./dev run FILE.js [--company FILE] [--arch x64|x86] [--traffic] [-- ARGUMENT...]

Builds and registers the component and the reference host, and runs the script with these objects:

  paylodge         the accounting object, as new ActiveXObject("Paylodge.Paylodge") makes it
  paylodgeControl  the control, through which a page reaches the card reader
  WScript          Echo(...), Quit(status), Arguments, ScriptFullName, FullName, CreateObject(name)

  --company FILE  works on this company file and leaves in it what the script recorded; without it, on a fresh copy of
                  the sample company, build/run/riverside.lhcompany
  --arch x86      as a 32-bit program; x64 is the default
  --traffic       prints each request to Ledgerhall and each response

Scripts are UTF-8, and so is what they print. An error that the script does not catch is printed with its HRESULT, file
and line. Exit status: 0; that of WScript.Quit; 1 for an uncaught error; 2 when the script or an option is wrong.
END
}

time_limit_seconds=600

register_for() {
    local folder=$1 system=$2 library
    for library in refhost/refhost.dll Paylodge.dll; do
        run_wine 60 "$folder" "C:\\windows\\$system\\regsvr32.exe" /s "$(windows_path "$folder/$library")" ||
            fail "registering $folder/$library failed; './dev clean' and another try may help"
    done
}

run() {
    local script= company= arch=x64 traffic=0 arguments=()
    while [ $# -gt 0 ]; do
        case $1 in
            --company)
                [ $# -ge 2 ] || usage_error "--company needs a company file"
                company=$(named_path "$2")
                shift
                ;;
            --arch)
                check_architecture "${2-}"
                arch=$2
                shift
                ;;
            --traffic) traffic=1 ;;
            --)
                shift
                arguments=("$@")
                break
                ;;
            -*) usage_error "'run' does not know '$1'; './dev run --help' says what it knows" ;;
            *)
                [ -z "$script" ] || usage_error "'run' takes one script; words for it stand behind --"
                script=$(named_path "$1")
                ;;
        esac
        shift
    done
    [ -n "$script" ] || usage_error "'run' needs a script: ./dev run FILE.js"
    [ -f "$script" ] || usage_error "there is no script '$script'"
    [ -z "$company" ] || [ -f "$company" ] || usage_error "there is no company file '$company'; './dev company import' makes one"

    install_packages
    lock_checkout
    build_preset "$arch" Paylodge refhost/all
    . tools/wine.sh
    use_wine
    start_wine
    if [ -z "$company" ]; then
        make_sample_company "build/$arch"
        mkdir -p build/run
        company=build/run/riverside.lhcompany
        rm -f "$company"-journal
        cp build/riverside.lhcompany "$company"
    fi
    local system=system32
    [ "$arch" = x64 ] || system=syswow64
    register_for "build/$arch" "$system"
    local status=0
    export LEDGERHALL_COMPANY_FILE LEDGERHALL_TRANSCRIPT=$traffic
    LEDGERHALL_COMPANY_FILE=$(windows_path "$company")
    run_wine "$time_limit_seconds" "build/$arch" "build/$arch/refhost/run.exe" "$script" "${arguments[@]}" || status=$?
    [ "$status" -ne 124 ] || fail "the script did not end within $time_limit_seconds s"
    exit "$status"
}
