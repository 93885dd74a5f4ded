#!/usr/bin/env bash
# Formats the C++ sources in place; with --check it only names those that are not formatted, and fails if there are any.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# Files that are not committed yet count; files that are deleted but still known to git do not.
list_sources() {
    git ls-files -z --cached --others --exclude-standard -- '*.cpp' '*.hpp' '*.h' '*.c' |
        while IFS= read -r -d '' file; do
            [ ! -f "$file" ] || printf '%s\0' "$file"
        done
}

if [ "${1-}" != --check ]; then
    list_sources | xargs -0 -r clang-format -i
    exit 0
fi

findings=$(list_sources | xargs -0 -r clang-format --dry-run -Werror 2>&1) && exit 0
unformatted=$(sed -n 's/^\([^:]*\):[0-9]*:.*code should be clang-formatted.*/\1/p' <<<"$findings" | sort -u)
if [ -z "$unformatted" ]; then
    printf '%s\n' "$findings"
    exit 1
fi
printf 'not formatted:\n'
sed 's/^/  /' <<<"$unformatted"
printf "'./dev format' mends that\n"
exit 1
