#!/usr/bin/env bash
# Fetches the sources of other projects that the reference host is built from and the tools that its tests need, into
# build/third-party; does nothing when all of them are there. Each is pinned: its version here, its bytes by a checksum.
#
# They come through the clients of npm and apt, from whatever package sources this machine has.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

folder=$PWD/build/third-party

# name, what fetches it, package and version (or suite), checksum of the archive, what is taken out of it
pinned=(
    "sqlite    npm       better-sqlite3@12.11.1  ebf0ed75a7a59dbcb3b24bbd014ef49d9f15bc328e4adcbf516f2a8fadfa2835  package/deps/sqlite3"
    "typescript npm      typescript@5.9.3        10e108c9cf7d5f2879053dff18515fb405abf2ccef63eaaf017d9c571687a1d3  package"
    "playwright-core npm playwright-core@1.60.0  8b1df81ba75e90a41eb5c996350ea7ecc1c915ea643ec55138f91c949c5a25bf  package"
    "axe-core  npm       axe-core@4.11.1         5b86f813d96904f2d925fed5715877c75fc1cc140f89565fb42145e7801b2305  package"
    "expat     bookworm  expat                   ab00ee05c7067fd10a35c5d2a4922ebba746ddd50ff83b79c828da17bbdf1757  libexpat-R_2_5_0/expat"
    "utf8proc  bookworm  utf8proc                a0a60a79fe6f6d54e7d411facbfcc867a6e198608f2cd992490e46f04b1bcecc  utf8proc-2.8.0"
)

say() { printf 'setup: %s\n' "$*" >&2; }

fail() {
    [ ! -f "$scratch/log" ] || cat "$scratch/log" >&2
    say "$*"
    exit 1
}

is_there() { [ "$(cat "$folder/$1/.checksum" 2>/dev/null)" = "$2" ]; }

# Prints the name of the archive.
fetch_with_npm() {
    command -v npm >/dev/null || fail "npm is missing: install the package npm, then try again"
    (cd "$scratch" && npm pack --silent "$1" 2>"$scratch/log" | tail -n 1)
}

# fetch_with_apt SUITE PACKAGE: the upstream archive of a Debian release's source package, whatever release this machine
# has. The lists for that are kept apart from the machine's own. Prints the name of the archive.
fetch_with_apt() {
    local uri options
    uri=$(apt-get indextargets --format '$(REPO_URI)' 'Origin: Debian' 'Label: Debian' | head -n 1)
    [ -n "$uri" ] || fail "apt knows no Debian package source: the lists in /etc/apt name none, or 'apt-get update' never ran"
    mkdir -p "$scratch"/apt/{parts,lists/partial,cache/archives/partial}
    printf 'Types: deb-src\nURIs: %s\nSuites: %s\nComponents: main\nSigned-By: /usr/share/keyrings/debian-archive-keyring.gpg\n' \
        "$uri" "$1" >"$scratch/apt/parts/source.sources"
    options=(-o "Dir::Etc::sourcelist=/dev/null" -o "Dir::Etc::sourceparts=$scratch/apt/parts" -o APT::Sandbox::User=
        -o "Dir::State::lists=$scratch/apt/lists" -o "Dir::Cache=$scratch/apt/cache" -o Debug::NoLocking=true)
    (
        cd "$scratch"
        [ -e "$scratch/apt/$1" ] || apt-get "${options[@]}" update
        touch "$scratch/apt/$1"
        apt-get "${options[@]}" source --tar-only --download-only "$2"
    ) >"$scratch/log" 2>&1 || fail "the sources of $2 could not be fetched: the lines above say why"
    (cd "$scratch" && ls "$2"_*.orig.tar.*)
}

# take NAME CLIENT PACKAGE CHECKSUM PART
take() {
    local archive found
    say "fetching the sources of $1"
    case $2 in
        npm) archive=$(fetch_with_npm "$3") || fail "$3 could not be fetched: the lines above say why" ;;
        *) archive=$(fetch_with_apt "$2" "$3") ;;
    esac
    found=$(sha256sum <"$scratch/$archive" | cut -d ' ' -f 1)
    [ "$found" = "$4" ] || fail "$archive is not the file that was asked for: its checksum is $found instead of $4"
    mkdir "$scratch/unpacked"
    tar -xf "$scratch/$archive" -C "$scratch/unpacked" "$5"
    rm -rf "${folder:?}/$1"
    mv "$scratch/unpacked/$5" "$folder/$1"
    rm -rf "$scratch/unpacked"
    printf '%s\n' "$4" >"$folder/$1/.checksum"
}

# Two commands that begin at once take turns.
mkdir -p "$folder"
exec 8>"$folder/.lock"
flock 8
scratch=
for entry in "${pinned[@]}"; do
    read -r -a part <<<"$entry"
    is_there "${part[0]}" "${part[3]}" && continue
    if [ -z "$scratch" ]; then
        scratch=$(mktemp -d "$folder/.fetching-XXXXXX")
        trap 'rm -rf "$scratch"' EXIT
    fi
    take "${part[@]}"
done
