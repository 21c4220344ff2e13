#!/usr/bin/env bash
# Under Wine, in a prefix of its own: loads the DLL and runs the check program that stands beside it,
# then the conformance cases.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/wine.sh
alone scripts/wine-check.sh
export WINEPREFIX=$wine_work/check
exceptions=$(sed -n 's/^case \([^ ]*\) .*/\1/p' samples/scripts/wine-exceptions | paste -sd :)
trap 'end_prefix "$WINEPREFIX"; rm -rf "$WINEPREFIX"' EXIT
output=$(mktemp)

# run PROGRAM ARGUMENT...: a program's first line says that it has started.
run() {
    local code=0
    timeout 600 "$wine" "$@" >"$output" 2>&1 || code=$?
    tr -d '\r' <"$output" | sed -n '/^started$/,$p' | sed 1d
    grep -q '^started' "$output" || return $no_wine
    return $code
}

once_more "an empty Windows" new_prefix "$WINEPREFIX"
start_prefix "$WINEPREFIX"
cd build/windows/bin
once_more dll_check run dll_check.exe
once_more conformance run conformance.exe --gtest_brief=1 --gtest_filter="-$exceptions"
