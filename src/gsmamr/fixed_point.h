// Operators of the standard's basic-operator set that the detectors add to those of common/basic_ops.h.
#pragma once

#include "common/basic_ops.h"

namespace vsp {

/// Q15 product, rounded and saturated (mult_r).
VSP_INLINE constexpr Vsp16s mulRound_16s(Vsp16s a, Vsp16s b) { return sat_16s((a * b + 0x4000) >> 15); }
static_assert(mulRound_16s(kMin16, kMin16) == kMax16 && mulRound_16s(32767, 16385) == 16384);

/// Left shifts that normalise a value of either sign, 0 for 0 (norm_s).
VSP_INLINE constexpr int norm_16s(Vsp16s a) { return a == 0 ? 0 : Exp_16s_Pos(Vsp16u(a < 0 ? ~a : a)); }
static_assert(norm_16s(0) == 0 && norm_16s(1) == 14 && norm_16s(-1) == 15 && norm_16s(kMin16) == 0);

/// a / b in Q15 for 0 <= a <= b, 0 < b; 32767 for a = b (div_s). The quotient of the doubles is never rounded up to an
/// integer.
VSP_INLINE constexpr Vsp32s div_16s(Vsp32s a, Vsp32s b) {
    const Vsp32s q = Vsp32s(Vsp64f(a * 32768) / b);
    return q < kMax16 ? q : kMax16;
}
static_assert(div_16s(1, 3) == 10922 && div_16s(32766, 32767) == 32766 && div_16s(5, 5) == 32767 && div_16s(0, 1) == 0);

/// Fractional 32 x 16 product in split form, not saturated (Mpy_32_16).
VSP_INLINE constexpr Vsp32s mul_32s16s(Vsp32s a, Vsp16s b) {
    const Vsp32s product = (a >> 16) * b + ((((a >> 1) & 0x7FFF) * b) >> 15);
    return wrapAdd_32s(product, product);
}
static_assert(mul_32s16s(0x10000, 16384) == 0x8000 && mul_32s16s(kMin32, kMin16) == kMin32 && mul_32s16s(3, -1) == -2);

/// Sum of values that are not negative, saturated. The halves are added apart, so that they stay within 32 bits.
template <int n>
VSP_INLINE constexpr Vsp32s sumOfPositive(const Vsp32s* x) {
    Vsp32s high = 0, low = 0;
    for (int i = 0; i < n; i++) {
        high += x[i] >> 16;
        low += x[i] & 0xFFFF;
    }
    return Cnvrt_64s32s(Vsp64s(high) * 65536 + low);
}

}  // namespace vsp
