#!/usr/bin/env bash
# What the commands share. Sourced at the top of the checkout.

say() { printf '%s\n' "$*" >&2; }

fail() {
    say "dev: $*"
    exit 1
}

usage_error() {
    say "dev: $*"
    exit 2
}

# The path of a file that was named in the folder where ./dev was called.
named_path() {
    case $1 in
        /*) printf '%s' "$1" ;;
        *) if [ "${OLDPWD:-$PWD}" = "$PWD" ]; then printf '%s' "$1"; else printf '%s/%s' "$OLDPWD" "$1"; fi ;;
    esac
}

# The value of an option --arch.
check_architecture() {
    case $1 in
        x64 | x86) ;;
        *) usage_error "--arch takes x64 or x86, not '$1'" ;;
    esac
}

# at_exit COMMAND: runs it at the end of this command, however that comes.
exit_commands=()
at_exit() {
    exit_commands+=("$*")
    trap run_exit_commands EXIT
}

run_exit_commands() {
    local command
    trap '' INT TERM
    for command in "${exit_commands[@]}"; do
        "$command"
    done
}

# Ctrl-C reaches the programs that a command runs as well as this shell, which waits for their end.
end_interrupted() {
    [ -n "${programs_say_so-}" ] || say "stopped"
    exit 130
}

# Two commands that build or run at once in one checkout would disturb each other. The lock is on the folder itself, so
# that build/ can be removed under it. What outlives the command must not inherit descriptor 9.
lock_checkout() {
    exec 9<.
    if ! flock --nonblock 9; then
        say "waiting for the ./dev command that is already running in this checkout"
        flock 9
    fi
    mkdir -p build
}

install_packages() {
    bash tools/setup.sh
    bash tools/third-party.sh
}

# What a configured build folder was configured for and by. One that a copied or moved checkout brought along names the
# sources of the old folder, and would build those.
configuration_stamp() {
    pwd -P
    cmake --version
    cat CMakePresets.json cmake/mingw*.cmake
}

# configure PRESET: does nothing when build/PRESET is configured for what is here.
configure() {
    local folder=build/$1 log=build/$1.configure.log stamp
    stamp=$(configuration_stamp | sha256sum)
    [ "$(cat "$folder/.stamp" 2>/dev/null)" = "$stamp" ] && return
    say "configuring $1"
    rm -rf "$folder"
    cmake --preset "$1" >"$log" 2>&1 9>&- || {
        cat "$log" >&2
        fail "configuring $1 failed: the lines above say why"
    }
    printf '%s\n' "$stamp" >"$folder/.stamp"
}

# build_preset PRESET [TARGET]...: configures where that is needed, then compiles what has changed; without a TARGET the
# component and the reference host, or natively the pure core.
build_preset() {
    local preset=$1
    shift
    configure "$preset"
    # For clangd, which finds it there.
    [ "build/$preset/compile_commands.json" -ot build/compile_commands.json ] || python3 tools/compile_database.py
    say "building $preset"
    # Ninja has a line of its own when it is interrupted.
    programs_say_so=yes
    (cd "build/$preset" && exec ninja "$@" 9>&-) || fail "building $preset failed: the lines above say why"
    programs_say_so=
}
