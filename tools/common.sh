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

# Two commands that build or run at once in one checkout would disturb each other. What outlives the command must not
# inherit descriptor 9.
lock_checkout() {
    mkdir -p build
    exec 9>build/.lock
    flock --nonblock 9 && return
    say "waiting for the ./dev command that is already running in this checkout"
    flock 9
}

install_packages() { bash tools/setup.sh; }

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
    say "building $preset"
    (cd "build/$preset" && exec ninja "$@" 9>&-) || fail "building $preset failed: the lines above say why"
}
