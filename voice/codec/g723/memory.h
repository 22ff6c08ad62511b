// What encoder and decoder of G.723.1 have in common.
#pragma once

#include "codec/g723/frame.h"
#include "samples.h"
#include "vspsc/g723.h"

namespace vspv::g723 {

constexpr Vsp16s kMeanLsf[kOrder] = {3131, 4721, 7690, 10806, 13872, 16495, 19752, 22260, 25484, 27718};
constexpr Vsp16s kNoiseSeed = 12345;

// The filters of the four subframes on the way from the LSFs of the frame before to those of this one, which take their
// place.
inline void interpolateFilters(Vsp16s* lsf, const Vsp16s* newLsf, Vsp16s* lpc) {
    Vsp16s interpolated[kSubframes * kOrder];
    vspsLSFInterpolate_G723_16s(lsf, newLsf, interpolated);
    for (Vsp32s i = 0; i < kSubframes * kOrder; i += kOrder) vspsLSFToLPC_G723_16s(interpolated + i, lpc + i);
    copy(newLsf, lsf, kOrder);
}

}  // namespace vspv::g723
