#!/usr/bin/env bash
# Installs the packages that building and testing need and that are missing; does nothing when all are there.
set -euo pipefail

tools=(
    cmake ninja-build python3 git
    g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix mingw-w64-tools
    libwine-dev googletest
    clang libclang-rt-14-dev clang-format clang-tidy
    xvfb xauth
)
# Installed in one step: the two architectures of Wine have to have the same version.
wine=(wine wine64 wine32:i386)

say() { printf 'setup: %s\n' "$*" >&2; }

is_installed() {
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null || true)" = installed ]
}

missing=()
for package in "${tools[@]}" "${wine[@]}"; do
    is_installed "$package" || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

say "missing packages: ${missing[*]}"
as_root=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        say "installing packages needs root: run 'tools/setup.sh' as root once, then try again"
        exit 1
    fi
    as_root=(sudo)
fi

log=$(mktemp)
trap 'rm -rf "$log" "${pin_folder:-}"' EXIT

apt() {
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -y -o Dpkg::Use-Pty=0 "$@"
}

# Shows one line for each package that is unpacked; the whole log only when the step fails.
run_quietly() {
    local status=0
    "$@" 2>&1 | tee "$log" | sed -un -e 's/^Unpacking \([^ ]*\) (\([^)]*\)).*/setup:   \1 \2/p' >&2 || status=$?
    return "$status"
}

install_all() { run_quietly apt install --no-install-recommends "$@" "${missing[@]}"; }

# Where the security suite's index of one architecture is out of step, the release's own versions fit together.
install_from_release_only() {
    pin_folder=$(mktemp -d)
    chmod 755 "$pin_folder"
    printf 'Package: *\nPin: release n=bookworm-security\nPin-Priority: -10\n' >"$pin_folder/preferences"
    install_all -o Dir::Etc::Preferences="$pin_folder/preferences" --allow-downgrades \
        libgstreamer-plugins-base1.0-0/bookworm
}

dpkg --print-foreign-architectures | grep -qx i386 || "${as_root[@]}" dpkg --add-architecture i386
say "reading the package lists"
# A list that cannot be fetched is not fatal by itself: the install below decides.
apt update >"$log" 2>&1 || say "some package lists could not be fetched; going on with the others"
say "installing (a new machine downloads about 1 GB and takes a few minutes)"
if ! install_all; then
    say "that did not work; trying again with the release's own versions only"
    if ! install_from_release_only; then
        cat "$log" >&2
        say "the packages could not be installed: the lines above say why"
        exit 1
    fi
fi
say "done"
