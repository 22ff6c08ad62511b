// Constants of the adaptive codebook.
#pragma once

#include "common/interpolation_filters.h"

namespace vsp {

constexpr int kSixths = 6;
extern const Vsp16s inter_6_search[25];                      // Q15, of the normalised correlation, 4 taps at each side
extern const FractionFilters<Vsp16s, kSixths> inter_6_taps;  // inter_6_vector, Q15
extern const Vsp16s qua_gain_pitch[16];                      // Q14

}  // namespace vsp
