#!/usr/bin/env bash
# imports, exports, checks and shows company files

usage() {
    cat <<'END'
Usage: ./dev company import TEXT FILE    makes the company file FILE from the company's text
       ./dev company export FILE [TEXT]  writes the company's text to TEXT, or prints it
       ./dev company check FILE          says whether the books are true: exit status 1 when they are not
       ./dev company show FILE           prints the accounts with their balances, and what customers owe

A company file (*.lhcompany) is an SQLite database that the reference host opens. A company's text is readable XML;
examples/riverside.xml is one. Importing what was exported gives the same books again.
END
}

run() {
    [ $# -gt 0 ] || { usage >&2; exit 2; }
    local arguments=("$1") argument
    shift
    for argument in "$@"; do
        arguments+=("$(named_path "$argument")")
    done
    install_packages
    lock_checkout
    build_preset x64 refhost/commands/all
    . tools/wine.sh
    use_wine
    start_wine
    local status=0
    run_wine 600 build/x64 build/x64/refhost/company.exe "${arguments[@]}" || status=$?
    exit "$status"
}
