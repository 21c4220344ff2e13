#!/usr/bin/env bash
# Runs each script of samples/scripts/ on the host and in a real property sheet under Wine, and compares
# what both print and the files that they leave on drive C. Then does the same with a few random scripts.
#   scripts/compare.sh [NAME]             only the scripts whose name holds NAME
#   scripts/compare.sh --random N SEED    N random scripts, the first of which is that of SEED
# Needs build/host-sanitized and build/windows. Both sides are kept in build/wine/compare/.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
. scripts/wine.sh
alone scripts/compare.sh "$@"
host=build/host-sanitized/bin/sheet
windows=build/windows/bin
work=$wine_work/compare
exceptions=samples/scripts/wine-exceptions
name= random=6 seed=1
case ${1-} in
    '') ;;
    --random) random=$2 seed=$3 ;;
    *) name=$1 random=0 ;;
esac

# What can't be the same: how Wine spells its own folder, that the system adds the terminator to a text
# that is written without one, and that Wine doesn't know in which order values were made.
normalise() {
    perl -ne '
        s/C:(\\+)windows\b/C:$1Windows/g;
        s/^(".*"=)hex\(1\):((?:[2-7][0-9a-f],00,?)+)$/$1 . "\"" . pack("C*", map { hex } split(",00,?", $2)) . "\""/e;
        if (/^; Set again below/) { $moved = 1; next }
        next if $moved && /^".*"=-$/;
        $moved = 0;
        if ($goes_on) { $values[-1] .= $_ } elsif (/^(?:"|@=)/) { push @values, $_ } else { print sort @values; @values = (); print }
        $goes_on = @values && /\\$/;
        END { print sort @values }'
}

# text FILE: a text file's contents in UTF-8 with plain line ends.
text() {
    if [ "$(head -c 2 "$1" | od -An -tx1 | tr -d ' ')" = fffe ]; then iconv -f UTF-16 -t UTF-8 "$1"; else cat "$1"; fi | tr -d '\r'
}

# files FOLDER START: the files below a drive's folder that are newer than START, with their contents.
files() {
    local file start
    start=$(realpath "$2")
    (cd "$1" && find . -type f -newer "$start" ! -ipath './windows/temp/*' ! -ipath './users/*' | sort -f) | while IFS= read -r file; do
        echo "file | ${file,,}"
        text "$1/$file"
    done
}

# drive_c FOLDER: puts there what the driver package's installation leaves.
drive_c() {
    mkdir -p "$1"
    cp -rLp samples/drive/. "$1/"
}

# run_host FOLDER SCRIPT SAMPLE [OPTION...]
run_host() {
    local folder=$1 script=$2 sample=$3
    shift 3
    drive_c "$folder/c"
    touch "$folder/start"
    "$host" "$sample" "$@" --files "$folder/c" --script "$script" >"$folder/output" 2>"$folder/errors"
    local code=$?
    cat "$folder/output" "$folder/errors" >"$folder/host"
    echo "exit $code" >>"$folder/host"
    files "$folder/c" "$folder/start" >>"$folder/host"
}

# begin_windows: makes and starts the Windows in WINEPREFIX, unless it runs.
begin_windows() {
    [ ! -e "$WINEPREFIX" ] || return 0
    copy_prefix "$work/prefix" "$WINEPREFIX" && start_prefix "$WINEPREFIX" || return
    ln -s "$root/samples" "$root/build" "$WINEPREFIX/drive_c/"
}

end_windows() {
    end_prefix "$WINEPREFIX"
    rm -rf "$WINEPREFIX"
}

# run_windows FOLDER SCRIPT SAMPLE [OPTION...]: in drive C's own folder, where the host's names lead too.
# The time-out ends a program that hangs; what the script sees has a clock of its own.
run_windows() {
    local folder=$1 script=$2 sample=$3 c=$WINEPREFIX/drive_c
    shift 3
    rm -f "$folder/started"
    begin_windows || return $no_wine
    drive_c "$c"
    import_sample "$sample" "$folder/import.reg" "$host" || return
    touch "$folder/start"
    (cd "$c" && exec timeout 600 "$wine" "$root/$windows/sheet.exe" --started "$(windows_path "$folder")\\started" \
        --lend "$(windows_path "$root/$windows/lend.dll")" "$@" --script "$script") >"$folder/windows" 2>"$folder/errors"
    local code=$?
    [ -e "$folder/started" ] || { end_windows; return $no_wine; }
    # Wine has something to say of its own there.
    grep '^sheet: ' "$folder/errors" >>"$folder/windows"
    echo "exit $code" >>"$folder/windows"
    files "$c" "$folder/start" >>"$folder/windows"
    find "$c" -depth -newer "$folder/start" ! -ipath '*/windows/temp*' ! -ipath '*/users*' \( -type f -o -type d -empty \) -delete
}

# compare SCRIPT FOLDER: leaves its verdict in the folder.
compare() {
    local script=$1 folder=$2 machine
    # The script's own comment says on which machine it is meant to run.
    mapfile -t machine < <(sed -n 's/^#  *sheet \(samples\/.*\) --script .*/\1/p' "$script" | head -n 1 | xargs -n 1)
    if [ ${#machine[@]} = 0 ]; then
        echo "$script names no machine in its comment" >"$folder/difference"
        return
    fi
    run_host "$folder" "$script" "${machine[@]}"
    # Two refusals of the machine would look alike; one of the script's own names its line.
    if [ ! -s "$folder/output" ] && ! grep -q "^sheet: $script:" "$folder/errors"; then
        { echo "$script prints nothing on the host:"; cat "$folder/errors"; } >"$folder/difference"
        return
    fi
    if ! once_more "$script" run_windows "$folder" "$script" "${machine[@]}" >"$folder/notes"; then
        cp "$folder/errors" "$folder/windows"
        echo "Wine didn't start, or took no import of ${machine[0]}" >>"$folder/windows"
    fi
    normalise <"$folder/host" >"$folder/host.text"
    normalise <"$folder/windows" >"$folder/windows.text"
    diff -u --label "$script on the host" "$folder/host.text" --label "$script under Wine" "$folder/windows.text" >"$folder/difference"
}

for program in "$host" "$windows/sheet.exe" "$windows/lend.dll"; do
    [ -e "$program" ] || { echo "$program isn't built"; exit 1; }
done
# compare_all NUMBER: compares, in a Windows of its own, the scripts that no other takes.
compare_all() {
    export WINEPREFIX=$work/windows-$1
    local script folder
    for script in "${scripts[@]}"; do
        folder=$work/$(basename "$script" .txt)
        mkdir "$folder" 2>/dev/null || continue
        if [ ! -e "$script" ]; then
            drive_c "$folder/random-c"
            scripts/random-script.pl "${folder##*random-}" "$host" "$script" "$folder/random-c" 2>/dev/null
        fi
        compare "$script" "$folder"
    done
    end_windows
}

shopt -s nullglob
scripts=()
if [ "${1-}" != --random ]; then
    for script in samples/scripts/*"$name"*.txt; do
        grep -q "^script $(basename "$script" .txt) " "$exceptions" || scripts+=("$script")
    done
fi
for ((i = 0; i < random; ++i)); do
    scripts+=("${work#"$root"/}/random-$((seed + i))/random-$((seed + i)).txt")
done
[ ${#scripts[@]} -gt 0 ] || { echo "no script to compare is named so"; exit 1; }
rm -rf "$work"
mkdir -p "$work"
trap 'for WINEPREFIX in "$work"/windows-*; do end_windows; done; rm -rf "$work"/prefix' EXIT
once_more "an empty Windows" new_prefix "$work/prefix" || { echo "no Windows could be made in $work/prefix"; exit 1; }
for number in 1 2 3 4; do
    compare_all "$number" &
done
wait
differ=0
for script in "${scripts[@]}"; do
    cat "$work/$(basename "$script" .txt)/notes"
    difference=$work/$(basename "$script" .txt)/difference
    [ -e "$difference" ] && [ ! -s "$difference" ] && continue
    differ=$((differ + 1))
    cat "$difference"
done
echo "${#scripts[@]} scripts compared, $random of them random from seed $seed on, $differ differ"
[ "$differ" = 0 ]
