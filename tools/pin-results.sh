#!/bin/bash
# Writes what the described functions give for any legal arguments to tests/<family>/data/results.txt, which the tests compare
# with. For new functions, changed descriptions, and results that were wrong; look at the difference before committing it.
# Usage: tools/pin-results.sh [FAMILY...]    with the test programs in build/dev
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
families=("$@")
if (($# == 0)); then
    for folder in tests/*/described; do families+=("$(basename "$(dirname "$folder")")"); done
fi
results=$(mktemp)
trap 'rm -f "$results"' EXIT
for family in "${families[@]}"; do
    : >"$results"
    VSPSC_PIN=$results build/dev/bin/test_"$family" --gtest_brief=1 --gtest_filter='*AnyLegal*' >&2
    sed -n "s/^$family //p" "$results" | LC_ALL=C sort >tests/"$family"/data/results.txt
done
