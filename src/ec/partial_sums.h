// Sums over bands in the one order that every level keeps.
#pragma once

#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

constexpr int kPartialSums = 16;

// Adds the parts up in a fixed tree of halves; first: a last term of the first part. Filter banks have bands in a number
// that is one above a power of two, and a part that is written alone is not read with the others without waiting.
VSP_INLINE Vsp32f sumOfParts(const Vsp32f (&parts)[kPartialSums], Vsp32f first = 0) {
    const auto four = [&parts](int i) { return F32_128::load(parts + 4 * i); };
    const F32_128 even = add(add(four(0), F32_128{_mm_set_ss(first)}), four(2)), odd = add(four(1), four(3));
    const F32_128 sums = add(even, odd), pairs = add(sums, F32_128{_mm_movehl_ps(sums.v, sums.v)});
    return pairs.v[0] + pairs.v[1];
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
    if (count - k == 1) return sumOfParts(parts, x[k]);
    for (int i = 0; k + i < count; i++) parts[i] += x[k + i];
    return sumOfParts(parts);
}

// The sum of term(k) over the bands.
template <class Term>
VSP_INLINE Vsp32f sumOverBands(Vsp32s count, Term term) {
    Vsp32f parts[kPartialSums] = {};
    const Vsp32s whole = count / kPartialSums * kPartialSums;
    forParts(whole, [&](Vsp32s k, int i) { parts[i] += term(k); });
    if (count - whole == 1) return sumOfParts(parts, term(whole));
    for (int i = 0; whole + i < count; i++) parts[i] += term(whole + i);
    return sumOfParts(parts);
}

}  // namespace vsp::VSP_LEVEL
