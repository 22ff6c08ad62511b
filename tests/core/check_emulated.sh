#!/bin/bash
# The levels on emulated processors: which one each takes, and whether a sample of the tests passes there.
# Usage: check_emulated.sh QEMU VSPS TEST_PROGRAM...
set -euo pipefail
qemu=$1 vsps=$2
shift 2

status=0
run() {  # what the processor does not have anyway needs no warning
    "$qemu" -cpu "$@" 2> >(grep -v "^qemu.*warning: TCG doesn't support" >&2)
}
while read -r cpu level; do
    used=$(run "$cpu" "$vsps" info | sed -n 's/^level in use *//p')
    echo "$cpu: $used"
    [[ $used == "$level "* ]] || { echo "expected $level" && status=1; }
    for test in "$@"; do
        run "$cpu" "$test" --gtest_brief=1 --gtest_filter='*Recorded*' </dev/null || status=1
    done
done <<<"Nehalem y8
Haswell v3
Haswell,-avx2 y8
Haswell,-xsave y8" # whose operating system does not save the registers of AVX
exit $status
