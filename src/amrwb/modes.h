// The bit rates of AMR-WB as the functions' arguments have them.
#pragma once

#include "core/inline.h"
#include "vspsc/types.h"

namespace vsp {

constexpr Vsp32s kMode660 = 5, kMode885 = 9, kMode1265 = 13, kMode1425 = 15, kMode1585 = 16, kMode1825 = 18, kMode1985 = 19,
                 kMode2305 = 20, kMode2385 = 21;
constexpr Vsp32s kModeDtx = 25;  // frames that describe noise

// The place of a rate among the nine, or -1.
VSP_INLINE constexpr int wideModeIndex(Vsp32s mode) {
    switch (mode) {
        case kMode660: return 0;
        case kMode885: return 1;
        case kMode1265: return 2;
        case kMode1425: return 3;
        case kMode1585: return 4;
        case kMode1825: return 5;
        case kMode1985: return 6;
        case kMode2305: return 7;
        case kMode2385: return 8;
        default: return -1;
    }
}

VSP_INLINE constexpr bool isWideMode(Vsp32s mode) { return wideModeIndex(mode) >= 0; }

// Those with short lags and gains, and without a choice of the filter of the adaptive codebook.
VSP_INLINE constexpr bool isLowWideMode(Vsp32s mode) { return mode == kMode660 || mode == kMode885; }

}  // namespace vsp
