// Order and widths of the bits of a frame.
#pragma once

#include "codec/amr/frame.h"

namespace vspv::amr {

struct ModeLayout {
    Vsp32s bits, parameters, firstSubframe;  // of a frame; parameters up to the first subframe's last
    const Vsp8u* widths;                     // bits of each parameter
    const Vsp8u* order;                      // bit k that is sent is this one
    const Vsp16s* homing;                    // parameters of the decoder homing frame
};

extern const ModeLayout kLayouts[kModes];
extern const Vsp8u kSilenceWidths[kSilenceParameters];

}  // namespace vspv::amr
