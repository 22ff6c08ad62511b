#!/bin/bash
# Runs programs that are linked statically: they choose a level as those do that are linked with the shared libraries, and
# give the same samples.
# Usage: static.sh RECORDING PROGRAMS [QEMU]
set -euo pipefail

speech=$1 programs=$2 qemu=${3-}
fail() {
    echo "FAILED: $*" >&2
    exit 1
}
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

if ldd "$programs/scale_static" >/dev/null 2>&1; then fail "scale_static needs a shared library"; fi
[[ $("$programs/scale_static") =~ ^libvspscy8\.so\.6\.1\+?:\ 500\ -500\ 2\ 16384$ ]] || fail "scale_static printed: $("$programs/scale_static")"
for codec in g729a amr g722; do
    "$programs/codec_roundtrip_static" "$codec" <"$speech" >"$tmp/static" 2>/dev/null
    "$programs/codec_roundtrip_shared" "$codec" <"$speech" >"$tmp/shared" 2>/dev/null
    [[ -s $tmp/static ]] || fail "$codec gives no samples"
    cmp "$tmp/static" "$tmp/shared" || fail "$codec gives other samples"
done

# The name in the version record ends in "+" on a level above the baseline.
if [[ -x $qemu ]]; then
    [[ $("$qemu" -cpu Nehalem "$programs/scale_static" 2>/dev/null) == "libvspscy8.so.6.1: 500 -500 2 16384" ]] || fail "the baseline"
    [[ $("$qemu" -cpu max "$programs/scale_static" 2>/dev/null) == "libvspscy8.so.6.1+: 500 -500 2 16384" ]] || fail "AVX2"
fi
