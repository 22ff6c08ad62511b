// Constant tables of the shared kernels, under the names of the standards' reference tables.
#pragma once

#include "vspsc/types.h"

namespace vsp {

extern const Vsp32s tabsqr[49];    // G.729 tabsqr times 65536
extern const Vsp16s tabsqr_d[48];  // (tabsqr[k] - tabsqr[k+1]) / 32768
extern const Vsp32s wlag[12];      // G.729 lag window of lags 1..12, Q31

constexpr int kCosineSteps = 64;
extern const Vsp16s lsfCosine[kCosineSteps + 1];  // cosine from 0 to pi, Q15 (table of G.729 Lsp_lsf)
extern const Vsp16s lsfAcosSlope[kCosineSteps];   // slope of its inverse, Q12 (slope)
extern const Vsp16s lspGrid[64];                  // cosine from 0 to pi in 60 steps, Q15 (grid); zeros behind
extern const Vsp16s hammingCosine[240];           // analysis window, Q15: 200 samples rise, 40 fall (hamwindow)

}  // namespace vsp
