#!/usr/bin/env bash
# builds the component and the reference host

usage() {
    cat <<'END'
Usage: ./dev build [x64|x86|native]...

Builds the given flavours into build/FLAVOUR; without an argument x64 and x86.

  x64     for 64-bit Windows
  x86     for 32-bit Windows
  native  the pure core for this machine, under the address and undefined-behaviour sanitizers
END
}

run() {
    [ $# -gt 0 ] || set -- x64 x86
    local preset
    for preset in "$@"; do
        case $preset in
            x64 | x86 | native) ;;
            *) usage_error "there is no flavour '$preset' to build: x64, x86 or native" ;;
        esac
    done
    install_packages
    lock_checkout
    for preset in "$@"; do
        build_preset "$preset"
    done
}
