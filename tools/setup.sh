#!/usr/bin/env bash
# Installs the packages that building and testing need and that are missing; does nothing when all are there.
set -euo pipefail

tools=(
    cmake ninja-build python3
    g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix mingw-w64-tools
    libwine-dev googletest libbenchmark-dev
    # The version that every supported release has, so that format and findings are the same on all of them.
    clang-19 libclang-rt-19-dev clang-format-19 clang-tidy-19
    xvfb xauth
    nlohmann-json3-dev
    # The browser of the workbench's tests, and the fonts that its pictures are compared with.
    chromium fonts-inter fonts-dejavu-core
)
# The newest Boost of the release.
case $(. /etc/os-release && printf '%s' "${VERSION_CODENAME-}") in
    bookworm) tools+=(libboost1.81-dev) ;;
    *) tools+=(libboost1.83-dev) ;;
esac
# Packages of which the command is enough, wherever it comes from.
declare -A commands=([nodejs]=node [npm]=npm)
# Installed in one step: the two architectures of Wine have to have the same version.
wine=(wine wine64 wine32:i386)

say() { printf 'setup: %s\n' "$*" >&2; }

# Prints those of the given packages that are not installed. A package without an architecture may have that of the
# machine or none.
list_missing() {
    local installed package
    # Fails when it does not know one of them, which is no more than an answer here.
    installed=$(
        { dpkg-query -W -f='${db:Status-Status} ${Package}:${Architecture}\n' "${@%%:*}" 2>/dev/null || true; } |
            sed -n -e "s/:$(dpkg --print-architecture)\$//" -e 's/:all$//' -e 's/^installed //p'
    )
    for package in "$@"; do
        grep -qxF "$package" <<<"$installed" || printf '%s\n' "$package"
    done
}

for package in "${!commands[@]}"; do
    command -v "${commands[$package]}" >/dev/null || tools+=("$package")
done
mapfile -t missing < <(list_missing "${tools[@]}" "${wine[@]}")
[ ${#missing[@]} -eq 0 ] && exit 0

say "missing packages: ${missing[*]}"
mapfile -t missing_of_wine < <(list_missing "${wine[@]}")
if [ ${#missing_of_wine[@]} -gt 0 ]; then
    mapfile -t missing < <(printf '%s\n' "${missing[@]}" "${wine[@]}" | sort -u)
fi

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        say "installing packages needs root: run 'tools/setup.sh' as root once, then try again"
        exit 1
    fi
    as_root=(sudo)
fi

trap 'exit 130' INT
log=$(mktemp)
trap 'rm -rf "$log" "${pin_folder:-}"' EXIT

apt() {
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -y -o Dpkg::Use-Pty=0 "$@"
}

# Shows how the download goes and a line for each package that is unpacked; the whole log only when the step fails.
# After Ctrl-C apt still has to end what it has begun to unpack, and needs somebody to read what it prints.
run_quietly() {
    "$@" 2>&1 | (
        trap '' INT
        tee "$log" | sed -un \
            -e 's/^Need to get .*/setup:   &/p' \
            -e 's/^Get:\([0-9]*0\) .*/setup:   fetching package \1/p' \
            -e 's/^Unpacking \([^ ]*\) (\([^)]*\)).*/setup:   \1 \2/p' >&2
    )
}

# Nothing is ever removed to make room.
install() { apt install --no-install-recommends --no-remove "${choice[@]}" "${missing[@]}" "$@"; }

fits() { install --simulate >"$log" 2>&1; }

# Where the security suite's index of one architecture cannot be fetched, its packages of the other architecture have no
# counterpart. The release's own versions fit together, also where that takes an installed library back to one of them.
choose_release_only() {
    local release
    release=$(. /etc/os-release && printf '%s' "$VERSION_CODENAME")
    pin_folder=$(mktemp -d)
    chmod 755 "$pin_folder"
    printf 'Package: *\nPin: release n=%s\nPin-Priority: %s\n\n' "$release-security" -10 "$release" 1001 \
        >"$pin_folder/preferences"
    choice=(-o Dir::Etc::Preferences="$pin_folder/preferences" --allow-downgrades)
}

choose_without_32_bit_wine() {
    choice=()
    mapfile -t missing < <(list_missing "${tools[@]}" "${wine[@]}" | grep -v ':i386$')
}

give_up() {
    cat "$log" >&2
    say "the packages could not be installed: the lines above say why"
    exit 1
}

dpkg --print-foreign-architectures | grep -qx i386 || "${as_root[@]}" dpkg --add-architecture i386
say "reading the package lists"
# A list that cannot be fetched is not fatal by itself: the install below decides.
apt update >"$log" 2>&1 || say "some package lists could not be fetched; going on with the others"
choice=()
if ! fits; then
    say "the newest versions do not fit together; taking the release's own versions"
    choose_release_only
    if ! fits; then
        say "wine32:i386 cannot be installed: what needs 32-bit Wine is skipped until it can"
        choose_without_32_bit_wine
    fi
fi
if [ ${#missing[@]} -gt 0 ]; then
    say "installing (a new machine downloads about 1 GB and takes a few minutes)"
    run_quietly install || give_up
fi
say "done"
