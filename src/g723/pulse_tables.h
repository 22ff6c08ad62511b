// The numbering of pulse positions of the 6.3 kbit/s code.
#pragma once

#include "vspsc/types.h"

namespace vsp::g723 {

constexpr int kGridPlaces = 30, kMostPulses = 6;

// How many ways there are to put the pulses that are left after j on the places behind i: C(29 - i, 5 - j).
extern const Vsp32s combinations[kMostPulses][kGridPlaces];

constexpr int pulsesOf(Vsp32s subframe) { return subframe % 2 == 0 ? 6 : 5; }
constexpr Vsp32s positionsOf(Vsp32s subframe) { return subframe % 2 == 0 ? 593775 : 142506; }  // C(30, 6), C(30, 5)

}  // namespace vsp::g723
