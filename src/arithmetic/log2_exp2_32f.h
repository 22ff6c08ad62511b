// Logarithm and power to the base 2 in single precision, for loops over arrays: no branches, so that the compiler
// vectorises them, and the same bits at every level. The errors are below 1e-6 (of the logarithm) and 3e-7 (relative).
#pragma once

#include "core/inline.h"
#include "vspsc/types.h"

namespace vsp {

// x is positive and normal.
VSP_INLINE Vsp32f log2Near_32f(Vsp32f x) {
    const Vsp32s bits = __builtin_bit_cast(Vsp32s, x);
    const Vsp32s exponent = (bits - 0x3F3504F3) >> 23;  // so that the rest is between the square roots of 1/2 and of 2
    const Vsp32f t = __builtin_bit_cast(Vsp32f, bits - exponent * (1 << 23)) - 1;
    Vsp32f y = 0.16374602f;
    y = y * t - 0.26805255f;
    y = y * t + 0.29755079f;
    y = y * t - 0.35949732f;
    y = y * t + 0.48048038f;
    y = y * t - 0.72136166f;
    y = y * t + 1.4426996f;
    return Vsp32f(exponent) + y * t;
}

// At least 2^-126; x at most 126.
VSP_INLINE Vsp32f exp2Near_32f(Vsp32f x) {
    constexpr Vsp32f kRounder = 12582912;  // 1.5 * 2^23: the lowest bits of the sum are the nearest integer
    const Vsp32f z = x > -126 ? x : -126, sum = z + kRounder, t = z - (sum - kRounder);
    const Vsp32s n = __builtin_bit_cast(Vsp32s, sum) - __builtin_bit_cast(Vsp32s, kRounder);
    Vsp32f y = 0.0013260851f;
    y = y * t + 0.009670227f;
    y = y * t + 0.055507128f;
    y = y * t + 0.24022223f;
    y = y * t + 0.693147f;
    y = y * t + 1.00000005f;
    return y * __builtin_bit_cast(Vsp32f, (n + 127) * (1 << 23));
}

}  // namespace vsp
