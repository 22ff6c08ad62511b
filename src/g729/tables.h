// Constants under the names of the standard's reference tables; inter_3 and inter_3l are interpolation filters at a third
// of a sample.
#pragma once

#include "common/interpolation_filters.h"

namespace vsp {

extern const Vsp16s inter_3[13];  // Q15, of the normalised correlation, 4 taps at each side

// inter_3l as one filter per fraction, its taps from 9 samples before the middle on.
template <class T>
using ThirdFilters = FractionFilters<T, 3>;
extern const ThirdFilters<Vsp16s> inter_3l_taps;      // Q15
extern const ThirdFilters<Vsp32f> inter_3l_32f_taps;  // the same as floats

// Interpolation filters of the long-term post-filter at eighths of a sample, 1/8 .. 7/8, Q15.
extern const Vsp16s tab_hup_s[7][4], tab_hup_l[7][16];
extern const Vsp32f tab_hup_s_32f[7][4], tab_hup_l_32f[7][16];

// Responses of the phase dispersion by its strength, strong, medium and none, each twice (ph_imp_low, ph_imp_mid), Q15.
struct PhaseResponses {
    Vsp16s ofStrength[3][80];
};
extern const PhaseResponses phaseResponses;

// Positions of the two pulses of Annex D by their places.
extern const Vsp8u trackTable0[16], trackTable1[32];

}  // namespace vsp
