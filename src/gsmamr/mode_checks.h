#pragma once

#include "gsmamr/modes.h"

namespace vsp {

VSP_INLINE constexpr bool isMode(Vsp32s mode) { return isSpeechMode(mode) || mode == kModeSID; }
VSP_INLINE constexpr bool isSubframe(Vsp32s subframe) { return subframe >= 0 && subframe <= 3; }

}  // namespace vsp
