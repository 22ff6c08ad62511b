// The level of a signal in one band.
#pragma once

#include "arithmetic/basic_ops.h"
#include "core/level.h"

namespace vsp::VSP_LEVEL {

// The sum of the doubled magnitudes of a band from the end of the previous frame (which subLevel has), the frame and its
// end, scaled by 2^(scale - 16). What the end adds goes into subLevel for the next frame. frame and end are sums of
// magnitudes.
VSP_INLINE Vsp16s ownSignalLevel_GSMAMR_16s(Vsp32s frame, Vsp32s end, int scale, Vsp16s* subLevel) {
    const auto scaled = [scale](Vsp32s sum) { return Vsp16s(Cnvrt_64s32s(Vsp64s(sum) << scale) >> 16); };
    const Vsp32s previous = *subLevel << (16 - scale);
    *subLevel = scaled(2 * end);
    return scaled(2 * (end + frame) + previous);
}

}  // namespace vsp::VSP_LEVEL
