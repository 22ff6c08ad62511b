// What the fixed codebooks of G.729 (3.8, A.3.8, Annex D) share.
#pragma once

#include "common/algebraic_search.h"
#include "common/exports.h"
#include "g729/constants.h"

namespace vsp::VSP_LEVEL {

struct Pulse {
    int track, place;
    int position() const { return positionOf(track, place); }
};

// The target filtered backwards, as magnitudes by tracks, and its signs.
struct SignedTarget {
    Vsp16s d[kTracks][kPlaces], negative[kTracks][kPlaces];  // all bits or none

    [[gnu::always_inline]] SignedTarget(const Vsp16s* target, const Vsp16s* impulse) {
        Vsp16s filtered[kL_subfr];
        vspsCrossCorr_NormM_16s(target, impulse, kL_subfr, filtered);
        byTracks(filtered, d);
        for (int t = 0; t < kTracks; t++) {
            const S16_128 x = S16_128::load(d[t]), sign = shr(x, 15), magnitude = subSat({x.v ^ sign.v}, sign);
            magnitude.store(d[t]);
            sign.store(negative[t]);
        }
    }

    bool isNegative(Pulse pulse) const { return negative[pulse.track][pulse.place] != 0; }

    // Correlations of track a with track b, with their signs. The standard multiplies by the rounded product of two signs
    // 32767 / -32768.
    [[gnu::always_inline]] void pairs(const TrackCorrelations& correlations, int a, int b,
                                      Vsp16s (&signedPairs)[kPlaces][kPlaces]) const {
        const S16_128 b0 = S16_128::load(negative[b]), mixed = S16_128::splat(-32767);
        const S16_128 ifPositive = select(b0, mixed, S16_128::splat(32766));
        const S16_128 ifNegative = select(b0, S16_128::splat(32767), mixed);
        correlations.pairs(a, b, signedPairs, [&](S16_128 row, int i) {
            return mulShift15(row, negative[a][i] != 0 ? ifNegative : ifPositive);
        });
    }
};

// Differences between the numbers of tracks that the codebooks need.
constexpr unsigned kOtherTracks = 0x1E, kAllTracks = 0x1F;

// The correlations of the impulse response in a scale that uses the range.
template <unsigned Differences>
VSP_INLINE void formScaled(const Vsp16s* h, TrackCorrelations& correlations) {
    const Vsp32s total = Cnvrt_64s32s(2 * energy(h, kL_subfr));
    Vsp16s scaled[kL_subfr];
    const int up = norm_32s_Pos(total) >> 1;
    for (int i = 0; i < kL_subfr; i++) scaled[i] = total >> 16 > 32000 ? Vsp16s(h[i] >> 1) : ShiftL_16s(h[i], up);
    correlations.form<Differences>(scaled, 0, 0);
}

VSP_INLINE void sharpenCode(Vsp16s* code, Vsp16s lag, Vsp16s sharp) {
    if (lag >= kL_subfr) return;
    Subframe sharpened(code);
    sharpen(sharpened, lag, sharp);
    for (int i = 0; i < kL_subfr; i++) code[i] = sharpened.samples[i];
}

// A subframe with a pulse anywhere: all bits at one place, moved by where the vector begins.
struct PulseMask {
    Vsp16s samples[2 * kL_subfr];
    constexpr PulseMask() : samples{} { samples[kL_subfr] = -1; }
    [[gnu::always_inline]] const Vsp16s* at(int position) const { return samples + kL_subfr - position; }
};

struct CodedPulse {
    int position;
    Vsp16s amplitude;
};

// The sum of the pulses from sample n on, in the pieces in which `map` and `dot` read it back.
template <int Pulses, class V = S16>
VSP_INLINE void storeSum(const CodedPulse (&pulses)[Pulses], Vsp16s* code, int n = 0) {
    static constexpr PulseMask kMask;
    for (; n + V::width <= kL_subfr; n += V::width) {
        V sum = V::splat(0);
        for (const CodedPulse& pulse : pulses)
            sum = add(sum, V{V::load(kMask.at(pulse.position) + n).v & V::splat(pulse.amplitude).v});
        sum.store(code + n);
    }
    if constexpr (V::width > S16_128::width) storeSum<Pulses, Half<V>>(pulses, code, n);
}

// The code vector with its pulses, sharpened, and the same filtered by the sharpened response.
template <int Pulses>
VSP_INLINE void storePulses(const Pulse (&pulses)[Pulses], const SignedTarget& target, const Vsp16s* response, Vsp16s lag,
                            Vsp16s sharp, Vsp16s* pCode, Vsp16s* pFiltered) {
    const ShiftedResponse shifted(response);
    CodedPulse coded[Pulses];
    for (int i = 0; i < Pulses; i++) coded[i] = {pulses[i].position(), Vsp16s(target.isNegative(pulses[i]) ? -8192 : 8191)};
    storeSum(coded, pCode);
    for (int n = 0; n < kL_subfr; n += S16_128::width) {
        S16_128 sum = S16_128::splat(0);
        for (const CodedPulse& pulse : coded) {
            const S16_128 part = S16_128::load(shifted.at(pulse.position) + n);
            sum = pulse.amplitude < 0 ? subSat(sum, part) : addSat(sum, part);
        }
        sum.store(pFiltered + n);
    }
    sharpenCode(pCode, lag, sharp);
}

// The index of the four-pulse codebook: positions, then signs.
VSP_INLINE void storeIndex17(const Pulse (&pulses)[4], const SignedTarget& target, Vsp16s* pIndex) {
    const int last = 2 * pulses[3].place + pulses[3].track - 3;
    pIndex[0] = Vsp16s(pulses[0].place + (pulses[1].place << 3) + (pulses[2].place << 6) + (last << 9));
    int signs = 0;
    for (int i = 0; i < 4; i++) signs |= int(!target.isNegative(pulses[i])) << i;
    pIndex[1] = Vsp16s(signs);
}

}  // namespace vsp::VSP_LEVEL
