// Constant tables of the open-loop pitch search of GSM-AMR.
#pragma once

#include "vspsc/types.h"

namespace vsp {

// Weights of lags at 10.2 kbit/s, Q15, by their distance from a middle lag.
constexpr int kLagWeights = 251, kLagWeightCentre = 123;
extern const Vsp16s corrweight[kLagWeights];

}  // namespace vsp
