#!/bin/bash
# clang-tidy over the sources that differ from the branch's beginning on origin/main, or from the last commit but one where
# there is no such branch; for a header that differs, over one source that includes it. With `all` over all sources.
# Usage: check-tidy.sh BUILD_DIR [all]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=${1:?which build directory, configured for clang?}

sources=()
if [[ ${2-} != all ]]; then
    command -v git >/dev/null && git rev-parse --git-dir >/dev/null 2>&1 || { echo "Not a git checkout: no clang-tidy." && exit; }
    base=$(git merge-base HEAD origin/main 2>/dev/null || true)
    if [[ -z $base || $base == "$(git rev-parse HEAD)" ]]; then base=$(git rev-parse -q --verify HEAD~1 || git rev-parse HEAD); fi

    mapfile -t changed < <({
        git diff --name-only --diff-filter=d "$base"
        git ls-files --others --exclude-standard
    } | grep -E '^(bench|examples|fuzz|include|src|tests|tools|voice)/.*\.(cpp|c|h)$' | sort -u)

    for file in "${changed[@]}"; do
        if [[ $file == *.h ]]; then
            name=$(sed -E 's#^(include|src|tests|bench|tools/vsps|voice)/##' <<<"$file")
            file=$(git grep -lF "#include \"$name\"" -- '*.cpp' | head -n 1 || true)
        fi
        [[ -z $file ]] || sources+=("$PWD/$file")
    done
    ((${#sources[@]})) || { echo "No source has changed since $(git rev-parse --short "$base"): no clang-tidy." && exit; }
fi

# Of the commands for the levels of a source the last: it sees the widest vectors.
commands=$(mktemp -d)
trap 'rm -rf "$commands"' EXIT
python3 - "$build/compile_commands.json" "$PWD/" "${sources[@]}" >"$commands/compile_commands.json" <<'END'
import json
import sys

commands = {command["file"]: command for command in json.load(open(sys.argv[1]))}
if not any(name.startswith(sys.argv[2]) for name in commands):
    sys.exit(f"{sys.argv[1]} is not of this checkout.")
names = sorted(set(sys.argv[3:]) or {name for name in commands if name.startswith(sys.argv[2])})
missing = [name for name in names if name not in commands]
if missing:
    print("Not built in this configuration, left out:", *missing, file=sys.stderr)
json.dump([commands[name] for name in names if name in commands], sys.stdout)
END
run=$(command -v run-clang-tidy-14 || command -v run-clang-tidy) || { echo "clang-tidy is not installed." >&2 && exit 1; }
"$run" -p "$commands" -quiet -extra-arg=-Wno-unknown-warning-option
