#pragma once

#include "arithmetic/basic_ops.h"

namespace vsp {

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
