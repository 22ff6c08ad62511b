#pragma once

#include "arithmetic/standard_ops.h"
#include "common/lengths.h"
#include "core/level.h"

namespace vsp::VSP_LEVEL {

// Adds the pitch of a code or an impulse response: x[i] += x[i - lag] * sharp, sharp in Q14, i ascending.
VSP_INLINE void ownSharpen(Vsp16s* x, int lag, Vsp16s sharp) {
    const Vsp16s factor = shl_16s(sharp, 1);
    for (int i = lag; i < kL_subfr; i++) x[i] = Add_16s(x[i], Mul_16s(x[i - lag], factor));
}

}  // namespace vsp::VSP_LEVEL
