// Windows of the LP analysis and factors of the weighting filters (3GPP TS 26.090), under the reference's names.
#pragma once

#include "vspsc/types.h"

namespace vsp {

// Analysis windows of 12.2 kbit/s, Q15: 160 samples rise and 80 fall; 232 and 8. The other rates have G.729's.
extern const Vsp16s window_160_80[240];
extern const Vsp16s window_232_8[240];

// Powers 1 .. 10 of the factors 0.94, 0.9 (10.2 and 12.2 kbit/s) and 0.6, Q15.
extern const Vsp16s gamma1[10], gamma1_12k2[10], gamma2[10];

}  // namespace vsp
