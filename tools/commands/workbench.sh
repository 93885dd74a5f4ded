#!/usr/bin/env bash
# serves a page to a browser and lets it work with the component

usage() {
    cat <<'END2'
Usage: ./dev workbench [--company FILE] [--page FOLDER] [--port N] [--arch x64|x86] [--open]

Builds the component, the reference host and the workbench, and serves a page that works with them from any browser of
this machine, until Ctrl-C. workbench/README.md tells what the page gets.

  --company FILE  works on this company file and leaves in it what the page recorded; without it, on a fresh copy of the
                  sample company, build/workbench/riverside.lhcompany
  --page FOLDER   serves the page of this folder, unchanged; without it the workbench's own, a payment terminal
  --port N        the port on 127.0.0.1; 8137 is the usual one, 0 takes any that is free
  --arch x86      the 32-bit component; x64 is the default
  --open          opens the page in Chromium

Exit status: 130 after Ctrl-C; 2 when an option is wrong, the port is taken or the company file cannot be opened.
END2
}

fresh_company() {
    make_sample_company "build/$1"
    mkdir -p build/workbench
    rm -f build/workbench/riverside.lhcompany-journal
    cp build/riverside.lhcompany build/workbench/riverside.lhcompany
}

# The browser keeps what it knows of the workbench apart from the user's own profile.
browser_command() {
    browser=(chromium "--user-data-dir=$PWD/build/workbench/browser" --no-first-run
        "--host-resolver-rules=MAP *.example 127.0.0.1")
    [ "$(id -u)" -ne 0 ] || browser+=(--no-sandbox)
}

# open_page: reads what the program prints, passes it on, and opens the address.
open_page() {
    local line address browser
    browser_command
    while IFS= read -r line; do
        line=${line%$'\r'}
        printf '%s\n' "$line"
        address=${line#The workbench runs at }
        [ "$address" != "$line" ] || continue
        printf 'Open it with: chromium "--host-resolver-rules=MAP *.example 127.0.0.1" %s\nCtrl-C ends it.\n' "$address"
        [ "$1" = 0 ] || "${browser[@]}" "$address" >/dev/null 2>&1 &
    done
}

# Windows programs do not hear Ctrl-C here: the end of its input ends this one, in its own time.
end_program() {
    exec 7>&-
    wait "$program" 2>/dev/null || true
    say "stopped"
    exit "$1"
}

run() {
    local company= page= port= arch=x64 open=0 arguments=()
    while [ $# -gt 0 ]; do
        case $1 in
            --company)
                [ $# -ge 2 ] || usage_error "--company needs a company file"
                company=$(named_path "$2")
                shift
                ;;
            --page)
                [ $# -ge 2 ] || usage_error "--page needs a folder"
                page=$(named_path "$2")
                shift
                ;;
            --port)
                [[ ${2-} =~ ^[0-9]{1,5}$ && ${2-} -le 65535 ]] ||
                    usage_error "--port takes a number from 0 to 65535, not '${2-}'"
                port=$2
                shift
                ;;
            --arch)
                check_architecture "${2-}"
                arch=$2
                shift
                ;;
            --open) open=1 ;;
            *) usage_error "'workbench' does not know '$1'; './dev workbench --help' says what it knows" ;;
        esac
        shift
    done
    [ -z "$company" ] || [ -f "$company" ] || usage_error "there is no company file '$company'; './dev company import' makes one"
    [ -z "$page" ] || [ -d "$page" ] || usage_error "there is no folder '$page'"
    [ "$open" = 0 ] || command -v chromium >/dev/null || usage_error "--open needs the program chromium: install the package of this name"

    install_packages
    lock_checkout
    build_preset "$arch" workbench/all refhost/all Paylodge
    . tools/wine.sh
    use_wine
    start_wine
    [ -n "$company" ] || { fresh_company "$arch" && company=build/workbench/riverside.lhcompany; }
    arguments=(--ends-with-input --company "$(windows_path "$company")" ${port:+--port "$port"})
    [ -z "$page" ] || arguments+=(--page "$(windows_path "$page")")

    local input status=0
    input=$(mktemp -u)
    mkfifo "$input"
    "$PAYLODGE_WINE" "build/$arch/workbench/workbench.exe" "${arguments[@]}" <"$input" > >(open_page "$open" 9>&-) 9>&- &
    program=$!
    exec 7>"$input"
    rm -f "$input"
    trap 'end_program 130' INT
    trap 'end_program 143' TERM
    wait "$program" || status=$?
    exit "$status"
}
