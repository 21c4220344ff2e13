#!/usr/bin/env bash
# Loads the DLL under Wine in a prefix of its own and runs the check program that stands beside it.
set -euo pipefail
bin=$(cd "$1" && pwd)
prefix=$(mktemp -d)
trap 'WINEPREFIX=$prefix wineserver -k 2>/dev/null || true; rm -rf "$prefix"' EXIT
export WINEPREFIX=$prefix WINEDEBUG=-all WINEDLLOVERRIDES='mscoree=;mshtml='
unset DISPLAY
wine=$(command -v wine64 || command -v wine || echo /usr/lib/wine/wine64)
"$wine" wineboot -i >/dev/null 2>&1 || true
cd "$bin"
timeout 120 "$wine" dll_check.exe
