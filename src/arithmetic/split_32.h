// Double-precision arithmetic of the ITU-T and 3GPP coders: 32-bit values split into hi = x >> 16 and lo = (x >> 1) &
// 0x7FFF, so that bit 0 of an operand never counts. Every operation saturates where the standards' operators do.
#pragma once

#include "arithmetic/standard_ops.h"

namespace vsp {

// --- Sums that rarely leave 32 bits: as Add_32s and Sub_32s, but the way of the exception is a branch -------------------

VSP_INLINE constexpr Vsp32s addRare_32s(Vsp32s a, Vsp32s b) {
    Vsp32s sum = 0;
    if (__builtin_add_overflow(a, b, &sum)) [[unlikely]]
        return a < 0 ? kMin32 : kMax32;
    return sum;
}
static_assert(addRare_32s(kMax32, 1) == kMax32 && addRare_32s(kMin32, -1) == kMin32 && addRare_32s(-3, 2) == -1);

VSP_INLINE constexpr Vsp32s subRare_32s(Vsp32s a, Vsp32s b) {
    Vsp32s difference = 0;
    if (__builtin_sub_overflow(a, b, &difference)) [[unlikely]]
        return a < 0 ? kMin32 : kMax32;
    return difference;
}
static_assert(subRare_32s(0, kMin32) == kMax32 && subRare_32s(-2, kMax32) == kMin32 && subRare_32s(2, 3) == -1);

// The value without the bit that splitting loses.
VSP_INLINE constexpr Vsp32s splitValue(Vsp32s a) { return a & ~1; }

// 32 x 16 product (Mpy_32_16). Only -1 times -1 saturates, after its high part.
VSP_INLINE constexpr Vsp32s mulSplit_32s16s(Vsp32s a, Vsp16s b) {
    const Vsp32s product = Vsp32s(2 * (((a >> 1) * Vsp64s(b)) >> 15));
    return (a >> 16) == kMin16 && b == kMin16 ? wrapSub_32s(product, 1) : product;
}
static_assert(mulSplit_32s16s(0x10000, 16384) == 0x8000 && mulSplit_32s16s(3, -1) == -2);
static_assert(mulSplit_32s16s(kMin32, kMin16) == kMax32 && mulSplit_32s16s(kMin32 + 5, kMin16) == kMax32 - 4);

// 32 x 32 product (Mpy_32). Only high parts of -1 both saturate, before the low parts count.
VSP_INLINE constexpr Vsp32s mulSplit_32s(Vsp32s a, Vsp32s b) {
    const Vsp32s product = Mpy_32(a, b);
    return (a >> 16) == kMin16 && (b >> 16) == kMin16 ? wrapSub_32s(product, 1) : product;
}
static_assert(mulSplit_32s(0x10000, 0x10000) == 2 && mulSplit_32s(kMin32, kMin32) == kMax32);
static_assert(mulSplit_32s(kMin32 + 2, kMin32) == kMax32 - 2 && mulSplit_32s(0xFFFF, 0xFFFF) == 0);

// num / den in Q31, 0 <= num < den, den 0x40000000 or above (Div_32). Other values give something.
VSP_INLINE constexpr Vsp32s divSplit_32s(Vsp32s num, Vsp32s den) {
    const Vsp16s approximation = Div_16s(0x3FFF, Vsp16s(den >> 16));
    const Vsp32s correction = subRare_32s(kMax32, mulSplit_32s16s(den, approximation));
    return Mul4_32s(mulSplit_32s(num, mulSplit_32s16s(correction, approximation)));
}
static_assert((divSplit_32s(0x20000000, 0x40000000) + 0x40) >> 8 == 0x400000);

}  // namespace vsp
