// The adaptive-codebook vector (G.729 3.7.1).
#pragma once

#include "common/adaptive_vector.h"

namespace vsp::VSP_LEVEL {

// G.729 Pred_lt_3: writes excitation[0 .. 39], the past excitation delayed by lag + fraction / 3.
void ownPred_lt_3(Vsp16s* excitation, int lag, int fraction);

}  // namespace vsp::VSP_LEVEL
