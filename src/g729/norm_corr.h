// The normalised correlation of the closed-loop pitch search and its interpolation (G.729 3.7).
#pragma once

#include "core/level.h"

namespace vsp::VSP_LEVEL {

constexpr int kL_inter4 = 4;                      // taps of inter_3 at each side
constexpr int kMaxNormCorr = 10 + 2 * kL_inter4;  // lags of the longest search range and its margins

// G.729 Norm_Corr: corr[k - t_min] is the correlation of the target with the excitation delayed by k and filtered by the
// impulse response, divided by the square root of the energy of the latter, for k = t_min .. t_max. At most kMaxNormCorr
// lags, t_min 16 or more. Reads excitation[-t_max .. 39 - t_min], all of 40 samples of target and impulse response.
void ownNorm_Corr(const Vsp16s* excitation, const Vsp16s* target, const Vsp16s* impulse, int t_min, int t_max,
                  Vsp16s* corr);

// G.729 Interpol_3: the correlation at corr + fraction / 3, fraction -2 .. 2. Reads corr[-4 .. 4].
Vsp32s ownInterpol_3(const Vsp16s* corr, int fraction);

}  // namespace vsp::VSP_LEVEL
