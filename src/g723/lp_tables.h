// Windows of the LP analysis, the cosine, and factors of filter coefficients.
#pragma once

#include "vspsc/types.h"

namespace vsp::g723 {

extern const Vsp16s analysisWindow[180];  // Hamming, Q15
extern const Vsp16s lagWindow[10];        // of lags 1 .. 10, Q15
extern const Vsp16s cosine[512];          // one period, Q14

// Powers 1 .. 10 of a factor, Q15: 0.994 for the conversion to LSF; 0.9 and 0.5 of the weighting filter; 0.65 and 0.75 of
// the post-filter.
extern const Vsp16s rootBroadening[10], weightZeros[10], weightPoles[10], postFilterZeros[10], postFilterPoles[10];

}  // namespace vsp::g723
