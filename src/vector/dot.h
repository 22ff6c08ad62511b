// The exact dot product of 16-bit vectors.
#pragma once

#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

// With kDotBias added every result of dot2, the one that wraps included, is an exact unsigned 32-bit value. What was added
// is taken off at the end.
constexpr Vsp32s kDotBias = 0x7FFF0000;

template <class V>
VSP_INLINE auto biasedProducts(V a, V b) {
    return addHalves(typename Related<V>::Sum{add(dot2(a, b), Wide<V>::splat(kDotBias)).v});
}

// Folds the sum so far into the narrower widths and adds what the rest of the length has.
template <class V, class Sum, class OpA, class OpB>
VSP_INLINE Vsp64s dotRest(Sum total, int i, const Vsp16s* a, const Vsp16s* b, int len, OpA opA, OpB opB) {
    if constexpr (V::width > 8) {
        using H = Half<V>;
        auto folded = foldSum(total);
        if (len & H::width) {
            folded = add(folded, biasedProducts(opA(H::load(a + i)), opB(H::load(b + i))));
            i += H::width;
        }
        return dotRest<H>(folded, i, a, b, len, opA, opB);
    } else {
        Vsp64s result = sum(total) - Vsp64s(i / 2) * kDotBias;
        for (; i < len; i++) result += first(opA(V::splat(a[i]))) * first(opB(V::splat(b[i])));
        return result;
    }
}

// Sum of opA(a)[i] * opB(b)[i] in 64 bits. The operations are generic lambdas on vectors.
template <class OpA, class OpB>
VSP_INLINE Vsp64s dot(const Vsp16s* a, const Vsp16s* b, int len, OpA opA, OpB opB) {
    S64 total = S64::splat(0);
    const int whole = len & -S16::width;
    for (int i = 0; i < whole; i += S16::width)
        total = add(total, biasedProducts(opA(S16::load(a + i)), opB(S16::load(b + i))));
    return dotRest<S16>(total, whole, a, b, len, opA, opB);
}

VSP_INLINE Vsp64s dot(const Vsp16s* a, const Vsp16s* b, int len) {
    const auto same = [](auto x) { return x; };
    return dot(a, b, len, same, same);
}

VSP_INLINE Vsp64s energy(const Vsp16s* a, int len) { return dot(a, a, len); }

// Whether no sum of doubled products of elements of the one vector with elements of the other, taken in any order and
// stopped anywhere, leaves 32 bits: by the Cauchy-Schwarz inequality it is at most 2 * sqrt(energyA * energyB), here below
// 2^31. The bound is a little under 2^60 for the rounding of the product.
VSP_INLINE bool doubledSumsFit(Vsp64s energyA, Vsp64s energyB) { return Vsp64f(energyA) * Vsp64f(energyB) < 1.1529e18; }

}  // namespace vsp::VSP_LEVEL
