#pragma once

#include "vspsc/types.h"

namespace vsp {

constexpr Vsp32s kMaxSubbands = 4097;  // of a transform of 8192
constexpr Vsp32s kMaxSubbandTaps = 255;
constexpr Vsp32s kMaxSubbandScale = 31;

}  // namespace vsp
