#!/bin/bash
# Runs test programs under valgrind at the baseline level: reads of what nobody wrote show nowhere else.
# Usage: tools/memcheck.sh [FILTER] [FAMILY...]
# FILTER is that of GoogleTest; by default the recorded calls and hand-written tests of all families, some minutes.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
filter=${1-'*Recorded*:*y8*'}
(($# < 2)) || shift
(($# > 0)) && [[ $1 != "$filter" ]] && families=("$@") ||
    families=(alc amrwb arithmetic common ec g722 g7221 g723 g726 g728 g729 gsmamr gsmfr vector)
for family in "${families[@]}"; do
    VSPSC_LEVEL=y8 valgrind -q --error-exitcode=9 build/dev/bin/test_"$family" --gtest_brief=1 --gtest_filter="$filter"
done
