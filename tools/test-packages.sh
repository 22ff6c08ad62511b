#!/bin/bash
# Installs the packages of build/packages into a fresh system below a folder, builds the README's program there against them,
# runs the tool and the Python package, and removes them again without a trace. As root.
# Usage: test-packages.sh [FOLDER]    FOLDER: is kept, and used again if it has a system already
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

packages=$PWD/build/packages
[[ -n $(ls "$packages"/*.deb 2>/dev/null) ]] || { echo "No packages: tools/build-packages.sh makes them" >&2 && exit 1; }
tools/install-packages.sh mmdebstrap
root=${1-}
if [[ -z $root ]]; then
    root=$(mktemp -d)
    trap 'rm -rf --one-file-system "$root"' EXIT
fi
inside() { chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 HOME=/root DEBIAN_FRONTEND=noninteractive "$@"; }
fail() {
    echo "FAILED: $*" >&2
    exit 1
}

# What the packages depend on, a compiler, and what Debian's minimal system has.
if [[ ! -e $root/usr/bin/dpkg ]]; then
    needed=$(for package in "$packages"/*.deb; do dpkg-deb -f "$package" Depends; done | tr ',' '\n' | sed 's/^ *//; s/ .*//; s/:any//' |
        grep -vE '^(libvsps|$)' | sort -u | paste -sd,)
    sources=()
    for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.{list,sources}; do
        [[ -s $list ]] && sources+=("$list")
    done
    mmdebstrap --mode=root --variant=minbase --include="$needed,gcc,libc6-dev,pkg-config,bash-completion" bookworm "$root" "${sources[@]}"
fi

files() { (cd "$root" && find . -xdev \( -path ./proc -o -path ./sys -o -path ./dev -o -path ./tmp -o -path ./var/lib/dpkg -o -path ./var/log \
    -o -path ./var/cache -o -path ./var/lib/apt \) -prune -o -print | sort); }
files >"$root/tmp/before"
cp "$packages"/*.deb "$root/tmp/"
inside sh -c 'dpkg -i /tmp/*.deb' >/dev/null
inside ldconfig

sed -n '/^```c$/,/^```$/{/^```/!p}' README.md >"$root/tmp/scale.c"
inside sh -c 'cd /tmp && cc scale.c $(pkg-config --cflags --libs vspsc) -o scale && ./scale' |
    grep -qE '^libvspscy8\.so\.6\.1\+?: 500 -500 2 16384$' || fail "the README's program"
inside sh -c 'cd /tmp && cc scale.c -static $(pkg-config --cflags vspsc) -l:libvspscy8.a -lm -o scale-static && ./scale-static' |
    grep -qE '^libvspscy8\.so\.6\.1\+?: 500 -500 2 16384$' || fail "the README's program, linked statically"
inside vsps --version | grep -q '^vsps ' || fail "vsps"
head -c 32000 /dev/urandom >"$root/tmp/noise.raw"
inside vsps encode --raw 8000 /tmp/noise.raw /tmp/noise.g729a >/dev/null || fail "vsps encode"
inside python3 -c 'import numpy as np, vspsc
x = np.fromfile("/tmp/noise.raw", np.int16)
frames = vspsc.Codec("g729a").encoder().process(x)
assert b"".join(f.data for f in frames) == open("/tmp/noise.g729a", "rb").read()
assert vspsc.vad(x).size == 100' || fail "the Python package"
for page in vsps-encode.1 vspsMulC_NR_16s_Sfs.3 vspsc.7; do
    dpkg-deb -c "$packages"/*tools*.deb | cat - <(dpkg-deb -c "$packages"/*-dev_*.deb) | grep "/$page.gz$" >/dev/null || fail "no $page"
done

inside sh -c 'dpkg --purge $(for p in /tmp/*.deb; do dpkg-deb -f "$p" Package; done)' >/dev/null
files | diff "$root/tmp/before" - || fail "the removed packages left something behind"
rm -f "$root"/tmp/{*.deb,scale*,noise*,before}
echo "Packages: installed, used and removed without a trace"
