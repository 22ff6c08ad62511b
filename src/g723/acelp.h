// What coder and decoder of the 5.3 kbit/s code share.
#pragma once

#include "g723/gain_tables.h"
#include "vector/eight_32s.h"

namespace vsp::VSP_LEVEL {

// Repeats a vector of a subframe with the lag and gain that belong to an adaptive gain, for short lags.
struct PitchSharpening {
    static constexpr int kLen = 60;
    int lag;
    Vsp16s gain;

    [[gnu::always_inline]] PitchSharpening(Vsp16s exactLag, Vsp16s gainIndex)
        : lag(exactLag + g723::sharpLags[gainIndex]), gain(g723::sharpGains[gainIndex]) {}

    // x[i] += x[i - lag] * gain, i ascending; eight at a time, as the lag is 15 or more. x has room for a last vector.
    [[gnu::always_inline]] void apply(Vsp16s* x) const {
        if (lag >= 58) return;
        for (int i = lag; i < kLen; i += S16_128::width)
            addSat(S16_128::load(x + i), mulShift15Sat(S16_128::load(x + i - lag), S16_128::splat(gain))).store(x + i);
    }
    static constexpr int kRoom = kLen + S16_128::width;
};

}  // namespace vsp::VSP_LEVEL
