// A multiple of the base-2 logarithm, as the gain predictor and the voice activity detector of G.729 form it.
#pragma once

#include "arithmetic/standard_ops.h"

namespace vsp {

/// log2(x) * factor / 2^14 from the split value of Log2 (Log2, Mpy_32_16).
VSP_INLINE constexpr Vsp32s scaledLog2(Vsp32s x, Vsp16s factor) {
    Vsp16s exponent = 0, fraction = 0;
    ownLog2(x, &exponent, &fraction);
    return mac_32s(Mul2_16s32s(exponent, factor), Mul_16s(fraction, factor), 1);
}
static_assert(scaledLog2(1 << 20, 9864) == 20 * 2 * 9864);

}  // namespace vsp
