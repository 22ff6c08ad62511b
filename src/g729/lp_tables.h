// Tables of the LP analysis, mostly under the names of the standard's reference tables.
#pragma once

#include "vspsc/types.h"

namespace vsp {

extern const Vsp16s slope_cos[64];   // slopes of lsfCosine, Q19
extern const Vsp16s gridAnnexA[64];  // cosine from 0 to pi in 50 steps, Q15 (grid of Annex A); zeros behind
extern const Vsp32f grid_32f[61];    // cosine from 0 to pi in 60 and 50 steps
extern const Vsp32f gridAnnexA_32f[51];

constexpr int kHybridWindow = 145;
extern const Vsp16s hw[kHybridWindow];  // window of the past synthesis, Q15, the oldest sample first
extern const Vsp32f hw_32f[kHybridWindow];
extern const Vsp32s lagWindowBackward[30];  // of lags 1..30, Q31 (lag_h_bwd, lag_l_bwd)

}  // namespace vsp
