// The estimate of the background noise in every band (3GPP TS 26.094, option 1), for detectors of any number of bands.
#pragma once

#include "arithmetic/basic_ops.h"
#include "gsmamr/exports.h"

namespace vsp::VSP_LEVEL {

constexpr Vsp16s kNewestFlag = 0x4000;

// Whether the levels are close to their averages: the sum of the ratios of the larger to the smaller one, Q6. The standard
// normalises the smaller one, divides and shifts back, which comes to one division. All values are exact as floats, and the
// dividend has 21 bits, so that no quotient is rounded up to an integer.
template <int bands>
VSP_INLINE bool isStationary(const Vsp16s level[bands], const Vsp16s average[bands]) {
    constexpr Vsp16s kSmallest = 184;
    constexpr int kThreshold = 1000;
    Vsp32s sum = 0;
    for (int b = 0; b < bands; b++) {
        const Vsp16s l = level[b] > kSmallest ? level[b] : kSmallest, a = average[b] > kSmallest ? average[b] : kSmallest;
        const Vsp16s larger = l > a ? l : a, smaller = l > a ? a : l;
        sum += Vsp32s(Vsp32f((larger >> 1) * 128) / smaller);
    }
    return sum <= kThreshold;
}

struct NoiseUpdateSpeed {
    Vsp16s up, down, step;
};

// Moves the averages towards the levels and the noise estimate towards the levels of the frame before. State has the
// members of VspGSMAMRVad1State that are used here.
template <int bands, class State>
VSP_INLINE void ownNoiseEstimateUpdate(State& s, const Vsp16s level[bands], Vsp16s toneFlags, Vsp16s ceiling) {
    constexpr Vsp16s kNotStationary = 20, kComplexSignal = 5, kFloor = 40;
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

    for (int b = 0; b < bands; b++)
        s.aveLevel[b] = sat_16s(s.aveLevel[b] + mulRound_16s(alpha, sat_16s(level[b] - s.aveLevel[b])));
    for (int b = 0; b < bands; b++) {
        const Vsp16s d = sat_16s(s.oldLevel[b] - s.bckrEst[b]);
        const Vsp32s moved = s.bckrEst[b] + mulRound_16s(d < 0 ? speed.down : speed.up, d) + (d < 0 ? -2 : speed.step);
        s.bckrEst[b] = moved < kFloor ? kFloor : moved > ceiling ? ceiling : Vsp16s(moved);
    }
    for (int b = 0; b < bands; b++) s.oldLevel[b] = level[b];
}

}  // namespace vsp::VSP_LEVEL
