// When the estimate of the background noise follows the signal (3GPP TS 26.094, option 1).
#pragma once

#include "common/band_levels.h"
#include "gsmamr/exports.h"

namespace vsp::VSP_LEVEL {

// State has the members of VspGSMAMRVad1State that are used here.
template <int bands, class State>
VSP_INLINE void ownNoiseEstimateUpdate(State& s, const Vsp16s level[bands], Vsp16s toneFlags, Vsp16s ceiling) {
    constexpr Vsp16s kNotStationary = 20, kComplexSignal = 5;
    const auto allSet = [](Vsp16s flags, int mask) { return (flags & mask) == mask; };
    const bool speech = (s.vadReg & kNewestFlag) != 0;

    if (s.complexWarning != 0 && s.statCount < kComplexSignal) s.statCount = kComplexSignal;
    if (allSet(s.pitchFlags, 0x6000) || allSet(toneFlags, 0x7C00) || (s.vadReg & 0x7F80) == 0 ||
        !isStationary<bands>(level, s.aveLevel))
        s.statCount = kNotStationary;
    else if (speech && s.statCount != 0)
        s.statCount = sat_16s(s.statCount - 1);

    const Vsp16s alpha = s.statCount == kNotStationary ? 32767 : speech ? 3276 : 16383;
    NoiseUpdateSpeed speed = {0, 1638, 0};
    if ((s.vadReg & 0x7800) == 0 && (s.pitchFlags & 0x7800) == 0 && s.complexHangCount == 0)
        speed = {1638, 2097, 2};
    else if (s.statCount == 0 && s.complexHangCount == 0)
        speed = {491, 1867, 2};

    ownUpdateNoise<bands>(alpha, speed, ceiling, level, s.aveLevel, s.bckrEst, s.oldLevel);
}

}  // namespace vsp::VSP_LEVEL
