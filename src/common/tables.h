// Constant tables of the shared kernels, under the names of the standards' reference tables.
#pragma once

#include "vspsc/types.h"

namespace vsp {

extern const Vsp32s tabsqr[49];    // G.729 tabsqr times 65536
extern const Vsp16s tabsqr_d[48];  // (tabsqr[k] - tabsqr[k+1]) / 32768
extern const Vsp32s wlag[12];      // G.729 lag window of lags 1..12, Q31

}  // namespace vsp
