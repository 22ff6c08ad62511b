// The two laws of G.711 for 16-bit samples. An octet is as transmitted: of A-law the even bits are inverted.
//
// A sample lies between two decision values, and its octet stands for the middle. A negative sample gives the octet of its
// magnitude, with the other sign bit.
#pragma once

#include "vspsc/types.h"

namespace vspv {

// 8 segments of 16 steps; the steps of segments 0 and 1 are 16, and from there each segment has steps twice as wide.
constexpr Vsp8u aLawOctet(Vsp16s sample) {
    const Vsp32s magnitude = sample < 0 ? -sample : sample, limited = magnitude > 32767 ? 32767 : magnitude;
    const Vsp32s segment = limited < 256 ? 0 : 24 - __builtin_clz(Vsp32u(limited));
    const Vsp32s step = (limited >> (segment == 0 ? 4 : segment + 3)) & 15;
    return Vsp8u((segment << 4 | step | (sample < 0 ? 0 : 0x80)) ^ 0x55);
}

constexpr Vsp16s aLawSample(Vsp8u octet) {
    const Vsp32s code = octet ^ 0x55, segment = (code >> 4) & 7, middle = ((code & 15) << 4) + 8;
    const Vsp32s magnitude = segment == 0 ? middle : (middle + 256) << (segment - 1);
    return Vsp16s(code & 0x80 ? magnitude : -magnitude);
}

// With 132 added, segments begin at powers of two: 128 << segment.
constexpr Vsp8u muLawOctet(Vsp16s sample) {
    const Vsp32s magnitude = sample < 0 ? -sample : sample, biased = (magnitude > 32635 ? 32635 : magnitude) + 132;
    const Vsp32s segment = 24 - __builtin_clz(Vsp32u(biased));
    return Vsp8u((segment << 4 | ((biased >> (segment + 3)) & 15) | (sample < 0 ? 0x80 : 0)) ^ 0xFF);
}

constexpr Vsp16s muLawSample(Vsp8u octet) {
    const Vsp32s code = octet ^ 0xFF, magnitude = ((((code & 15) << 3) + 132) << ((code >> 4) & 7)) - 132;
    return Vsp16s(code & 0x80 ? -magnitude : magnitude);
}

static_assert(aLawOctet(0) == 0xD5 && aLawOctet(-1) == 0x55 && aLawOctet(32767) == 0xAA && aLawOctet(-32768) == 0x2A);
static_assert(muLawOctet(0) == 0xFF && muLawOctet(-1) == 0x7F && muLawOctet(32767) == 0x80 && muLawOctet(-32768) == 0);
static_assert(aLawSample(0xAA) == 32256 && aLawSample(0xD5) == 8 && muLawSample(0x80) == 32124 && muLawSample(0xFF) == 0);

}  // namespace vspv
