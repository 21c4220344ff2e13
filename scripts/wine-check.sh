#!/usr/bin/env bash
# Under Wine, in a prefix of its own and on a display in memory: loads the DLL and runs the check
# program that stands beside it, then the conformance cases.
set -euo pipefail
[ -n "${CHECK_DISPLAY-}" ] || exec env CHECK_DISPLAY=1 xvfb-run -a "$0" "$@"
bin=$(cd "$1" && pwd)
prefix=$(mktemp -d)
trap 'WINEPREFIX=$prefix wineserver -k 2>/dev/null || true; rm -rf "$prefix"' EXIT
export WINEPREFIX=$prefix WINEDEBUG=-all WINEDLLOVERRIDES='mscoree=;mshtml='
wine=$(command -v wine64 || command -v wine || echo /usr/lib/wine/wine64)
"$wine" wineboot -i >/dev/null 2>&1 || true
# Without a window manager nobody answers for the windows, and each would wait seconds for it.
"$wine" reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null
cd "$bin"
timeout 120 "$wine" dll_check.exe
timeout 120 "$wine" conformance.exe --gtest_brief=1
