// The exact dot product of 16-bit vectors.
#pragma once

#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

// Sum of op(a)[i] * op2(b)[i] in 64 bits, one vector or more. With 0x7FFF0000 added every result of dot2, the one that
// wraps included, is an exact unsigned 32-bit value; what was added is taken off at the end.
template <class V, class OpA, class OpB>
VSP_INLINE Vsp64s dotWhole(const Vsp16s* a, const Vsp16s* b, int len, OpA opA, OpB opB) {
    using W = typename Related<V>::Wide;
    using Sum = typename Related<V>::Sum;
    constexpr Vsp32s kBias = 0x7FFF0000;
    const auto products = [](V x, V y) { return addHalves(Sum{add(dot2(x, y), W::splat(kBias)).v}); };
    const int whole = len & -V::width, rest = len - whole;
    Sum total = products(opA(loadLast<V>(a + len - V::width, rest)), opB(V::load(b + len - V::width)));
    for (int i = 0; i < whole; i += V::width) total = add(total, products(opA(V::load(a + i)), opB(V::load(b + i))));
    return sum(total) - (len / V::width + 1LL) * W::width * kBias;
}

template <class V = S16, class OpA, class OpB>
VSP_INLINE Vsp64s dot(const Vsp16s* a, const Vsp16s* b, int len, OpA opA, OpB opB) {
    if (len >= V::width) return dotWhole<V>(a, b, len, opA, opB);
    if constexpr (V::width > 8) {
        return dot<Half<V>>(a, b, len, opA, opB);
    } else {
        alignas(16) Vsp16s paddedA[8] = {}, paddedB[8] = {};
        for (int i = 0; i < len; i++) {
            paddedA[i] = a[i];
            paddedB[i] = b[i];
        }
        return dotWhole<V>(paddedA, paddedB, 8, opA, opB);
    }
}

}  // namespace vsp::VSP_LEVEL
