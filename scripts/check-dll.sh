#!/usr/bin/env bash
# Checks a built DLL: what it exports, which libraries it loads, its security flags.
set -euo pipefail
dll=$1
headers=$(x86_64-w64-mingw32-objdump -p "$dll")
fail=0

exports=$(sed -n '/Ordinal\/Name Pointer/,/^$/p' <<<"$headers" | sed -n 's/^\t\[ *[0-9]*\] //p' | sort | xargs)
[ "$exports" = "CvtPropPageProvider DllMain WinTsrTunePropPageProvider" ] || { echo "exports: $exports"; fail=1; }

# Libraries of Windows itself; anything else would have to be shipped.
system=" advapi32 cfgmgr32 comctl32 comdlg32 gdi32 iphlpapi kernel32 msvcrt ole32 oleaut32 setupapi shlwapi user32 "
while read -r library; do
    [[ $system == *" ${library,,} "* ]] || { echo "loads $library"; fail=1; }
done < <(sed -n 's/^\s*DLL Name: \(.*\)\.dll$/\1/Ip' <<<"$headers")

# The device tree comes from cfgmgr32, which has it on every Windows.
awk '/DLL Name:/ {dll=tolower($3)} / CM_/ {print dll}' <<<"$headers" | sort -u | grep -vx cfgmgr32.dll && { echo "CM_ calls not from cfgmgr32"; fail=1; }

for flag in HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT; do
    grep -q "^\s*$flag" <<<"$headers" || { echo "$flag is off"; fail=1; }
done
grep -q 'Base Relocation Directory' <<<"$headers" || { echo "no relocations"; fail=1; }
exit $fail
