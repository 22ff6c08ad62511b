#!/bin/bash
# Installs the Debian packages that are missing: install-packages.sh NAME... Says and does nothing if all are there.
set -euo pipefail

if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    echo "Not a Debian system; needed are the equivalents of: $*" >&2
    exit 0
fi

missing=()
for name in "$@"; do
    [[ $(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null || true) == installed ]] || missing+=("$name")
done
((${#missing[@]})) || exit 0

as_root=()
if ((EUID != 0)); then
    if ! command -v sudo >/dev/null; then
        echo "Missing packages, and neither root nor sudo to install them. As root: apt-get install ${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo)
fi

echo "Installing ${missing[*]}" >&2
log=$(mktemp)
trap 'rm -f "$log"' EXIT
apt() {
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -o DPkg::Lock::Timeout=300 "$@" </dev/null >>"$log" 2>&1
}
if ! { apt update && apt install -y --no-install-recommends "${missing[@]}"; }; then
    cat "$log" >&2
    exit 1
fi
