#!/bin/bash
# Builds the Debian packages twice, in folders of different names, and stops where they differ in a single byte; then runs
# lintian. The packages are put into build/packages. With CMAKE_CXX_COMPILER_LAUNCHER=ccache and CCACHE_DIR another run is short.
# Usage: build-packages.sh [--once]    --once: builds once and compares nothing
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

case ${1-} in
    "") folders=(first second-of-another-name) ;;
    --once) folders=(first) ;;
    *) sed -n 's/^# //p' "$0" >&2 && exit 2 ;;
esac
tools/install-packages.sh debhelper dh-python lintian fakeroot g++ cmake ninja-build pkg-config libcli11-dev libsndfile1-dev \
    libsoxr-dev nlohmann-json3-dev doxygen doxygen-awesome-css graphviz python3-cffi python3-numpy

version=$(dpkg-parsechangelog -S Version)
project=$(sed -n 's/^project(vspsc VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
[[ ${version%-*} == "$project" ]] || { echo "debian/changelog has $version, CMakeLists.txt $project" >&2 && exit 1; }

work=$PWD/build/packaging
rm -rf "$work"
export SOURCE_DATE_EPOCH DEB_BUILD_OPTIONS="nocheck ${DEB_BUILD_OPTIONS-}"
SOURCE_DATE_EPOCH=$(dpkg-parsechangelog -S Timestamp)
for folder in "${folders[@]}"; do
    mkdir -p "$work/$folder/vspsc-$project"
    git ls-files -z | xargs -0 cp --parents -t "$work/$folder/vspsc-$project"
    tar -C "$work/$folder" --sort=name --mtime="@$SOURCE_DATE_EPOCH" --owner=0 --group=0 --numeric-owner --exclude=debian \
        -cf - "vspsc-$project" | gzip -n >"$work/$folder/vspsc_$project.orig.tar.gz"
done
for folder in "${folders[@]}"; do
    echo "Building in $folder" >&2
    export CCACHE_NAMESPACE=$folder # no object of one folder for the other
    (cd "$work/$folder/vspsc-$project" && dpkg-buildpackage -us -uc -F >"$work/$folder/log" 2>&1) ||
        { tail -50 "$work/$folder/log" >&2 && exit 1; }
done

for package in "$work/${folders[0]}"/*.deb; do
    if ((${#folders[@]} > 1)); then cmp "$package" "$work/${folders[1]}/${package##*/}"; fi
done
rm -rf build/packages
mkdir -p build/packages
cp "$work/${folders[0]}"/*.{deb,changes,dsc,buildinfo,orig.tar.gz,debian.tar.xz} build/packages/
rm -rf "$work"
if ((${#folders[@]} > 1)); then echo "Both builds gave the same packages, byte by byte." >&2; fi

(cd build/packages && lintian --fail-on error,warning --tag-display-limit 0 ./*.changes)
du -b build/packages/*.deb | sed 's|build/packages/||'
