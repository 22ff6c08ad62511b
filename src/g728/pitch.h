#pragma once

#include "g728/block_float.h"

namespace vsp::VSP_LEVEL::g728 {

constexpr int kMinPitch = 20, kMaxPitch = 140;

VSP_INLINE constexpr bool isPitch(Vsp32s lag) { return lag >= kMinPitch && lag <= kMaxPitch; }

}  // namespace vsp::VSP_LEVEL::g728
