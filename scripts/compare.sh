#!/usr/bin/env bash
# Runs each script of samples/scripts/ on the host and in a real property sheet under Wine, and compares
# what both print and the files that they leave on drive C.
#   scripts/compare.sh [NAME]      the scripts whose name holds NAME
# Needs build/host-sanitized and build/windows. Everything is kept in build/wine/compare/.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
. scripts/wine.sh
host=build/host-sanitized/bin/sheet
windows=build/windows/bin
work=build/wine/compare
exceptions=samples/scripts/not-compared
name=${1-}

# What can't be the same: how Wine spells its own folder, and that the system adds the terminator
# to a text that is written without one.
normalise() {
    perl -pe 's/C:(\\+)windows\b/C:$1Windows/g;
        s/^(".*"=)hex\(1\):((?:[2-7][0-9a-f],00,?)+)$/$1 . "\"" . pack("C*", map { hex } split(",00,?", $2)) . "\""/e'
}

# text FILE: a text file's contents in UTF-8 with plain line ends.
text() {
    if [ "$(head -c 2 "$1" | od -An -tx1 | tr -d ' ')" = fffe ]; then iconv -f UTF-16 -t UTF-8 "$1"; else cat "$1"; fi | tr -d '\r'
}

# files FOLDER: the files that a run has left below a drive's folder, with their contents.
files() {
    local file start
    start=$(realpath "$2")
    (cd "$1" && find . -type f -newer "$start" ! -ipath './windows/temp/*' ! -ipath './users/*' | sort -f) | while read -r file; do
        echo "file | ${file,,}"
        text "$1/$file"
    done
}

# run_host FOLDER SCRIPT SAMPLE [OPTION...]
run_host() {
    local folder=$1 script=$2 sample=$3
    shift 3
    mkdir -p "$folder/c/Program Files/Corvanta/Documentation"
    cp -p resources/help.xml "$folder/c/Program Files/Corvanta/Documentation/"
    touch "$folder/start"
    "$host" "$sample" "$@" --files "$folder/c" --script "$script" >"$folder/host" 2>"$folder/errors"
    local code=$?
    cat "$folder/errors" >>"$folder/host"
    echo "exit $code" >>"$folder/host"
    files "$folder/c" "$folder/start" >>"$folder/host"
}

# run_windows FOLDER SCRIPT SAMPLE [OPTION...]
run_windows() {
    local folder=$1 script=$2 sample=$3
    shift 3
    copy_prefix "$work/prefix" "$folder/prefix" || return 1
    export WINEPREFIX=$PWD/$folder/prefix
    local c=$WINEPREFIX/drive_c
    mkdir -p "$c/Program Files/Corvanta/Documentation"
    cp -p resources/help.xml "$c/Program Files/Corvanta/Documentation/"
    import_sample "$sample" "$folder/import.reg" "$host"
    touch "$folder/start"
    timeout 60 "$wine" "$windows/sheet.exe" --lend "$windows/lend.dll" "$@" --script "$script" >"$folder/windows" 2>"$folder/errors"
    local code=$?
    # Wine has something to say of its own there.
    grep '^sheet: ' "$folder/errors" >>"$folder/windows"
    echo "exit $code" >>"$folder/windows"
    end_prefix "$WINEPREFIX"
    files "$c" "$folder/start" >>"$folder/windows"
}

# compare SCRIPT: leaves its verdict in a file of its own.
compare() {
    local script=$1 folder command
    folder=$work/$(basename "$script" .txt)
    mkdir -p "$folder"
    # The script's own comment says on which machine it is meant to run.
    command=$(sed -n 's/^#  *sheet \(samples\/.*\) --script .*/\1/p' "$script" | head -n 1)
    eval "set -- $command"
    run_host "$folder" "$script" "$@"
    run_windows "$folder" "$script" "$@"
    rm -rf "$folder/prefix"
    normalise <"$folder/host" >"$folder/host.text"
    normalise <"$folder/windows" >"$folder/windows.text"
    diff -u --label "$script on the host" "$folder/host.text" --label "$script under Wine" "$folder/windows.text" >"$folder/difference"
}

[ -n "${DISPLAY-}" ] && [ -n "${COMPARE_DISPLAY-}" ] || exec env COMPARE_DISPLAY=1 xvfb-run -a -s '-screen 0 1024x768x24' "$0" "$@"
rm -rf "$work"
mkdir -p "$work"
new_prefix "$PWD/$work/prefix" || { echo "no Windows could be made in $work/prefix"; exit 1; }
compared=0 differ=0
scripts=()
for script in samples/scripts/*"$name"*.txt; do
    grep -q "^$(basename "$script" .txt) " "$exceptions" || scripts+=("$script")
done
for script in "${scripts[@]}"; do
    while [ "$(jobs -pr | wc -l)" -ge 2 ]; do wait -n; done
    compare "$script" &
done
wait
for script in "${scripts[@]}"; do
    difference=$work/$(basename "$script" .txt)/difference
    compared=$((compared + 1))
    [ -e "$difference" ] && [ ! -s "$difference" ] && continue
    differ=$((differ + 1))
    cat "$difference"
done
rm -rf "$work/prefix"
echo "$compared scripts compared, $differ differ"
[ "$differ" = 0 ] && [ "$compared" -gt 0 ]
