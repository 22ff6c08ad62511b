// Operators that the G.723.1 reference has besides those of the other standards; its own names are in brackets.
#pragma once

#include "arithmetic/standard_ops.h"

namespace vsp::g723 {

/// 32 x 16 product in Q15 (L_mls). Only high parts of -1 saturate, before the low part counts.
VSP_INLINE constexpr Vsp32s mul_32s16s_Q15(Vsp32s a, Vsp16s b) {
    const Vsp64s product = (Vsp64s(a) * b) >> 15;
    return Cnvrt_64s32s((a >> 16) == kMin16 && b == kMin16 ? product - 1 : product);
}
static_assert(mul_32s16s_Q15(0x10000, 16384) == 0x8000 && mul_32s16s_Q15(3, -1) == -1);
static_assert(mul_32s16s_Q15(kMin32, kMin16) == kMax32 && mul_32s16s_Q15(kMin32 + 1, kMin16) == kMax32 - 1);

/// Quotient in Q15 of a / 65536 and b, for a >= 0 and b > 0 (div_l); 0 elsewhere.
VSP_INLINE constexpr Vsp16s divLong(Vsp32s a, Vsp16s b) {
    if (a <= 0 || b <= 0) return 0;
    return a >= b * 65536LL ? kMax16 : Vsp16s((a >> 1) / b);
}
static_assert(divLong(0x10000, 2) == 16384 && divLong(0x20000, 2) == kMax16 && divLong(5, 0) == 0);

/// Square root of a / 2, even and truncated (Sqrt_lbc).
VSP_INLINE constexpr Vsp16s squareRoot(Vsp32s a) {
    Vsp16s root = 0;
    for (int bit = 0x4000; bit > 1; bit >>= 1) {
        const Vsp16s tried = Vsp16s(root + bit);
        if (a >= Mul2_32s(tried * tried)) root = tried;
    }
    return root;
}
static_assert(squareRoot(kMax32) == 32766 && squareRoot(2 * 300 * 300) == 300 && squareRoot(2 * 301 * 301) == 300);
static_assert(squareRoot(-1) == 0);

}  // namespace vsp::g723
