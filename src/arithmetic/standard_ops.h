// More of the operators of the fixed-point standards, whose own names are in brackets. Shift counts may have either sign.
#pragma once

#include "arithmetic/basic_ops.h"

namespace vsp {

VSP_INLINE constexpr Vsp16s Add_16s(Vsp16s a, Vsp16s b) { return sat_16s(a + b); }          // add
VSP_INLINE constexpr Vsp16s Sub_16s(Vsp16s a, Vsp16s b) { return sat_16s(a - b); }          // sub
VSP_INLINE constexpr Vsp16s Abs_16s(Vsp16s a) { return sat_16s(a < 0 ? -a : a); }           // abs_s
VSP_INLINE constexpr Vsp16s Negate_16s(Vsp16s a) { return sat_16s(-a); }                    // negate
VSP_INLINE constexpr Vsp16s Mul_16s(Vsp16s a, Vsp16s b) { return sat_16s((a * b) >> 15); }  // mult
VSP_INLINE constexpr Vsp32s Mul2_16s32s(Vsp16s a, Vsp16s b) { return Mul2_32s(a * b); }     // L_mult
VSP_INLINE constexpr Vsp16s high_32s(Vsp32s a) { return Vsp16s(a >> 16); }                  // extract_h
static_assert(Mul_16s(kMin16, kMin16) == kMax16 && Mul_16s(-1, 1) == -1 && Abs_16s(kMin16) == kMax16);

/// Subtracts the doubled product of a and b; both the product and the difference saturate (L_msu).
VSP_INLINE constexpr Vsp32s msu_32s(Vsp32s sum, Vsp16s a, Vsp16s b) { return Sub_32s(sum, Mul2_32s(a * b)); }
static_assert(msu_32s(0, kMin16, kMin16) == -kMax32);

/// Left shift with saturation, right shift for a negative count (L_shl).
VSP_INLINE constexpr Vsp32s shl_32s(Vsp32s a, int n) {
    return n < 0 ? a >> (n > -31 ? -n : 31) : Cnvrt_64s32s(a * (1LL << (n < 32 ? n : 32)));
}
VSP_INLINE constexpr Vsp32s shr_32s(Vsp32s a, int n) { return shl_32s(a, -n); }  // L_shr
static_assert(shl_32s(1, 31) == kMax32 && shl_32s(-1, 40) == kMin32 && shl_32s(0, 40) == 0 && shl_32s(-5, -40) == -1);

/// The same for 16 bits (shl, shr).
VSP_INLINE constexpr Vsp16s shl_16s(Vsp16s a, int n) { return n < 0 ? Vsp16s(a >> (n > -15 ? -n : 15)) : ShiftL_16s(a, n); }
VSP_INLINE constexpr Vsp16s shr_16s(Vsp16s a, int n) { return shl_16s(a, -n); }
static_assert(shl_16s(1, 15) == kMax16 && shl_16s(-3, -1) == -2 && shr_16s(-1, 20) == -1);

/// Right shift, rounded; 0 for counts above 15 (shr_r).
VSP_INLINE constexpr Vsp16s shrRound_16s(Vsp16s a, int n) {
    if (n <= 0) return shl_16s(a, -n);
    return n > 15 ? Vsp16s(0) : Vsp16s((a + (1 << (n - 1))) >> n);
}
static_assert(shrRound_16s(3, 1) == 2 && shrRound_16s(-3, 1) == -1 && shrRound_16s(kMax16, 15) == 1);

/// Left shifts that normalise a value of either sign, 0 for 0 (norm_l).
VSP_INLINE constexpr int norm_32s(Vsp32s a) {
    const Vsp32s bits = a < 0 ? ~a : a;
    return bits != 0 ? __builtin_clz(Vsp32u(bits)) - 1 : a == 0 ? 0 : 31;
}
static_assert(norm_32s(0) == 0 && norm_32s(-1) == 31 && norm_32s(1) == 30 && norm_32s(kMin32) == 0);

/// Quotient in Q15, truncated, for 0 <= a <= b and b > 0 (div_s). Elsewhere 32767 for a >= b and 0 for a < 0.
VSP_INLINE constexpr Vsp16s Div_16s(Vsp16s a, Vsp16s b) {
    return a >= b ? kMax16 : a <= 0 ? Vsp16s(0) : Vsp16s((a << 15) / b);
}
static_assert(Div_16s(1, 3) == 10922 && Div_16s(5, 5) == kMax16 && Div_16s(0, 0) == kMax16 && Div_16s(0, 5) == 0);

}  // namespace vsp
