// Taps of the filters of AMR-WB (3GPP TS 26.173), under the reference's names.
#pragma once

#include "vspsc/types.h"

namespace vsp {

// Resampling, Q14: the filters of the phases, the earliest sample first, filled up with zeros. A phase is how far an output
// lies behind an input.
constexpr int kDownTaps = 30, kUpTaps = 24, kPhaseTaps = 32;
extern const Vsp16s fir_down[4][kPhaseTaps];                 // to 12.8 kHz; phases of a quarter
extern const Vsp16s fir_up[5][kPhaseTaps];                   // to 16 kHz; of a fifth
constexpr int kDownMagnitude = 30851, kUpMagnitude = 37140;  // sum of the magnitudes of a phase, at most

constexpr int kBandTaps = 31;
extern const Vsp16s fir_6k_7k[kBandTaps];  // band pass of the high band, four times Q15
extern const Vsp16s fir_7k[kBandTaps];     // low pass, Q15

}  // namespace vsp
