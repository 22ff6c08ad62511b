// Values with exponents: energies and correlations of AMR-WB, and the inverse square root of such a value.
#pragma once

#include "arithmetic/standard_ops.h"
#include "common/tables.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

// value * 2^(exponent - 31); value is normalised where it comes from a sum.
struct Normalised {
    Vsp32s value;
    int exponent;
};

VSP_INLINE Normalised normalisedSum(Vsp32s sum) {
    const int norm = norm_32s(sum);
    return {Vsp32s(Vsp32u(sum) << norm), 30 - norm};
}

// start and the sum of the doubled products, every step saturated.
VSP_INLINE Vsp32s saturatingDot(Vsp32s start, const Vsp16s* a, const Vsp16s* b, int len) {
    if (doubledSumsFit(energy(a, len), energy(b, len))) return Cnvrt_64s32s(start + 2 * dot(a, b, len));
    for (int i = 0; i < len; i++) start = mac_32s(start, a[i], b[i]);
    return start;
}

// 1 and the doubled energy (`Dot_product12` of a vector with itself). What saturates stays at the largest value.
VSP_INLINE Normalised ownNormalisedEnergy(const Vsp16s* x, int len) {
    return normalisedSum(Cnvrt_64s32s(1 + 2 * energy(x, len)));
}

// 1 and the doubled correlation (`Dot_product12`).
VSP_INLINE Normalised ownNormalisedDot(const Vsp16s* a, const Vsp16s* b, int len) {
    return normalisedSum(saturatingDot(1, a, b, len));
}

// 1 / sqrt of a normalised value (`Isqrt_n`).
VSP_INLINE Normalised ownInverseSqrt(Normalised x) {
    if (x.value <= 0) return {kMax32, 0};
    const Vsp32s value = (x.exponent & 1) != 0 ? x.value >> 1 : x.value;
    const int i = (value >> 25) - 16;
    const Vsp32s a = (value >> 10) & 0x7FFF;
    return {tabsqr[i] - a * tabsqr_d[i], -((x.exponent - 1) >> 1)};
}

// The same of any value, as a value (`Isqrt`).
VSP_INLINE Vsp32s ownInverseSqrt_32s(Vsp32s x) {
    const int norm = norm_32s(x);
    const Normalised root = ownInverseSqrt({Vsp32s(Vsp32u(x) << norm), 31 - norm});
    return shl_32s(root.value, root.exponent);
}

}  // namespace vsp::VSP_LEVEL
