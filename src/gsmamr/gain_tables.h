// The quantisers of the gains, stored by column, so that a search runs over neighbouring entries.
#pragma once

#include "vspsc/types.h"

namespace vsp {

// Joint quantisers: pitch gain (Q14), correction of the predicted code gain (Q12), and what the predictors are fed with:
// the correction as 20 * log10 (Q10) and as log2 (Q10).
template <int N>
struct GainTable {
    Vsp16s pitch[N], code[N], log2[N], decibels[N];
    Vsp16s largestPitch, largestCode;
};
extern const GainTable<128> gain_highrates;
extern const GainTable<64> gain_lowrates;

// Both subframes of a pair at 4.75 kbit/s: pitch and code of the even one, pitch and code of the odd one.
extern const Vsp16s gain_MR475[4][256];

// The correction alone (Q11), and what the predictors are fed with: log2 and decibels.
extern const Vsp16s qua_gain_code[3][32];

}  // namespace vsp
