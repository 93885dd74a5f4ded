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

# build_preset PRESET [TARGET]...: configures when that never happened or failed, then compiles what has changed.
build_preset() {
    local preset=$1 log=build/$1.configure.log
    shift
    if [ ! -f "build/$preset/build.ninja" ]; then
        say "configuring $preset"
        cmake --preset "$preset" >"$log" 2>&1 9>&- || {
            cat "$log" >&2
            fail "configuring $preset failed: the lines above say why"
        }
    fi
    say "building $preset"
    (cd "build/$preset" && exec ninja "$@" 9>&-) || fail "building $preset failed: the lines above say why"
}
