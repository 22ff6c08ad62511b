#!/bin/bash
# Installs the build tree, moves the installed tree, and builds and runs the examples against it as a stranger would: with
# pkg-config and with find_package.
# Usage: run.sh SOURCE-DIR BUILD-DIR; CC and CMAKE name the programs to use.
set -euo pipefail

source=$1 build=$2
: "${CC:=cc}" "${CMAKE:=cmake}"
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
fail() {
    echo "FAILED: $*" >&2
    exit 1
}

"$CMAKE" --install "$build" --prefix "$tmp/first" >/dev/null
mv "$tmp/first" "$tmp/prefix"
prefix=$tmp/prefix
pc=$(find "$prefix" -name vspsc.pc)
export PKG_CONFIG_PATH=${pc%/*}
libdir=${PKG_CONFIG_PATH%/pkgconfig}

[[ -f $libdir/libvspscy8.so.6.1 && ! -L $libdir/libvspscy8.so.6.1 ]] || fail "no file libvspscy8.so.6.1"
[[ $(readlink "$libdir/libvspscy8.so") == libvspscy8.so.6.1 ]] || fail "no development link"
[[ -f $libdir/libvspsvoice.so.1 && $(readlink "$libdir/libvspsvoice.so") == libvspsvoice.so.1 ]] || fail "no libvspsvoice"
diff -r "$source/include" "$prefix/include"
if grep -rlF -e "$source" -e "$build" "$prefix" --include=*.cmake --include=*.pc; then fail "paths of the build tree installed"; fi

# The example of the README is the file that is built here.
fence='```'
diff <(sed -n "/^${fence}c\$/,/^$fence\$/{/^$fence/!p}" "$source/README.md") "$source/examples/scale.c"

# Links of the installed pages lead to installed files.
for page in $(find "$prefix/share" -name '*.md'); do
    while read -r link; do
        [[ -e ${page%/*}/$link ]] || fail "${page#"$prefix"/} links to $link, which is not installed"
    done < <(grep -o ']([^)]*)' "$page" | sed 's/^](//; s/)$//; s/#.*//' | grep -v '^http')
done

expect_scale() {
    local out
    out=$("$@")
    [[ $out =~ ^libvspscy8\.so\.6\.1\+?:\ 500\ -500\ 2\ 16384$ ]] || fail "$1 printed: $out"
}

# pkg-config, and the strictest C
pkg-config --exact-version="$(sed -n 's/^project(vspsc VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")" vspsc
read -ra flags < <(pkg-config --cflags --libs vspsc)
"$CC" -std=c89 -pedantic-errors -Wall -Wextra -Werror "$source/examples/scale.c" "${flags[@]}" -o "$tmp/scale"
expect_scale env LD_LIBRARY_PATH="$libdir" "$tmp/scale"

read -ra flags < <(pkg-config --cflags --libs vspsvoice)
for example in codec_roundtrip echo_canceller; do
    "$CC" -std=c89 -pedantic-errors -Wall -Wextra -Werror "$source/examples/$example.c" "${flags[@]}" -o "$tmp/$example"
done

# find_package
mkdir "$tmp/outside"
cp -r "$source"/examples/* "$tmp/outside"
"$CMAKE" -S "$tmp/outside" -B "$tmp/outside/build" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
"$CMAKE" --build "$tmp/outside/build" >/dev/null
expect_scale "$tmp/outside/build/scale"

# A package of another major version is refused.
sed -i 's/vspsc 6\.1 REQUIRED/vspsc 5.0 REQUIRED/' "$tmp/outside/CMakeLists.txt"
if "$CMAKE" -S "$tmp/outside" -B "$tmp/outside/build5" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null 2>&1; then
    fail "version 5.0 was accepted"
fi

# Level control: as many samples out as in, whole blocks or not, and -30 dB at the start (32000 becomes 1000).
for samples in 0 7 160 2003; do
    for ((i = 0; i < samples; i++)); do printf '\x00\x7d'; done >"$tmp/in"
    "$tmp/outside/build/level_control" <"$tmp/in" >"$tmp/out"
    [[ $(stat -c %s "$tmp/out") == $((2 * samples)) ]] || fail "level_control changed the length of $samples samples"
    for value in $(od -An -v -td2 -N14 "$tmp/out"); do [[ $value == 1000 ]] || fail "level_control gave $value"; done
done
if "$tmp/outside/build/level_control" <"$tmp/in" >/dev/full 2>"$tmp/err"; then fail "level_control ignored a full disk"; fi
grep -q "cannot write" "$tmp/err" || fail "no message about a full disk"

# Echo cancellers: remove a signal that is the far end itself, the one of bare functions as far as its bank reconstructs signals
# (some 20 dB), and keep its length.
speech=$source/tests/support/data/demo-echotest.wav
energy() { tail -c 32000 "$1" | od -An -v -td2 | awk '{ for (i = 1; i <= NF; i++) sum += $i * $i } END { printf "%.0f", sum }'; }
export LD_LIBRARY_PATH=$libdir
for canceller in "100 $tmp/outside/build/subband_filter" "1000 $tmp/outside/build/echo_canceller" "1000 $tmp/echo_canceller"; do
    read -r ratio program <<<"$canceller"
    "$program" "$speech" "$speech" "$tmp/out" 2>"$tmp/err"
    [[ $(stat -c %s "$tmp/out") == $(stat -L -c %s "$speech") ]] || fail "$program changed the length"
    (($(energy "$speech") > ratio * $(energy "$tmp/out"))) || fail "$program left an echo"
    if "$program" "$speech" "$speech" /dev/full 2>/dev/null; then fail "$program ignored a full disk"; fi
done

# Codecs: the same length comes back.
for built in "$tmp/codec_roundtrip" "$tmp/outside/build/codec_roundtrip"; do
    head -c 16000 "$speech" | "$built" g726-32 >"$tmp/out" 2>"$tmp/err"
    [[ $(stat -c %s "$tmp/out") == 16000 ]] || fail "codec_roundtrip changed the length"
    grep -q "^G726-32: 50 frames, 4000 octets, 5 lost" "$tmp/err" || fail "codec_roundtrip says: $(cat "$tmp/err")"
    if "$built" no-such-codec </dev/null >/dev/null 2>"$tmp/err"; then fail "codec_roundtrip knows every codec"; fi
    grep -q "pcmu" "$tmp/err" || fail "codec_roundtrip does not list the codecs"
done

# Speech detector: none in silence, and the speech that follows it.
"$tmp/outside/build/speech_detector" < <(head -c 64000 /dev/zero) >"$tmp/out"
[[ ! -s $tmp/out ]] || fail "speech_detector hears speech in silence: $(cat "$tmp/out")"
"$tmp/outside/build/speech_detector" < <(head -c 32000 /dev/zero && tail -c +3245 "$speech") >"$tmp/out"
grep -qE '^ +2\.[0-9]+ s to ' "$tmp/out" || fail "speech_detector does not hear the speech: $(cat "$tmp/out")"
