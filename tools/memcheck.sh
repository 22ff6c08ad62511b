#!/bin/bash
# Runs test programs under valgrind at the baseline level: reads of what nobody wrote show nowhere else.
# Usage: tools/memcheck.sh [FILTER] [FAMILY...]
# FILTER is that of GoogleTest; by default the recorded calls and hand-written tests of g726 and gsmfr, a minute.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
filter=${1-'*Recorded*:*y8*'}
(($# < 2)) || shift
(($# > 0)) && [[ $1 != "$filter" ]] && families=("$@") || families=(g726 gsmfr)
for family in "${families[@]}"; do
    VSPSC_LEVEL=y8 valgrind -q --error-exitcode=9 build/dev/bin/test_"$family" --gtest_brief=1 --gtest_filter="$filter"
done
