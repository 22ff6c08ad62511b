// Constants under the names of the standard's reference tables; inter_3 and inter_3l are interpolation filters at a third
// of a sample.
#pragma once

#include "vspsc/types.h"

namespace vsp {

extern const Vsp16s inter_3[13];  // Q15, of the normalised correlation, 4 taps at each side

constexpr int kL_inter10 = 10;  // taps of inter_3l at each side
constexpr int kTaps = 2 * kL_inter10;

// inter_3l as one FIR filter per fraction, its taps in the order of the samples: from 9 before the middle on.
template <class T>
struct ThirdFilters {
    T taps[3][kTaps];
};
extern const ThirdFilters<Vsp16s> inter_3l_taps;      // Q15
extern const ThirdFilters<Vsp32f> inter_3l_32f_taps;  // the same as floats

// Positions of the two pulses of Annex D by their places.
extern const Vsp8u trackTable0[16], trackTable1[32];

// While no sample is larger no partial sum of doubled products with the taps of a filter can leave 32 bits.
constexpr int kMaxExactSample = 18000;

}  // namespace vsp
