#!/usr/bin/env bash
# Formats the C++ sources in place; with --check it only names those that are not formatted, and fails if there are any.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# Every release of clang-format formats a little differently.
clang_format=clang-format-19

# Works without git, and counts files that are not committed yet.
list_sources() {
    find . \( -path ./build -o -path ./dist -o -path ./.git -o -name node_modules \) -prune -o \
        -type f \( -name '*.cpp' -o -name '*.hpp' -o -name '*.h' -o -name '*.c' \) -printf '%P\0'
}

if [ "${1-}" != --check ]; then
    list_sources | xargs -0 -r "$clang_format" -i
    exit 0
fi

findings=$(list_sources | xargs -0 -r "$clang_format" --dry-run -Werror 2>&1) && exit 0
unformatted=$(sed -n 's/^\([^:]*\):[0-9]*:.*code should be clang-formatted.*/\1/p' <<<"$findings" | sort -u)
if [ -z "$unformatted" ]; then
    printf '%s\n' "$findings"
    exit 1
fi
printf 'not formatted:\n'
sed 's/^/  /' <<<"$unformatted"
printf "'./dev format' mends that\n"
exit 1
