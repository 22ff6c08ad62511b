// Levels of the bands of a filter bank and the background noise in them, as the voice activity detectors of AMR have them
// (3GPP TS 26.094, option 1, and TS 26.194).
#pragma once

#include "arithmetic/basic_ops.h"
#include "common/sum_of_positive.h"
#include "core/level.h"

namespace vsp::VSP_LEVEL {

// --- Levels ------------------------------------------------------------------------------------------------------------

// Where a band has its samples in every group that the filter bank makes, from a place on in steps; the level is scaled by
// 2^(scale - 16).
struct BandPlaces {
    int place, step, scale;
};

// The sum of the doubled magnitudes of a band from the end of the previous frame (which subLevel has), the frame and its
// end, scaled by 2^(scale - 16). What the end adds goes into subLevel for the next frame. frame and end are sums of
// magnitudes.
VSP_INLINE Vsp16s ownSignalLevel(Vsp32s frame, Vsp32s end, int scale, Vsp16s* subLevel) {
    const auto scaled = [scale](Vsp32s sum) { return Vsp16s(Cnvrt_64s32s(Vsp64s(sum) << scale) >> 16); };
    const Vsp32s previous = scale <= 16 ? *subLevel << (16 - scale) : *subLevel >> (scale - 16);
    *subLevel = scaled(2 * end);
    return scaled(2 * (end + frame) + previous);
}

// The levels from the sums of the magnitudes at every place of a group, over the frame without its end and over its end.
template <int bands, int group>
VSP_INLINE void ownBandLevels(const BandPlaces (&places)[bands], const Vsp32s (&frame)[group], const Vsp32s (&end)[group],
                              Vsp16s* subLevel, Vsp16s* level) {
    for (int b = 0; b < bands; b++) {
        Vsp32s inFrame = 0, atEnd = 0;
        for (int place = places[b].place; place < group; place += places[b].step) {
            inFrame += frame[place];
            atEnd += end[place];
        }
        level[b] = ownSignalLevel(inFrame, atEnd, places[b].scale, &subLevel[b]);
    }
}

// --- Levels over the noise ---------------------------------------------------------------------------------------------

// The ratio for an estimate of 0 or less, which only a foreign record has: the largest quotient, shifted alike.
template <int bits>
VSP_INLINE Vsp32s snrWithoutNoise(Vsp16s noise) {
    const int e = norm_16s(noise);
    return e > 15 - bits ? kMax16 : kMax16 >> (15 - bits - e);
}

// The level of each band over its noise, with so many bits (10 or less) behind the point. The standard normalises the
// estimate by e bits, divides and shifts left by e - (15 - bits) with saturation. Where that goes to the right it comes to
// one division; otherwise the quotient has fewer bits before the shift. The dividend has 24 bits, so that no quotient is
// rounded up to an integer.
template <int bands, int bits>
VSP_INLINE void bandSnr(const Vsp16s* level, const Vsp16s* noise, Vsp32s (&snr)[bands]) {
    for (int b = 0; b < bands; b++) {
        const Vsp32f divisor = Vsp32f(noise[b] > 0 ? noise[b] : 1);
        const int exponent = (__builtin_bit_cast(Vsp32s, divisor) >> 23) - 127;
        const int left = exponent < bits - 1 ? bits - 1 - exponent : 0;
        const Vsp32s half = level[b] > 0 ? level[b] >> 1 : 0;
        const Vsp32s ratio = Vsp32s(Vsp32f(half << (bits - left)) / divisor) << left;
        snr[b] = ratio < kMax16 ? ratio : kMax16;
    }
    for (int b = 0; b < bands; b++)
        if (noise[b] <= 0) snr[b] = snrWithoutNoise<bits>(noise[b]);
}

// The sum of their doubled squares.
template <int bands, int bits>
VSP_INLINE Vsp32s bandSnrEnergy(const Vsp16s* level, const Vsp16s* noise) {
    Vsp32s snr[bands];
    bandSnr<bands, bits>(level, noise, snr);
    for (Vsp32s& ratio : snr) ratio *= ratio;
    return Mul2_32s(sumOfPositive<bands>(snr));
}

// --- The estimate of the noise -----------------------------------------------------------------------------------------

constexpr Vsp16s kNewestFlag = 0x4000;  // of registers with a bit for every frame

// Whether the levels are close to their averages: the sum of the ratios of the larger to the smaller one, Q6. The standard
// normalises the smaller one, divides and shifts back, which comes to one division. All values are exact as floats, and the
// dividend has 21 bits, so that no quotient is rounded up to an integer.
template <int bands>
VSP_INLINE bool isStationary(const Vsp16s* level, const Vsp16s* average) {
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

// Moves the averages towards the levels by the factor alpha, and the noise estimate towards the levels of the frame before.
template <int bands>
VSP_INLINE void ownUpdateNoise(Vsp16s alpha, NoiseUpdateSpeed speed, Vsp16s ceiling, const Vsp16s* level, Vsp16s* average,
                               Vsp16s* noise, Vsp16s* oldLevel) {
    constexpr Vsp16s kFloor = 40;
    for (int b = 0; b < bands; b++) average[b] = sat_16s(average[b] + mulRound_16s(alpha, sat_16s(level[b] - average[b])));
    for (int b = 0; b < bands; b++) {
        const Vsp16s d = sat_16s(oldLevel[b] - noise[b]);
        const Vsp32s moved = noise[b] + mulRound_16s(d < 0 ? speed.down : speed.up, d) + (d < 0 ? -2 : speed.step);
        noise[b] = moved < kFloor ? kFloor : moved > ceiling ? ceiling : Vsp16s(moved);
    }
    for (int b = 0; b < bands; b++) oldLevel[b] = level[b];
}

}  // namespace vsp::VSP_LEVEL
