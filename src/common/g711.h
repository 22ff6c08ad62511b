// The two laws of G.711. An octet is as transmitted: of A-law the even bits are inverted. The levels of a law are numbered
// upwards from 0, the positive zero, and downwards from -1, the negative one.
#pragma once

#include "core/inline.h"
#include "vspsc/types.h"

namespace vsp {

enum class Law { a, mu };

VSP_INLINE constexpr int g711Level(Law law, Vsp8u octet) {
    const int code = octet ^ (law == Law::a ? 0x55 : 0x7F);
    return code >= 128 ? code - 128 : -1 - code;
}

VSP_INLINE constexpr Vsp8u g711Octet(Law law, int level) {
    return Vsp8u((level >= 0 ? 128 + level : -1 - level) ^ (law == Law::a ? 0x55 : 0x7F));
}
static_assert(g711Octet(Law::mu, 0) == 0xFF && g711Octet(Law::mu, -1) == 0x7F && g711Octet(Law::mu, -128) == 0);
static_assert(g711Octet(Law::a, 0) == 0xD5 && g711Octet(Law::a, -1) == 0x55 && g711Octet(Law::a, 127) == 0xAA);

// The value of a level as a 14-bit sample; four times that is the 16-bit one.
VSP_INLINE constexpr int g711Value(Law law, int level) {
    const int code = level >= 0 ? level : -1 - level, chord = code >> 4, m = 2 * (code & 15) + 33;
    int magnitude = 0;
    if (law == Law::a)
        magnitude = chord == 0 ? 2 * (m - 32) : m << chord;
    else
        magnitude = (m << chord) - 33;
    return level >= 0 ? magnitude : -magnitude;
}
static_assert(g711Value(Law::a, 0) == 2 && g711Value(Law::a, -1) == -2 && g711Value(Law::a, 127) == 8064);
static_assert(g711Value(Law::mu, 0) == 0 && g711Value(Law::mu, -1) == 0 && g711Value(Law::mu, -128) == -8031);

// The level nearest to a 14-bit sample; beyond the largest the last one.
VSP_INLINE constexpr int g711LevelOf(Law law, int sample) {
    int code = 0;
    if (law == Law::a) {
        int magnitude = (sample < 0 ? ~sample : sample) >> 1;
        if (magnitude > 4095) magnitude = 4095;
        const int chord = 27 - __builtin_clz(Vsp32u(magnitude | 31));
        code = (chord << 4) + ((magnitude >> (chord > 1 ? chord : 1)) & 15);
    } else {
        const int magnitude = sample < 0 ? -sample : sample, biased = (magnitude > 8158 ? 8158 : magnitude) + 33;
        const int chord = 26 - __builtin_clz(Vsp32u(biased));
        code = (chord << 4) + ((biased >> (chord + 1)) & 15);
    }
    return sample < 0 ? -1 - code : code;
}
static_assert(g711LevelOf(Law::a, 8191) == 127 && g711LevelOf(Law::a, -8192) == -128 && g711LevelOf(Law::a, -1) == -1);
static_assert(g711LevelOf(Law::mu, 8191) == 127 && g711LevelOf(Law::mu, -8192) == -128);

static consteval bool valuesGiveTheirLevels(Law law) {
    for (int level = -128; level < 128; level++)
        if (g711LevelOf(law, g711Value(law, level)) != (law == Law::mu && level == -1 ? 0 : level)) return false;
    return true;
}
static_assert(valuesGiveTheirLevels(Law::a) && valuesGiveTheirLevels(Law::mu));

}  // namespace vsp
