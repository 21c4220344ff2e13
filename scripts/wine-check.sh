#!/usr/bin/env bash
# Under Wine, in a prefix of its own: loads the DLL and runs the check program that stands beside it,
# then the conformance cases.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/wine.sh
on_display scripts/wine-check.sh
export WINEPREFIX=$wine_work/check
exceptions=$(sed -n 's/^case \([^ ]*\) .*/\1/p' samples/scripts/wine-exceptions | paste -sd :)
rm -rf "$WINEPREFIX"
trap 'end_prefix "$WINEPREFIX"; rm -rf "$WINEPREFIX"' EXIT
new_prefix "$WINEPREFIX"
cd build/windows/bin
timeout 120 "$wine" dll_check.exe
timeout 120 "$wine" conformance.exe --gtest_brief=1 --gtest_filter="-$exceptions"
