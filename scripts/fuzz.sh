#!/usr/bin/env bash
# fuzz.sh [TARGET SECONDS]: looks for inputs that break TARGET for so long. machine_file merges, undoes
# and saves a file, some hundred a second; machine_file_reader only reads it, more than 10,000 a second;
# help_text shows a help file.
# What it learns stays in build/fuzz/TARGET; an input that breaks it is left beside that. Without
# arguments a short run of each from a fixed seed, which keeps nothing.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/setup.sh
build fuzz

# fuzz TARGET CORPUS OPTION...
fuzz() {
    local target=$1 corpus=$2 samples
    shift 2
    samples=$(mktemp -d)
    case $target in
    machine_file*) cp samples/*.reg "$samples" ;;
    help_text) cp resources/help.xml "$samples" ;;
    esac
    local code=0
    "build/fuzz/bin/${target}_fuzz" -artifact_prefix="build/fuzz/$target-" \
        -timeout=10 -rss_limit_mb=2048 -max_len=16384 -print_final_stats=1 "$@" "$corpus" "$samples" || code=$?
    rm -rf "$samples"
    return $code
}

if [ $# = 2 ]; then
    mkdir -p "build/fuzz/$1"
    fuzz "$1" "build/fuzz/$1" -max_total_time="$2"
else
    for target in machine_file machine_file_reader help_text; do
        runs=4000
        [ $target != machine_file_reader ] || runs=20000
        corpus=$(mktemp -d)
        code=0
        fuzz "$target" "$corpus" -seed=1 -runs=$runs || code=$?
        rm -rf "$corpus"
        [ $code = 0 ] || exit $code
    done
    echo "4000 inputs for each target, 20000 for the reader: none breaks it"
fi
