// Order and widths of the bits of a frame.
#pragma once

#include "codec/amr/frame.h"

namespace vspv::amr {

extern const Vsp32s kBitRates[kModes];  // bit/s
extern const rfc4867::ModeLayout kLayouts[kModes];
extern const Vsp8u kSilenceWidths[kSilenceParameters];

}  // namespace vspv::amr
