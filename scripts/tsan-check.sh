#!/usr/bin/env bash
# The thread sanitizer finds the race that was made for it, says nothing of the same program without
# it, and nothing of the tests of what has two threads.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/setup.sh
build host-tsan race thread_tests
bin=build/host-tsan/bin
output=$("$bin/race" 2>&1) && { echo "the race wasn't found"; exit 1; }
grep -q 'WARNING: ThreadSanitizer: data race' <<<"$output" && grep -q 'in Count$' <<<"$output" || { echo "$output"; exit 1; }
"$bin/race" guarded
"$bin/thread_tests" --gtest_brief=1
