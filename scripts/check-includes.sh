#!/usr/bin/env bash
# Checks each quoted #include against the table of what a folder may include: its own headers, the
# resource ids, and those of the folders in its row.
set -euo pipefail
cd "$(dirname "$0")/.."

declare -A may=(
    [inc]=""
    [services]="inc"
    [tuning]="inc"
    [netconfig]="inc"
    [pages]="inc netconfig"
    [frame]="inc services tuning netconfig pages"
    [platform]=""
    [sheet]=""
    [sheet/host]="sheet platform"
    [sheet/windows]="sheet"
)

files=$(git ls-files --cached --others --exclude-standard -- '*.cpp' '*.h' | while read -r file; do [ ! -e "$file" ] || echo "$file"; done)
declare -A home
while read -r file; do home[${file##*/}]=${file%/*}; done < <(grep '\.h$' <<<"$files")

# part FOLDER: the row of the table that a folder belongs to.
part() {
    case $1 in
    sheet/host* | sheet/windows*) cut -d/ -f1-2 <<<"$1" ;;
    *) echo "${1%%/*}" ;;
    esac
}

fail=0
while IFS=: read -r file name; do
    name=${name##*/}
    own=$(part "${file%/*}")
    [ -n "${may[$own]+row}" ] || continue
    target=${home[$name]-}
    [ -n "$target" ] || { echo "$file includes $name, which isn't in the tree"; fail=1; continue; }
    target=$(part "$target")
    [[ " $own resources ${may[$own]} " == *" $target "* ]] || { echo "$file includes $name of $target/"; fail=1; }
done < <(xargs grep -HoE '^#include "[^"]+' <<<"$files" | sed 's|:#include "|:|')
exit $fail
