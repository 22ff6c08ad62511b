// The LSF quantiser: 32767 stands for 4000 Hz.
#pragma once

#include "vspsc/types.h"

namespace vsp::g723 {

constexpr int kLsfEntries = 256;
extern const Vsp16s lsfMean[10];
extern const Vsp16s lsfCodebook[10][kLsfEntries];  // by elements of the vector: bands of 3, 3 and 4 of them

}  // namespace vsp::g723
