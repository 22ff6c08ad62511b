// Constant tables of G.726.
#pragma once

#include "vspsc/types.h"

namespace vsp {

// What a code of some magnitude stands for.
struct G726Level {
    Vsp16s logMagnitude;  // of the difference signal over the scale factor, Q7 base 2: DQLN
    Vsp16s scale;         // what it adapts the scale factor to: W(I), Q4
    Vsp16s speed;         // how unsteady it is: F(I)
    Vsp16s unused;
};

constexpr int kG726LowestLog = -2048;  // of a normalised log-magnitude, which has 12 bits

struct G726Quantiser {
    G726Level levels[16];   // by magnitude
    Vsp8u magnitude[4096];  // by the normalised log-magnitude of the difference signal less kG726LowestLog
};

extern const G726Quantiser g726Quantisers[4];  // of codes of 2, 3, 4 and 5 bits

}  // namespace vsp
