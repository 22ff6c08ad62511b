// Windows, grids and cosines of the LP analysis of AMR-WB (3GPP TS 26.173), under the reference's names.
#pragma once

#include "vspsc/types.h"

namespace vsp {

extern const Vsp16s window_384[384];  // analysis window, Q15 (window)
extern const Vsp32s lag_16[16];       // lag window of lags 1 .. 16, Q31; bit 0 is 0 (lag_h, lag_l)

constexpr int kIspGridPoints = 101, kIspGridRoom = 128;
extern const Vsp16s ispGrid[kIspGridRoom];  // cosine from 0 to pi in 100 steps, Q15 (grid); zeros behind

constexpr int kIspSteps = 128;
extern const Vsp16s isp_table[kIspSteps + 1];  // cosine from 0 to pi, Q15
extern const Vsp16s isp_slope[kIspSteps];      // slope of its inverse, Q11

}  // namespace vsp
