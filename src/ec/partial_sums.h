// Sums over bands in the one order that every level keeps.
#pragma once

#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

constexpr int kPartialSums = 16;

// Adds the parts up in a fixed tree.
VSP_INLINE Vsp32f sumOfParts(Vsp32f (&parts)[kPartialSums]) {
    for (int half = kPartialSums / 2; half > 0; half /= 2)
        for (int i = 0; i < half; i++) parts[i] += parts[i + half];
    return parts[0];
}

// Calls op(k, part) for the bands 0 .. count-1: part is the number of the partial sum that band k belongs to.
template <class Op>
VSP_INLINE void forParts(Vsp32s count, Op op) {
    Vsp32s k = 0;
    for (; count - k >= kPartialSums; k += kPartialSums)
        for (int i = 0; i < kPartialSums; i++) op(k + i, i);
    for (int i = 0; k + i < count; i++) op(k + i, i);
}

// The sum of an array, with the sums in registers.
VSP_INLINE Vsp32f sumOf(const Vsp32f* x, Vsp32s count) {
    using V = Sliding32f;
    constexpr int kVectors = kPartialSums / V::width;
    V sums[kVectors] = {};
    Vsp32s k = 0;
    for (; count - k >= kPartialSums; k += kPartialSums)
        for (int i = 0; i < kVectors; i++) sums[i] = add(sums[i], V::load(x + k + i * V::width));
    Vsp32f parts[kPartialSums];
    for (int i = 0; i < kVectors; i++) sums[i].store(parts + i * V::width);
    for (int i = 0; k + i < count; i++) parts[i] += x[k + i];
    return sumOfParts(parts);
}

// The sum of term(k) over the bands.
template <class Term>
VSP_INLINE Vsp32f sumOverBands(Vsp32s count, Term term) {
    Vsp32f parts[kPartialSums] = {};
    forParts(count, [&](Vsp32s k, int i) { parts[i] += term(k); });
    return sumOfParts(parts);
}

}  // namespace vsp::VSP_LEVEL
