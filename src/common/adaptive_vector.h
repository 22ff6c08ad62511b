// The adaptive-codebook vector: the past excitation between its samples (G.729 3.7.1, GSM-AMR 5.6.1).
#pragma once

#include "common/interpolation_filters.h"
#include "core/level.h"

namespace vsp::VSP_LEVEL {

constexpr int kExcitationHistory = 154;  // samples of an excitation buffer before the current subframe
// Writes excitation[0 .. 39]: excitation[n] = the sum of taps[i] * excitation[n - delay - 9 + i] in Q15, the doubled
// products added from the middle outwards with saturation. What is written is read again by a short delay, of 17 or more.
void ownInterpolateExcitation(const Vsp16s* taps, Vsp16s* excitation, int delay);

}  // namespace vsp::VSP_LEVEL
