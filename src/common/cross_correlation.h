#pragma once

#include "core/level.h"

namespace vsp::VSP_LEVEL {

// sums[n] = sum of 2 * target[n + i] * impulse[i], i ascending, products and partial sums saturated, for at most kMaxFast
// samples.
void ownCrossCorr_32s(const Vsp16s* target, const Vsp16s* impulse, int len, Vsp32s* sums);

}  // namespace vsp::VSP_LEVEL
