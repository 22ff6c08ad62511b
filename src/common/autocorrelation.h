// Autocorrelation of a windowed signal, normalised (Autocorr of the standards).
#pragma once

#include "arithmetic/split_32.h"
#include "vector/dot.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

// A signal between the zeros that make every lag a plain sum of products.
template <int kLen, int kLags>
struct PaddedSignal {
    static constexpr int kGroup = 4;  // lags that are summed at a time
    static constexpr int kLagGroups = (kLags + kGroup - 1) / kGroup;
    static constexpr int kBefore = kLagGroups * kGroup;
    static constexpr int kWhole = (kLen + Sliding16::width - 1) / Sliding16::width * Sliding16::width;
    Vsp16s buffer[kBefore + kWhole];
    Vsp16s* const samples = buffer + kBefore;

    [[gnu::always_inline]] PaddedSignal() {
        for (int i = 0; i < kBefore; i++) buffer[i] = 0;
        for (int i = kLen; i < kWhole; i++) samples[i] = 0;
    }

    // r[k] = sum of samples[i] * samples[i - k]; the sums wrap, which none does if the energy is below 2^31.
    [[gnu::always_inline]] void correlate(Vsp32s (&r)[kBefore]) const {
        using V = Sliding16;
        for (int k = 0; k < kBefore; k += kGroup) {
            Wide<V> sum[kGroup];
            for (auto& s : sum) s = Wide<V>::splat(0);
            for (int i = 0; i < kWhole; i += V::width) {
                const V x = V::load(samples + i);
                for (int j = 0; j < kGroup; j++) sum[j] = add(sum[j], dot2(x, V::load(samples + i - k - j)));
            }
            sums(sum[0], sum[1], sum[2], sum[3]).store(r + k);
        }
    }
};

// Doubled sums of squares that leave 32 bits.
constexpr Vsp64s kEnergyLimit = 1 << 30;

// r[k] = the doubled correlations of lags 0 .. kLags-1, 1 added to the first, normalised by it, bit 0 cleared. While the
// energy leaves 32 bits, the signal is divided by 4 first. Returns the number of these divisions; norm is the left shift.
template <int kLen, int kLags>
VSP_INLINE int normalisedAutoCorr(PaddedSignal<kLen, kLags>& signal, Vsp32s* r, Vsp32s* norm) {
    using Signal = PaddedSignal<kLen, kLags>;
    int divisions = 0;
    while (energy(signal.samples, kLen) >= kEnergyLimit) {
        for (int i = 0; i < kLen; i++) signal.samples[i] = Vsp16s(signal.samples[i] >> 2);
        divisions++;
    }
    Vsp32s sums[Signal::kBefore];
    signal.correlate(sums);
    const Vsp32s r0 = 2 * sums[0] + 1;
    *norm = norm_32s_Pos(r0);
    r[0] = splitValue(r0 << *norm);
    for (int k = 1; k < kLags; k++) r[k] = 2 * sums[k] * (1 << *norm);
    return divisions;
}

}  // namespace vsp::VSP_LEVEL
