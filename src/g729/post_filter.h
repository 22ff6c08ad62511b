// What the post-filters of G.729 (4.2, A.4.2, Annex E) share.
#pragma once

#include "common/exports.h"
#include "common/post_filter.h"
#include "common/residual_filter.h"
#include "g729/constants.h"
#include "g729/exports.h"

namespace vsp::VSP_LEVEL {

constexpr Vsp16s kGammaNumerator = 18022, kGammaDenominator = 22938;  // 0.55 and 0.7

// Sum of doubled products, each partial sum saturated.
VSP_INLINE Vsp32s doubledDot(const Vsp16s* a, const Vsp16s* b, int len) {
    if (doubledSumsFit(energy(a, len), energy(b, len))) return Vsp32s(2 * dot(a, b, len));
    return dotSaturating(a, b, len);
}

// The coefficients of A(z / gamma), and zeros up to len.
template <int Order>
VSP_INLINE void weight(const Vsp16s* lpc, Vsp16s gamma, Vsp16s* weighted, int len) {
    vspsMulPowerC_NR_16s_Sfs(lpc, gamma, weighted, Order + 1, 15);
    for (int i = Order + 1; i < len; i++) weighted[i] = 0;
}

// The same of order 10 for a factor that is known.
template <Vsp16s kGamma>
struct KnownWeights {
    Vsp16s powers[10];
    constexpr KnownWeights() : powers{kGamma} {
        for (int i = 1; i < 10; i++) powers[i] = mulRound_16s(powers[i - 1], kGamma);
    }
    [[gnu::always_inline]] void weight(const Vsp16s* lpc, Vsp16s* weighted) const {
        weighted[0] = lpc[0];
        for (int i = 0; i < 4; i += 2)
            mulRoundWrap(S16_128::load(lpc + 1 + i), S16_128::load(powers + i)).store(weighted + 1 + i);
    }
};

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
