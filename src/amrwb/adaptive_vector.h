// The adaptive-codebook vector of AMR-WB (3GPP TS 26.190, 5.7).
#pragma once

#include "amrwb/lengths.h"
#include "arithmetic/basic_ops.h"
#include "core/level.h"

namespace vsp::VSP_LEVEL {

constexpr int kShortestLag = 34, kLongestLag = 231;

// Writes exc[0 .. 64] from the excitation a lag, of 34 or more, and a fraction in quarters earlier (`Pred_lt4`). Reads from
// exc[-lag - 16] on.
void ownAdaptiveVector(int lag, int fraction, Vsp16s* exc);

// dst[n] = 0.18 * exc[n - 1] + 0.64 * exc[n] + 0.18 * exc[n + 1], rounded, for a subframe.
VSP_INLINE void lowPass(const Vsp16s* exc, Vsp16s* dst) {
    for (int n = 0; n < kWideSubframe; n++)
        dst[n] = sat_16s((5898 * (exc[n - 1] + exc[n + 1]) + 20972 * exc[n] + 0x4000) >> 15);
}

}  // namespace vsp::VSP_LEVEL
