#!/bin/sh
# Installs those of the named Debian packages that are missing; says and does nothing if none is.
set -eu

missing=
for name in "$@"; do
    status=$(dpkg-query -W -f '${Status}' "$name" 2>/dev/null || true)
    [ "$status" = "install ok installed" ] || missing="$missing $name"
done
[ -n "$missing" ] || exit 0

as_root=
if [ "$(id -u)" != 0 ]; then
    as_root=sudo
    if ! command -v sudo >/dev/null; then
        echo "$0: install as root:$missing" >&2
        exit 1
    fi
fi
echo "Installing$missing"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
# shellcheck disable=SC2086  # the words are the packages
if ! { $as_root apt-get update -q &&
       $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends $missing; } >"$log" 2>&1; then
    cat "$log" >&2
    exit 1
fi
