#pragma once

#include "arithmetic/basic_ops.h"
#include "core/level.h"

namespace vsp {

extern const Vsp16s sqrt_table[49];  // 32768 * sqrt(i / 64), i = 16 .. 64

}  // namespace vsp

namespace vsp::VSP_LEVEL {

// Square root of a 32-bit fraction as value * 2^(-exponent / 2) (`sqrt_l_exp`).
struct SquareRoot {
    Vsp32s value;
    int exponent;
};

VSP_INLINE SquareRoot ownSquareRoot(Vsp32s x) {
    if (x <= 0) return {0, 0};
    const int exponent = norm_32s_Pos(x) & ~1;
    x <<= exponent;
    const int i = (x >> 25) - 16;
    const Vsp32s a = (x >> 10) & 0x7FFF;
    return {sqrt_table[i] * 65536 - 2 * (sqrt_table[i] - sqrt_table[i + 1]) * a, exponent};
}

}  // namespace vsp::VSP_LEVEL
