#!/bin/bash
# Builds with counters, runs the tests, and prints how much of the libraries and of the tool they run; what they do not run
# is in lines.txt of the build's folder. Each test program runs once as a whole, because every process that ends adds to the counts.
# Usage: tools/coverage.sh [LEVEL]    counts one level only, y8, v3 or v4, which is built much faster, in build/coverage-LEVEL
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=build/coverage${1:+-$1}
cmake --preset coverage -B $build -DVSPSC_COVERAGE="${1:-ON}"
cmake --build $build
find $build -name '*.gcda' -delete
status=0
for program in $build/bin/test_*; do
    case $program in *test_exhaustive | *test_huge_lengths | *test_long_arrays) continue ;; esac
    "$program" --gtest_brief=1 || status=1
done
for program in $build/bin/replay_voice*; do "$program" fuzz/corpus/"${program##*/replay_}" || status=1; done
# Two limit the size of files, those of the counters too.
ctest --test-dir $build -R '^vsps[.]' -E 'damaged|level_output' --output-on-failure || status=1

counts=$build/counts.json
gcovr --root . --filter 'src/' --filter 'voice/' --filter 'tools/vsps/' --exclude-throw-branches --exclude-unreachable-branches \
    --gcov-ignore-parse-errors -j "$(nproc)" --json $counts $build
gcovr --root . --add-tracefile $counts >$build/lines.txt
for part in src voice tools/vsps; do
    echo "$part:"
    gcovr --root . --add-tracefile $counts --filter "$part/" --print-summary --output "$build/part.txt"
done
exit $status
