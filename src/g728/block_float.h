// The block floating point of G.728 Annex G: a vector with scale q stands for its elements times 2^-q. Sums and products
// are exact in 64 bits; what clips is said.
#pragma once

#include "arithmetic/standard_ops.h"

namespace vsp::VSP_LEVEL::g728 {

constexpr int kVector = 5;  // samples that are coded together

// The high half of a 32-bit value, rounded; the largest one stays.
VSP_INLINE constexpr Vsp64s roundHigh(Vsp64s x) {
    const Vsp64s high = x >> 16;
    return high + ((x >> 15 & 1) != 0 && high != kMax16 ? 1 : 0);
}
static_assert(roundHigh(0x7FFF8000) == kMax16 && roundHigh(0x18000) == 2 && roundHigh(-0x8000) == 0);

VSP_INLINE constexpr Vsp16s sat16(Vsp64s x) { return x > kMax16 ? kMax16 : x < kMin16 ? kMin16 : Vsp16s(x); }

// The high half of 4 x in 32 bits, rounded, where all clips: 16 bits of a sum of products in Q14.
VSP_INLINE constexpr Vsp16s roundQ14(Vsp64s x) { return sat16((x + 0x2000) >> 14); }
static_assert(roundQ14(0x1FFFFFFF) == kMax16 && roundQ14(-0x20000001) == kMin16 && roundQ14(-0x2000) == 0);

// Right shift that rounds down; counts above the width give 0 or -1.
VSP_INLINE constexpr Vsp64s shiftRight(Vsp64s x, Vsp64s n) { return x >> (n < 63 ? n : 63); }

// Times 2^n for n of either sign, clipped to 32 bits.
VSP_INLINE constexpr Vsp32s shift_32s(Vsp64s x, Vsp64s n) {
    if (n <= 0) return Cnvrt_64s32s(shiftRight(x, -n));
    x = x > kMax32 ? kMax32 : x < kMin32 ? kMin32 : x;
    return Cnvrt_64s32s(x * (1LL << (n < 32 ? n : 32)));
}

// The same clipped to 16 bits.
VSP_INLINE constexpr Vsp16s shift_16s(Vsp64s x, Vsp64s n) { return sat16(shift_32s(x, n)); }
static_assert(shift_16s(1, 15) == kMax16 && shift_16s(-3, -1) == -2 && shift_16s(-1, 99) == kMin16);

// Left shifts that bring x to the size of a number of so many bits, negative for right shifts; bits - 1 for 0.
VSP_INLINE constexpr int norm(Vsp64s x, int bits) {
    const Vsp64u magnitude = Vsp64u(x < 0 ? ~x : x);
    return bits - 1 - (magnitude == 0 ? 0 : 64 - __builtin_clzll(magnitude));
}
static_assert(norm(0, 16) == 15 && norm(1, 16) == 14 && norm(-16384, 16) == 1 && norm(32768, 16) == -1);

// A number as a normalised 16-bit mantissa, rounded, and its scale.
struct Float16 {
    Vsp16s mantissa;
    int scale;
};

VSP_INLINE constexpr Vsp64s shiftExact(Vsp64s x, int n) { return n < 0 ? x >> -n : Vsp64s(Vsp64u(x) << n); }

VSP_INLINE constexpr Float16 normalised(Vsp64s x) {
    const int n = norm(x, 32);
    return {Vsp16s(roundHigh(shiftExact(x, n))), n};
}

// Brings the extreme element to the size of a number of so many bits; returns the shifts.
VSP_INLINE int normalise(Vsp16s* x, int len, int bits) {
    int used = 0;  // bits, by any element
    for (int i = 0; i < len; i++) used |= x[i] ^ (x[i] >> 15);
    const int n = norm(used, bits);
    if (n < 0)
        for (int i = 0; i < len; i++) x[i] = Vsp16s(x[i] >> -n);
    else
        for (int i = 0; i < len; i++) x[i] = Vsp16s(x[i] * (1 << n));
    return n;
}

// The quotient of two numbers by its bits, where they are not normalised.
constexpr int quotientBits(int n, int d) {
    int r = 0;
    for (int i = 0; i < 15; i++) {
        r *= 2;
        if (n > d) r++, n -= d;
        n = n < 0x10000 ? 2 * n : 0x20000;
    }
    return n > d ? r + 1 : r;
}

// Quotient of two numbers, with 15 bits and a last one that rounds; bits are set where the rest is larger than the divisor.
VSP_INLINE constexpr Float16 divide(Vsp16s num, int numScale, Vsp16s den, int denScale) {
    int n = num < 0 ? -num : num, q = numScale - denScale + 14;
    const int d = den < 0 ? -den : den;
    if (n < d) n *= 2, q++;
    if (num == 0) return {Vsp16s(0), q};
    int r = 0;
    if (n <= 2 * d) {
        const Vsp32u dividend = Vsp32u(n) << 14;
        r = int((dividend - 1) / Vsp32u(d));
        if (2 * (dividend - Vsp32u(r) * Vsp32u(d)) > Vsp32u(d)) r++;
    } else {
        r = quotientBits(n, d);
    }
    return {sat16((num < 0) != (den < 0) ? -r : r), q};
}
static_assert(divide(16384, 14, 16384, 14).mantissa == 16384 && divide(16384, 14, 16384, 14).scale == 14);
static_assert(divide(-16384, 0, 24576, 0).mantissa == -21845 && divide(-16384, 0, 24576, 0).scale == 15);

}  // namespace vsp::VSP_LEVEL::g728
