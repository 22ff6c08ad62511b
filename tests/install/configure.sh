#!/bin/bash
# Configures without what the tests need: they are left out where nobody asks for them, and stop the configuration where
# somebody does. Either way the packages are named.
# Usage: configure.sh SOURCE-DIR; CMAKE names the program to use.
set -euo pipefail

source=$1
: "${CMAKE:=cmake}"
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
fail() {
    cat "$tmp/log"
    echo "FAILED: $*" >&2
    exit 1
}
configure() { "$CMAKE" -S "$source" -B "$tmp/$1" -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON "${@:2}" >"$tmp/log" 2>&1; }

configure plain || fail "the plain configuration stops"
grep -q "tests are left out.*apt-get install libgtest-dev" "$tmp/log" || fail "no message about the tests"
[[ ! -e $tmp/plain/tests ]] || fail "the tests were not left out"
if configure asked -DVSPSC_BUILD_TESTS=ON; then fail "tests that were asked for are left out"; fi
grep -q "apt-get install libgtest-dev" "$tmp/log" || fail "the error does not name the package"

# Another processor is refused in one line.
if configure other -DCMAKE_SYSTEM_NAME=Linux -DCMAKE_SYSTEM_PROCESSOR=aarch64; then fail "aarch64 is accepted"; fi
grep -q "vspsc is for x86-64 Linux (64-bit), not for aarch64 Linux" "$tmp/log" || fail "no message about the processor"
