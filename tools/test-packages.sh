#!/bin/bash
# Installs the packages of build/packages into a fresh system below a folder, over older ones, builds the README's program there
# against them, runs the tool, the Python package and its examples, and removes them again without a trace. As root.
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
        grep -vE '^(libvsps|vsps|$)' | sort -u | paste -sd,)
    sources=()
    for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.{list,sources}; do
        [[ -s $list ]] && sources+=("$list")
    done
    mmdebstrap --mode=root --variant=minbase --include="$needed,gcc,libc6-dev,pkg-config,bash-completion,python3-matplotlib,python3-soundfile" bookworm "$root" "${sources[@]}"
fi

files() { (cd "$root" && find . -xdev \( -path ./proc -o -path ./sys -o -path ./dev -o -path ./tmp -o -path ./var/lib/dpkg -o -path ./var/log \
    -o -path ./var/cache -o -path ./var/lib/apt \) -prune -o -print | sort); }
files >"$root/tmp/before"
cp "$packages"/*.deb "$root/tmp/"
inside sh -c 'dpkg -i /tmp/*.deb' >/dev/null
inside ldconfig
files >"$root/tmp/installed"
inside sh -c 'dpkg --purge $(for p in /tmp/*.deb; do dpkg-deb -f "$p" Package; done)' >/dev/null

# An older version, whose packages have a file more, and the present one over it: as if there had been no other.
mkdir "$root/tmp/older"
version=$(dpkg-parsechangelog -S Version)
for package in "$packages"/*.deb; do
    name=$(dpkg-deb -f "$package" Package)
    dpkg-deb -R "$package" "$root/tmp/older/$name"
    sed -Ei "s/${version%-*}(-${version##*-})?/0.0.1-1/g" "$root/tmp/older/$name/DEBIAN/control" # its dependencies, too
    mkdir -p "$root/tmp/older/$name/usr/share/vspsc-older"
    touch "$root/tmp/older/$name/usr/share/vspsc-older/$name"
    dpkg-deb --root-owner-group -Zgzip -z1 -b "$root/tmp/older/$name" "$root/tmp/older" >/dev/null
done
inside sh -c 'dpkg -i /tmp/older/*.deb' >/dev/null
[[ -e $root/usr/share/vspsc-older/vsps-tools ]] || fail "the older packages"
inside sh -c 'dpkg -i /tmp/*.deb' >/dev/null
inside ldconfig
files | diff "$root/tmp/installed" - || fail "an upgrade leaves something behind or out"

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
python=/usr/share/doc/libvspscy8-dev/examples/python
cp tests/support/data/demo-echotest.wav "$root/tmp/noise.wav"
for example in "pitch_contour.py /tmp/noise.wav" "speech_in_noise.py /tmp/noise.wav" "echo_cancelled.py /tmp/noise.wav /tmp/noise.wav"; do
    inside env MPLCONFIGDIR=/tmp/noise.matplotlib python3 $python/$example /tmp/noise.png >/dev/null || fail "$example"
    [[ -s $root/tmp/noise.png ]] && rm "$root/tmp/noise.png"
done
inside env PYTHONPATH=$python PYTHONDONTWRITEBYTECODE=1 python3 -c 'import mark_calls
name, seconds, speech, parts, error = mark_calls.mark("/tmp/noise.wav")
assert float(speech) > 1 and not error' || fail "mark_calls.py"
for page in vsps-encode.1 vspsMulC_NR_16s_Sfs.3 vspsc.7; do
    dpkg-deb -c "$packages"/vsps-tools_*.deb | cat - <(dpkg-deb -c "$packages"/*-dev_*.deb) | grep "/$page.gz$" >/dev/null || fail "no $page"
done

inside sh -c 'dpkg --purge $(for p in /tmp/*.deb; do dpkg-deb -f "$p" Package; done)' >/dev/null
files | diff "$root/tmp/before" - || fail "the removed packages left something behind"
rm -rf "$root"/tmp/{*.deb,older,scale*,noise*,before,installed}
echo "Packages: installed, used and removed without a trace"
