// The bit rates of GSM-AMR as the functions' arguments have them.
#pragma once

#include "core/inline.h"
#include "vspsc/types.h"

namespace vsp {

constexpr Vsp32s kMode475 = 0, kMode515 = 1, kMode590 = 3, kMode670 = 6, kMode740 = 7, kMode795 = 8, kMode102 = 11,
                 kMode122 = 12;
constexpr Vsp32s kModeSID = 25;  // silence descriptors

VSP_INLINE constexpr bool isSpeechMode(Vsp32s mode) {
    constexpr Vsp32u kModes = 1 << kMode475 | 1 << kMode515 | 1 << kMode590 | 1 << kMode670 | 1 << kMode740 |
                              1 << kMode795 | 1 << kMode102 | 1 << kMode122;
    return mode >= 0 && mode <= kMode122 && (kModes >> mode & 1) != 0;
}

}  // namespace vsp
