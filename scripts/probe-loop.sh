#!/usr/bin/env bash
# Shows the NUMA probe's store loop as it was compiled, by default for Windows. Fails unless the
# loop is there and is nothing but two loads, the store and the counting.
#   scripts/probe-loop.sh [OBJECT...]
set -euo pipefail
cd "$(dirname "$0")/.."
shopt -s globstar nullglob
[ $# -gt 0 ] || set -- build/windows/CMakeFiles/tuning.dir/**/*.obj
[ -f "${1-}" ] || { echo "${1:-the Windows library} isn't built"; exit 1; }
objdump=objdump
[[ $1 == *.obj ]] && objdump=x86_64-w64-mingw32-objdump

# The loop ends with the first jump back behind the count of stores, and begins where that leads.
loop=$("$objdump" -d --no-show-raw-insn "$@" | awk '
    /\$0x1fffff,/ { counted = 1; next }
    !counted || done { next }
    {
        address = $1; sub(":", "", address)
        at[++lines] = address; text[lines] = $0
        if ($2 ~ /^j/ && $2 != "jmp") {
            for (i = 1; i <= lines; i++) if (at[i] == $3) first = i
            if (first) { for (i = first; i <= lines; i++) print text[i]; done = 1 }
        }
    }')
[ -n "$loop" ] || { echo "no loop in $*"; exit 1; }
printf '%s\n' "$loop"

fail=0
# count WHAT PATTERN WANTED: how many of the loop's instructions are such.
count() {
    local found
    found=$(grep -cE "$2" <<<"$loop" || true)
    [ "$found" = "$3" ] || { echo "$1: $found instead of $3"; fail=1; }
}
count calls '\bcall' 0
count loads 'mov[a-z]* +(0x[0-9a-f]+)?\(%[a-z0-9]+\),%' 2
count stores 'mov[a-z]* +%[a-z0-9]+,(0x[0-9a-f]+)?\(%' 1
count counting '\b(sub|add|dec|inc|cmp|test)[a-z]* ' 1
count jumps '\bj[a-z]+ ' 1
count instructions . 5
exit $fail
