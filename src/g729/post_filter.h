// What the post-filters of G.729 (4.2, A.4.2, Annex E) share.
#pragma once

#include "arithmetic/standard_ops.h"
#include "common/exports.h"
#include "common/residual_filter.h"
#include "g729/constants.h"
#include "g729/exports.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

constexpr Vsp16s kGammaNumerator = 18022, kGammaDenominator = 22938;  // 0.55 and 0.7

// Correlation of neighbouring samples, doubled, each partial sum saturated. None is larger than the energy.
VSP_INLINE Vsp32s neighbourCorrelation(const Vsp16s* x, int len, Vsp32s doubledEnergy) {
    return doubledEnergy < kMax32 ? Vsp32s(2 * dot(x, x + 1, len - 1)) : dotSaturating(x, x + 1, len - 1);
}

// Sum of doubled products, each partial sum saturated.
VSP_INLINE Vsp32s doubledDot(const Vsp16s* a, const Vsp16s* b, int len) {
    if (doubledSumsFit(energy(a, len), energy(b, len))) return Vsp32s(2 * dot(a, b, len));
    return dotSaturating(a, b, len);
}

VSP_INLINE Vsp32s doubledEnergy(const Vsp16s* a, int len) { return Cnvrt_64s32s(2 * energy(a, len)); }

// output[n] * gain[n] in a vector operation for each product: shifted right by Shift, rounded or not, saturated.
template <int Shift, bool Rounded>
VSP_INLINE void multiplyGains(const Vsp16s* gains, Vsp16s* output) {
    const S32_128 rounding = S32_128::splat(Rounded ? 1 << (Shift - 1) : 0);
    for (int n = 0; n < kL_subfr; n += S16_128::width) {
        const S16_128 a = S16_128::load(gains + n), b = S16_128::load(output + n), lo = mulLo(a, b), hi = mulHi(a, b);
        packSat(shr(add(zipLo(lo, hi), rounding), Shift), shr(add(zipHi(lo, hi), rounding), Shift)).store(output + n);
    }
}

// The coefficients of A(z / gamma), and zeros up to len.
template <int Order>
VSP_INLINE void weight(const Vsp16s* lpc, Vsp16s gamma, Vsp16s* weighted, int len) {
    vspsMulPowerC_NR_16s_Sfs(lpc, gamma, weighted, Order + 1, 15);
    for (int i = Order + 1; i < len; i++) weighted[i] = 0;
}

// The present residual behind that of the past, which a state keeps.
template <int Past>
struct ResidualHistory {
    Vsp16s samples[Past + kL_subfr];
    Vsp16s* const now = samples + Past;

    [[gnu::always_inline]] ResidualHistory(const Vsp16s* past) {
        for (int i = 0; i < Past; i++) samples[i] = past[i];
    }
    [[gnu::always_inline]] void keep(Vsp16s* past) const {
        for (int i = 0; i < Past; i++) past[i] = samples[kL_subfr + i];
    }
};

// 1/A(z) with the outputs before it, the newest last.
template <int Order>
VSP_INLINE void synthesise(const Vsp16s* lpc, const Vsp16s* src, Vsp16s* dst, int len, const Vsp16s* memory) {
    if constexpr (Order == 10)
        vspsSynthesisFilter_NR_16s_Sfs(lpc, src, dst, len, 12, memory);
    else
        vspsSynthesisFilter_G729E_16s(lpc, src, dst, len, Order, memory);
}

// The response of A(z / gammaNumerator) / A(z / gammaDenominator), which begins as the numerator does.
template <int Order>
VSP_INLINE void impulseResponse(const Vsp16s* numerator, const Vsp16s* denominator, int len, Vsp16s* h) {
    static constexpr Vsp16s kZeros[Order] = {};
    synthesise<Order>(denominator, numerator, h, len, kZeros);
}

}  // namespace vsp::VSP_LEVEL
