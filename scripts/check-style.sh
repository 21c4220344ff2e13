#!/usr/bin/env bash
# format: all sources are as clang-format leaves them. tidy [FOLDER...]: clang-tidy has nothing to say
# about the product and sheet, or about those folders. limits: no file has grown past its limit, and
# the library stays plain Windows code.
set -euo pipefail
cd "$(dirname "$0")/.."
# The library's folders, from the one list of them.
library=$(sed -n 's/^set(LIBRARY_FOLDERS \(.*\))$/\1/p' cmake/LibraryFolders.cmake)
[ -n "$library" ] || { echo "cmake/LibraryFolders.cmake has no list"; exit 1; }
sources() { git ls-files --cached --others --exclude-standard -- "$@" | grep -E '\.(cpp|h)$' | while read -r file; do [ ! -e "$file" ] || echo "$file"; done; }
case $1 in
format)
    sources . | xargs clang-format --dry-run --Werror
    ;;
tidy)
    [ -f build/host-sanitized/compile_commands.json ] || { echo "build the host first"; exit 1; }
    shift
    [ $# -gt 0 ] || set -- $library sheet
    sources "$@" | grep '\.cpp$' | grep -v '^sheet/windows/' |
        xargs -P "$(nproc)" -n 3 clang-tidy --quiet --extra-arg=-Wno-unknown-warning-option -p build/host-sanitized 2>/dev/null
    ;;
limits)
    fail=0
    while read -r lines file; do
        [ "$lines" -le 600 ] || { echo "$file has $lines lines"; fail=1; }
    done < <(sources . | xargs wc -l | grep -v ' total$')
    while read -r file; do
        if sed 's|//.*||' "$file" | grep -nE '^\s*#\s*if.*(_WIN32|__linux|__MINGW|_MSC_VER)|\bwchar_t\b|\bstd::wstring\b|\bL"|\bTerminateThread\b|\bchar16_t\b'; then
            echo "$file isn't plain Windows code"
            fail=1
        fi
    done < <(sources inc $library)
    scripts/check-includes.sh || fail=1
    # shellcheck disable=SC2046
    same=$(sources . | grep '\.h$' | sed 's|.*/||' | grep -vxF -f <(ls platform/include) | sort -f | uniq -di)
    [ -z "$same" ] || { echo "headers of the same name: $same"; fail=1; }
    exit $fail
    ;;
esac
