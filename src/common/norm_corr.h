// The normalised correlation of the closed-loop pitch searches (G.729 3.7, GSM-AMR 5.6.1).
#pragma once

#include "core/level.h"

namespace vsp::VSP_LEVEL {

constexpr int kL_inter4 = 4;                      // taps at each side of the interpolation of the correlations
constexpr int kMaxNormCorr = 20 + 2 * kL_inter4;  // lags of the longest search range and its margins

// G.729 Norm_Corr: corr[k - t_min] is the correlation of the target with the excitation delayed by k and filtered by the
// impulse response, divided by the square root of the energy of the latter, for k = t_min .. t_max. At most kMaxNormCorr
// lags, t_min 14 or more. Reads excitation[-t_max .. 39 - t_min], all of 40 samples of target and impulse response.
void ownNorm_Corr(const Vsp16s* excitation, const Vsp16s* target, const Vsp16s* impulse, int t_min, int t_max,
                  Vsp16s* corr);

}  // namespace vsp::VSP_LEVEL
