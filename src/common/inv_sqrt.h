#pragma once

#include "arithmetic/basic_ops.h"
#include "common/tables.h"
#include "core/level.h"

namespace vsp::VSP_LEVEL {

// G.729 Inv_sqrt: 1 / sqrt(x) in Q30
VSP_INLINE Vsp32s ownInvSqrt(Vsp32s x) {
    if (x <= 0) return 0x3FFFFFFF;
    const int n = Norm_32s_Pos_I(&x);
    const int e = 32 - n;
    if (e % 2 == 0) x >>= 1;
    const int i = (x >> 25) - 16;
    const Vsp32s a = (x >> 10) & 0x7FFF;
    return (tabsqr[i] - a * tabsqr_d[i]) >> (e >> 1);
}

}  // namespace vsp::VSP_LEVEL
