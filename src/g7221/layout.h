// How a frame of G.722.1 is divided. 7 kHz has 14 regions of 320 samples, 14 kHz 28 regions of 640.
#pragma once

#include "core/inline.h"
#include "vspsc/types.h"

namespace vsp {

constexpr int kRegion = 20;  // coefficients
constexpr int kRegions = 14, kMaxRegions = 28;
constexpr int kMaxFrameBits = 960, kMaxFrameWords = kMaxFrameBits / 16;

VSP_INLINE constexpr bool hasRegions(Vsp32s regions) { return regions == kRegions || regions == kMaxRegions; }
VSP_INLINE constexpr bool isFrame(Vsp32s bits) { return bits >= 320 && bits <= kMaxFrameBits && bits % 16 == 0; }
VSP_INLINE constexpr int controlBits(Vsp32s regions) { return regions == kRegions ? 4 : 5; }
VSP_INLINE constexpr int controls(Vsp32s regions) { return 1 << controlBits(regions); }
VSP_INLINE constexpr bool isControl(Vsp32s control, Vsp32s regions) { return control >= 0 && control < controls(regions); }

// What is out of the limits takes the nearest one.
VSP_INLINE constexpr int clip(Vsp32s x, int low, int high) { return x < low ? low : x > high ? high : x; }

}  // namespace vsp
