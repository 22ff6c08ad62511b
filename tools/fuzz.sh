#!/bin/bash
# Builds all fuzzers and runs each for so many seconds, one after the other; or those named. Prints for each how often it
# ran, for how many processor seconds, the edges of code that it reached and what it found, and stops with an error if it
# found anything.
# Usage: tools/fuzz.sh SECONDS [FAMILY...]
# What reaches new code is kept in build/fuzz/corpus/FAMILY; the runs begin with that, with fuzz/corpus/FAMILY and with what
# tools/fuzz_seeds.py makes of a recording and of boundary values. An input that fails is written to build/fuzz/findings, and
# `build/fuzz/bin/fuzz_FAMILY FILE` repeats it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
(($# > 0)) || { sed -n 's/^# //p' "$0" >&2 && exit 2; }
seconds=$1
shift

[[ -f build/fuzz/build.ninja ]] || cmake --preset fuzz
if (($# > 0)); then
    cmake --build build/fuzz --target "${@/#/fuzz_}"
    families=("$@")
else
    cmake --build build/fuzz
    families=()
    for fuzzer in build/fuzz/bin/fuzz_*; do families+=("${fuzzer##*/fuzz_}"); done
fi

findings=build/fuzz/findings
mkdir -p "$findings"
failed=()
tools/fuzz_seeds.py build/fuzz/seeds
printf '%-16s %10s %12s %10s %8s\n' family seconds executions edges inputs
TIMEFORMAT='%U + %S'
for family in "${families[@]}"; do
    corpus=build/fuzz/corpus/$family
    seeds=fuzz/corpus/$family
    log=build/fuzz/corpus/$family.log
    mkdir -p "$corpus"
    [[ -d $seeds ]] || seeds=
    length=600
    if [[ $family == voice ]]; then length=8300 seeds+=" build/fuzz/seeds"; fi
    used=$({ time build/fuzz/bin/fuzz_"$family" -max_total_time="$seconds" -max_len=$length -len_control=0 -timeout=60 -rss_limit_mb=4000 \
        -print_final_stats=1 -artifact_prefix="$findings/$family-" "$corpus" $seeds >"$log" 2>&1; } 2>&1) || failed+=("$family")
    executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    edges=$(grep -o 'cov: [0-9]*' "$log" | tail -1 | cut -d' ' -f2)
    printf '%-16s %10s %12s %10s %8s\n' "$family" "$(python3 -c "print(round($used))")" "${executions:-?}" "${edges:-?}" "$(find "$corpus" -type f | wc -l)"
done
for family in ${failed[@]+"${failed[@]}"}; do
    echo "fuzz_$family failed:" >&2
    tail -n 40 build/fuzz/corpus/"$family".log >&2
done
((${#failed[@]} == 0))
