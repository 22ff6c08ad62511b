#!/bin/bash
# Fails on a C or C++ source that clang-format would change; with --fix it changes them.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

mode=(--dry-run -Werror)
[[ ${1-} == --fix ]] && mode=(-i)
shopt -s extglob nullglob
find @(bench|examples|fuzz|include|src|tests|tools|voice)/ \( -name '*.[ch]' -o -name '*.cpp' \) -print0 |
    xargs -0 "${CLANG_FORMAT:-clang-format}" "${mode[@]}"
