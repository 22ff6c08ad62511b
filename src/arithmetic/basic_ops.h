// The saturating fixed-point operators on which every 16-bit kernel is built. Right shifts of signed values are arithmetic.
#pragma once

#include "arithmetic/log_tables.h"
#include "core/inline.h"
#include "vspsc/types.h"

namespace vsp {

constexpr Vsp16s kMin16 = -0x8000, kMax16 = 0x7FFF;
constexpr Vsp32s kMin32 = -0x7FFFFFFF - 1, kMax32 = 0x7FFFFFFF;
constexpr Vsp64s kMin64 = -0x7FFFFFFFFFFFFFFF - 1, kMax64 = 0x7FFFFFFFFFFFFFFF;
using Vsp64u = unsigned long long;

// --- Clamping ----------------------------------------------------------------------------------------------------------

/// Clamps to 32 bits.
VSP_INLINE constexpr Vsp32s Cnvrt_64s32s(Vsp64s a) { return a > kMax32 ? kMax32 : a < kMin32 ? kMin32 : Vsp32s(a); }
static_assert(Cnvrt_64s32s(0x80000000LL) == kMax32 && Cnvrt_64s32s(-0x80000001LL) == kMin32);
static_assert(Cnvrt_64s32s(kMax32) == kMax32 && Cnvrt_64s32s(kMin32) == kMin32);

/// Clamps to 16 bits.
VSP_INLINE constexpr Vsp16s sat_16s(Vsp32s a) { return a > kMax16 ? kMax16 : a < kMin16 ? kMin16 : Vsp16s(a); }
static_assert(sat_16s(0x8000) == kMax16 && sat_16s(-0x8001) == kMin16 && sat_16s(-1) == -1);

// --- Wrap-around that a reference asks for -----------------------------------------------------------------------------

VSP_INLINE constexpr Vsp32s wrapAdd_32s(Vsp32s a, Vsp32s b) { return Vsp32s(Vsp32u(a) + Vsp32u(b)); }
static_assert(wrapAdd_32s(kMax32, 1) == kMin32);

VSP_INLINE constexpr Vsp32s wrapSub_32s(Vsp32s a, Vsp32s b) { return Vsp32s(Vsp32u(a) - Vsp32u(b)); }
static_assert(wrapSub_32s(0, kMin32) == kMin32);

VSP_INLINE constexpr Vsp32s wrapMul_32s(Vsp32s a, Vsp32s b) { return Vsp32s(Vsp32u(a) * Vsp32u(b)); }
static_assert(wrapMul_32s(0x40000000, 2) == kMin32);

// --- Sums and products -------------------------------------------------------------------------------------------------

/// Sum with saturation.
VSP_INLINE constexpr Vsp32s Add_32s(Vsp32s a, Vsp32s b) { return Cnvrt_64s32s(Vsp64s(a) + b); }
static_assert(Add_32s(kMax32, 1) == kMax32 && Add_32s(kMin32, -1) == kMin32 && Add_32s(kMin32, kMax32) == -1);

/// Difference with saturation.
VSP_INLINE constexpr Vsp32s Sub_32s(Vsp32s a, Vsp32s b) { return Cnvrt_64s32s(Vsp64s(a) - b); }
static_assert(Sub_32s(0, kMin32) == kMax32 && Sub_32s(-2, kMax32) == kMin32 && Sub_32s(-1, kMax32) == kMin32);

/// Magnitude with saturation.
VSP_INLINE constexpr Vsp32s Abs_32s(Vsp32s a) { return a == kMin32 ? kMax32 : a < 0 ? -a : a; }
static_assert(Abs_32s(kMin32) == kMax32 && Abs_32s(-kMax32) == kMax32 && Abs_32s(0) == 0);

/// Doubles with saturation.
VSP_INLINE constexpr Vsp32s Mul2_32s(Vsp32s a) { return Cnvrt_64s32s(2 * Vsp64s(a)); }
static_assert(Mul2_32s(0x40000000) == kMax32 && Mul2_32s(0x3FFFFFFF) == 0x7FFFFFFE);
static_assert(Mul2_32s(-0x40000000) == kMin32 && Mul2_32s(-0x40000001) == kMin32);

/// Times four with saturation.
VSP_INLINE constexpr Vsp32s Mul4_32s(Vsp32s a) { return Cnvrt_64s32s(4 * Vsp64s(a)); }
static_assert(Mul4_32s(0x20000000) == kMax32 && Mul4_32s(0x1FFFFFFF) == 0x7FFFFFFC);
static_assert(Mul4_32s(-0x20000000) == kMin32 && Mul4_32s(-0x20000001) == kMin32);

/// 16 x 16 product shifted right by s (0..31), neither rounded nor saturated.
VSP_INLINE constexpr Vsp32s Mul_16s_Sfs(Vsp16s a, Vsp16s b, int s) { return (a * b) >> s; }
static_assert(Mul_16s_Sfs(kMin16, kMin16, 0) == 0x40000000 && Mul_16s_Sfs(-1, 1, 15) == -1);

/// Q15 product, rounded and saturated (mult_r).
VSP_INLINE constexpr Vsp16s mulRound_16s(Vsp16s a, Vsp16s b) { return sat_16s((a * b + 0x4000) >> 15); }
static_assert(mulRound_16s(kMin16, kMin16) == kMax16 && mulRound_16s(32767, 16385) == 16384);

/// Fractional 32 x 32 product of operands split at bit 15, not saturated. (Mpy_32 splits at bit 16.)
VSP_INLINE constexpr Vsp32s Mul_32s(Vsp32s a, Vsp32s b) {
    const Vsp32s h1 = Vsp16s(a >> 15), l1 = a & 0x7FFF;
    const Vsp32s h2 = Vsp16s(b >> 15), l2 = b & 0x7FFF;
    const Vsp32s sum = wrapAdd_32s(wrapAdd_32s(h1 * h2, (h1 * l2) >> 15), (l1 * h2) >> 15);
    return wrapAdd_32s(sum, sum);
}
static_assert(Mul_32s(0x3FFFFFFF, 0x3FFFFFFF) == 0x7FFFFFFA && Mul_32s(-0x40000000, -0x40000000) == kMin32);
static_assert(Mul_32s(0x8000, 0x8000) == 2 && Mul_32s(0x7FFF, 0x7FFF) == 0);

/// Fractional 32 x 32 product of operands split at bit 16, not saturated (G.729 Mpy_32).
VSP_INLINE constexpr Vsp32s Mpy_32(Vsp32s a, Vsp32s b) {
    const Vsp32s hi1 = a >> 16, lo1 = (a >> 1) & 0x7FFF;
    const Vsp32s hi2 = b >> 16, lo2 = (b >> 1) & 0x7FFF;
    const Vsp32s product = hi1 * hi2 + ((hi1 * lo2) >> 15) + ((lo1 * hi2) >> 15);
    return wrapAdd_32s(product, product);
}
static_assert(Mpy_32(0x10000, 0x10000) == 2 && Mpy_32(kMin32, kMin32) == kMin32 && Mpy_32(0xFFFF, 0xFFFF) == 0);

/// Fractional 32 x 16 product in split form, not saturated (Mpy_32_16).
VSP_INLINE constexpr Vsp32s mul_32s16s(Vsp32s a, Vsp16s b) {
    const Vsp32s product = (a >> 16) * b + ((((a >> 1) & 0x7FFF) * b) >> 15);
    return wrapAdd_32s(product, product);
}
static_assert(mul_32s16s(0x10000, 16384) == 0x8000 && mul_32s16s(kMin32, kMin16) == kMin32 && mul_32s16s(3, -1) == -2);

/// Adds the doubled product of a and b; both the product and the sum saturate (L_mac of the standards).
VSP_INLINE constexpr Vsp32s mac_32s(Vsp32s sum, Vsp16s a, Vsp16s b) { return Add_32s(sum, Mul2_32s(a * b)); }
static_assert(mac_32s(0, kMin16, kMin16) == kMax32 && mac_32s(kMin32, kMin16, kMin16) == -1);

/// Sum of n doubled products; every product and every partial sum saturates.
VSP_INLINE constexpr Vsp32s dotSaturating(const Vsp16s* a, const Vsp16s* b, int n) {
    Vsp32s sum = 0;
    for (int i = 0; i < n; i++) sum = mac_32s(sum, a[i], b[i]);
    return sum;
}

/// integer.
VSP_INLINE constexpr Vsp32s div_16s(Vsp32s a, Vsp32s b) {
    const Vsp32s q = Vsp32s(Vsp64f(a * 32768) / b);
    return q < kMax16 ? q : kMax16;
}
static_assert(div_16s(1, 3) == 10922 && div_16s(32766, 32767) == 32766 && div_16s(5, 5) == 32767 && div_16s(0, 1) == 0);

// --- Shifts and normalisation ------------------------------------------------------------------------------------------

/// Left shift by n (0..31) with saturation.
VSP_INLINE constexpr Vsp16s ShiftL_16s(Vsp16s a, int n) {
    return sat_16s(a * (1 << (n < 15 ? n : 15)));  // by 15 every value but 0 has saturated
}
static_assert(ShiftL_16s(0x4000, 1) == kMax16 && ShiftL_16s(-16384, 1) == kMin16 && ShiftL_16s(-16385, 1) == kMin16);
static_assert(ShiftL_16s(1, 16) == kMax16 && ShiftL_16s(0, 31) == 0 && ShiftL_16s(-1, 15) == kMin16);

/// Left shifts that bring a positive value to 0x4000 or above, -1 for 0x8000 and above; 15 for 0.
VSP_INLINE constexpr int Exp_16s_Pos(Vsp16u a) { return __builtin_clz((Vsp32u(a) << 16) | 0x8000) - 1; }
static_assert(Exp_16s_Pos(0) == 15 && Exp_16s_Pos(1) == 14 && Exp_16s_Pos(0x4000) == 0 && Exp_16s_Pos(0x8000) == -1);

/// Left shifts that normalise a value of either sign, 0 for 0 (norm_s).
VSP_INLINE constexpr int norm_16s(Vsp16s a) { return a == 0 ? 0 : Exp_16s_Pos(Vsp16u(a < 0 ? ~a : a)); }
static_assert(norm_16s(0) == 0 && norm_16s(1) == 14 && norm_16s(-1) == 15 && norm_16s(kMin16) == 0);

/// Shifts a value that is not negative left until it is 0x40000000 or above; returns the count, 0 for 0.
VSP_INLINE constexpr int Norm_32s_Pos_I(Vsp32s* a) {
    if (*a == 0) return 0;
    const int n = __builtin_clz(Vsp32u(*a)) - 1;
    *a <<= n;
    return n;
}

/// The count of Norm_32s_Pos_I.
VSP_INLINE constexpr int norm_32s_Pos(Vsp32s a) { return Norm_32s_Pos_I(&a); }
static_assert(norm_32s_Pos(0) == 0 && norm_32s_Pos(1) == 30 && norm_32s_Pos(0x8000) == 15 && norm_32s_Pos(kMax32) == 0);

/// What rounds a right shift by scaleFactor (0 or more) whose count is taken modulo 32.
VSP_INLINE constexpr Vsp32s roundingConstant(Vsp32s scaleFactor) {
    return scaleFactor == 0 ? 0 : Vsp32s(1u << ((scaleFactor - 1) & 31));
}
static_assert(roundingConstant(1) == 1 && roundingConstant(32) == kMin32 && roundingConstant(33) == 1);

/// The high half, rounded and saturated.
VSP_INLINE constexpr Vsp16s round_32s(Vsp32s a) { return Vsp16s(Add_32s(a, 0x8000) >> 16); }
static_assert(round_32s(0x7FFF8000) == kMax16 && round_32s(0x18000) == 2 && round_32s(-0x8000) == 0);

// --- Logarithm and power of two ----------------------------------------------------------------------------------------

/// Base-2 logarithm: exponent, and fraction in Q15; both 0 for x < 1.
VSP_INLINE constexpr void ownLog2(Vsp32s x, Vsp16s* exponent, Vsp16s* fraction) {
    *exponent = 0;
    *fraction = 0;
    if (x < 1) return;
    const int n = Norm_32s_Pos_I(&x);
    const int i = (x >> 25) - 32;
    const Vsp32s a = (x >> 10) & 0x7FFF;
    *exponent = Vsp16s(30 - n);
    *fraction = Vsp16s(((Log2Table[i] << 15) - a * (Log2Table[i] - Log2Table[i + 1])) >> 15);
}

/// 2^(exponent + fraction), fraction in Q15, rounded to an integer and saturated.
VSP_INLINE constexpr Vsp32s ownPow2(Vsp16s exponent, Vsp16s fraction) {
    const int i = (fraction >> 10) & 31;
    const Vsp32s a = (fraction << 5) & 0x7FFF;
    const Vsp32s y = (tabpow[i] << 16) - 2 * (tabpow[i] - tabpow[i + 1]) * a;  // Q30 of 2^fraction, positive
    const int e = 30 - exponent;
    if (e < 0) return kMax32;  // y >= 2^30
    if (e == 0) return y;
    return e > 31 ? 0 : (y >> e) + ((y >> (e - 1)) & 1);
}
static_assert(ownPow2(0, 0) == 1 && ownPow2(14, 0) == 16384 && ownPow2(30, 0) == 0x40000000 && ownPow2(31, 0) == kMax32);
static_assert(ownPow2(-1, 0) == 1 && ownPow2(-2, 32767) == 0);

}  // namespace vsp
