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
    cmake --preset tidy >/dev/null
    shift
    [ $# -gt 0 ] || set -- $library sheet
    # A source is looked at again when it, a header or the rules have changed.
    clean=build/tidy/clean
    mkdir -p "$clean"
    common=$({ sources . | grep '\.h$'; git ls-files .clang-tidy '*.cmake' '*CMakeLists.txt'; } | xargs cat | sha1sum | cut -d' ' -f1)
    export clean common
    sources "$@" | grep '\.cpp$' | grep -v '^sheet/windows/' | xargs -P "$(nproc)" -I {} bash -c '
        stamp=$clean/$({ cat "$0"; echo "$0 $common"; } | sha1sum | cut -d" " -f1)
        [ ! -e "$stamp" ] || exit 0
        clang-tidy --quiet --extra-arg=-Wno-unknown-warning-option -p build/tidy "$0" 2>/dev/null && touch "$stamp"' {}
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
