#pragma once

#include "vspsc/types.h"

namespace vsp {

constexpr int kMaskElements = 32;  // 16-bit elements of the widest register

// kMaskElements zeros and as many elements of all ones: a load at kMaskElements - width + n selects the last n elements.
extern const Vsp16s kLastMask[2 * kMaskElements];

}  // namespace vsp
