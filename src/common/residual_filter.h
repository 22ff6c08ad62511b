#pragma once

#include "core/level.h"

namespace vsp::VSP_LEVEL {

constexpr int kMaxLpOrder = 30;

// LP analysis filter A(z): dst[n] = sum over j = 0 .. order of lpc[j] * src[n - j], a doubled sum whose every product and
// partial sum saturates to 32 bits, j ascending; then times 2^(15 - scaleFactor), saturated and rounded to the high half
// (Residu). Reads src[-order .. len-1]; dst is another array. lpc is in Q(scaleFactor), order up to kMaxLpOrder.
void ownResidual(const Vsp16s* src, const Vsp16s* lpc, int order, Vsp16s* dst, Vsp32s len, int scaleFactor);

// Any filter with Q15 taps, at most kMaxLpOrder + 1, that begin with that of the earliest sample: dst[n] = sum over t = 0
// .. taps-1 of c[t] * src[n + t], t ascending, saturated and rounded in the same way. dst is another array.
void ownFir(const Vsp16s* src, const Vsp16s* c, int taps, Vsp16s* dst, Vsp32s len);

}  // namespace vsp::VSP_LEVEL
