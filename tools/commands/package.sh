#!/usr/bin/env bash
# makes dist/paylodge-VERSION.zip, what a customer installs

usage() {
    cat <<'END'
Usage: ./dev package [--verify | --tests]

Builds the component for x64 and x86 and makes dist/paylodge-VERSION.zip of it: both DLLs with their debug files, type
libraries, manifests, the generated header, commands to register and unregister, documents and checksums. The version
is the project's version in CMakeLists.txt.

  --verify  build it once more from a copy of the sources in another folder, and compare the bytes (takes minutes)
  --tests   make dist/paylodge-VERSION-tests.zip instead: every test program of both architectures, the reference host,
            the page scripts, and run-tests.cmd, which runs them on a machine with Windows and nothing else
END
}

# Prints where the package is.
build_package() {
    local preset
    for preset in x64 x86; do
        build_preset "$preset" Paylodge >&2
    done
    python3 -B tools/package/package.py
}

# The same for the test kit.
build_test_kit() {
    local preset
    for preset in x64 x86; do
        build_preset "$preset" all tests/all >&2
    done
    python3 -B tools/package/test_kit.py
}

# What is not committed yet counts.
copy_sources() {
    tar --create --exclude=./build --exclude=./dist --exclude=./.git . | tar --extract --directory "$1"
}

remove_copy() { rm -rf "$copy"; }

verify_package() {
    copy=$(mktemp -d)
    at_exit remove_copy
    copy_sources "$copy"
    mkdir "$copy/build"
    say "building the package once more in another folder"
    (cd "$copy" && build_package >/dev/null) || fail "the second build failed: the lines above say why"
    cmp "$1" "$copy/dist/$(basename "$1")" >&2 || fail "the second build gave another package"
    say "the second build gave the same bytes"
}

run() {
    local verify='' make=build_package package
    while [ $# -gt 0 ]; do
        case $1 in
            --verify) verify=yes ;;
            --tests) make=build_test_kit ;;
            *) usage_error "'package' does not know '$1'; './dev package --help' says what it knows" ;;
        esac
        shift
    done
    [ -z "$verify" ] || [ "$make" = build_package ] || usage_error "--verify builds the package twice, not the test kit"
    install_packages
    lock_checkout
    package=$($make) || fail "the package was not made: the lines above say why"
    [ -z "$verify" ] || verify_package "$package"
    printf '%s\n' "${package#"$PWD"/}"
}
