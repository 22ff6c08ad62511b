// The correlation scan over lags, for the open-loop pitch searches.
#pragma once

#include "core/level.h"

namespace vsp::VSP_LEVEL {

// sums[i] = correlation of pSrc[0 .. len-1] with the samples lagMax - i earlier, i = 0 .. lagMax - lagMin: doubled
// products, every one and every partial sum saturated.
void ownLagSums(const Vsp16s* pSrc, int len, int lagMin, int lagMax, Vsp32s* sums);

// Index of the largest of n sums; of equal ones the last, which has the shortest lag.
int ownLastMax(const Vsp32s* sums, int n);

}  // namespace vsp::VSP_LEVEL
