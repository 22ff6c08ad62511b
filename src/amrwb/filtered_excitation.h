#pragma once

#include "core/level.h"

namespace vsp::VSP_LEVEL {

// y[n] = the sum of x[i] * h[n - i], i = 0 .. n, for a subframe: doubled products, every partial sum saturated, rounded to
// the high half (`Convolve`).
void ownFilterExcitation(const Vsp16s* x, const Vsp16s* h, Vsp16s* y);

}  // namespace vsp::VSP_LEVEL
