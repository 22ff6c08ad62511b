// Constant tables of GSM full rate.
#pragma once

#include "vspsc/types.h"

namespace vsp {

// Quantisation of the log-area ratios (tables 5.1 and 5.2).
struct LarQuantiser {
    Vsp16s a, b, minimum, maximum, inverseA;
};
extern const LarQuantiser larQuantisers[8];

extern const Vsp16s DLB[3];    // decision levels of the long-term gain
extern const Vsp16s QLB[4];    // long-term gains, Q15
extern const Vsp16s H[11];     // weighting filter, Q13
extern const Vsp16s NRFAC[8];  // inverse mantissas of the pulses' maximum
extern const Vsp16s FAC[8];    // mantissas

}  // namespace vsp
