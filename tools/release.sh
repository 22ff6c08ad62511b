#!/bin/bash
# Makes a release in dist/: source, Debian packages, wheel, checksums.
# Usage: release.sh VERSION    the changelog has a section for it
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

version=${1-}
[[ $version =~ ^[0-9]+\.[0-9]+\.[0-9]+$ ]] || { sed -n 's/^# //p' "$0" >&2 && exit 2; }
fail() {
    echo "$*" >&2
    exit 1
}
project=$(sed -n 's/^project(vspsc VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
[[ $project == "$version" ]] || fail "CMakeLists.txt has version $project"
[[ $(dpkg-parsechangelog -S Version) == "$version"-* ]] || fail "debian/changelog has version $(dpkg-parsechangelog -S Version)"
section=$(sed -n "/^## \[${version//./\\.}\] - [0-9-]*\$/,/^## /{/^## /!p}" CHANGELOG.md)
grep -q '^- ' <<<"$section" || fail "CHANGELOG.md has no section \"## [$version] - DATE\" with entries"
[[ -z $(git status --porcelain) ]] || fail "there are changes that are not committed"

rm -rf dist
mkdir dist
git archive --format=tar --prefix="vspsc-$version/" HEAD | gzip -n >"dist/vspsc-$version.tar.gz"
SOURCE_DATE_EPOCH=$(dpkg-parsechangelog -S Timestamp)
export SOURCE_DATE_EPOCH
tools/build-packages.sh
cp build/packages/*.deb dist/

# The wheel has what the packages have.
tools/install-packages.sh python3-cffi python3-numpy python3-pip python3-setuptools python3-wheel
unpacked=$(mktemp -d)
trap 'rm -rf "$unpacked"' EXIT
for package in dist/{libvspscy8-6.1,libvspsvoice1,python3-vspsc}_*.deb; do dpkg-deb -x "$package" "$unpacked"; done
libraries=("$unpacked"/usr/lib/*/libvspscy8.so.6.1 "$unpacked"/usr/lib/*/libvspsvoice.so.1)
/usr/bin/python3 python/build_wheel.py "$unpacked/usr/lib/python3/dist-packages/vspsc" "$version" "${libraries[@]}" dist
(cd dist && sha256sum -- * >SHA256SUMS)
cat dist/SHA256SUMS
