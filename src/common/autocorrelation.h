// Autocorrelation of a windowed signal, normalised (Autocorr of the standards).
#pragma once

#include "arithmetic/split_32.h"
#include "vector/dot.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

constexpr int kLagGroup = 4;  // lags that are summed at a time
constexpr int wholeLagGroups(int lags) { return (lags + kLagGroup - 1) / kLagGroup * kLagGroup; }

// r[k] = sum of x[i] * x[i - k] over i = 0 .. len-1 for whole groups of lags, in 32 bits that wrap. Behind the len samples
// zeros fill the last vector.
VSP_INLINE void correlateLags(const Vsp16s* x, int len, Vsp32s* r, int lags) {
    using V = Sliding16;
    for (int k = 0; k < lags; k += kLagGroup) {
        Wide<V> sum[kLagGroup];
        for (auto& s : sum) s = Wide<V>::splat(0);
        for (int i = 0; i < len; i += V::width) {
            const V samples = V::load(x + i);
            for (int j = 0; j < kLagGroup; j++) sum[j] = add(sum[j], dot2(samples, V::load(x + i - k - j)));
        }
        sums(sum[0], sum[1], sum[2], sum[3]).store(r + k);
    }
}

// A signal between the zeros that make every lag a plain sum of products.
template <int kMaxLen, int kMaxLags>
struct PaddedSignal {
    static constexpr int kLags = wholeLagGroups(kMaxLags);
    static constexpr int kWhole = (kMaxLen + Sliding16::width - 1) / Sliding16::width * Sliding16::width;
    Vsp16s buffer[kLags + kWhole];
    Vsp16s* const samples = buffer + kLags;
    const int len;

    [[gnu::always_inline]] explicit PaddedSignal(int length) : len(length) {
        for (int i = 0; i < kLags; i++) buffer[i] = 0;
        for (int i = length; i < kWhole; i++) samples[i] = 0;
    }
};

constexpr Vsp64s kEnergyLimit = 1 << 30;  // from which on a doubled energy leaves 32 bits

// r[k] = the doubled correlations of lags 0 .. lags-1, 1 added to the first, normalised by it, bit 0 cleared. The energy is
// below kEnergyLimit. Returns the left shift.
template <int kMaxLen, int kMaxLags>
VSP_INLINE int normaliseLags(const PaddedSignal<kMaxLen, kMaxLags>& signal, Vsp32s* r, int lags) {
    Vsp32s sums[wholeLagGroups(kMaxLags)];
    correlateLags(signal.samples, signal.len, sums, lags);  // none is above the energy, whatever it has summed
    const Vsp32s r0 = 2 * sums[0] + 1;
    const int shift = norm_32s_Pos(r0);
    r[0] = splitValue(r0 << shift);
    for (int k = 1; k < lags; k++) r[k] = 2 * sums[k] * (1 << shift);
    return shift;
}

// The same of any signal, which is divided by 4 first while the energy leaves 32 bits. norm: the left shift less 4 times
// the number of these divisions, which is returned.
template <int kMaxLen, int kMaxLags>
VSP_INLINE int normalisedAutoCorr(PaddedSignal<kMaxLen, kMaxLags>& signal, Vsp32s* r, int lags, Vsp32s* norm) {
    int divisions = 0;
    while (energy(signal.samples, signal.len) >= kEnergyLimit) {
        for (int i = 0; i < signal.len; i++) signal.samples[i] = Vsp16s(signal.samples[i] >> 2);
        divisions++;
    }
    *norm = normaliseLags(signal, r, lags) - 4 * divisions;
    return divisions;
}

}  // namespace vsp::VSP_LEVEL
