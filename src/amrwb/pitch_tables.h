// The interpolation filters of the closed-loop pitch search, and the weights of the lags of the open-loop one.
#pragma once

#include "vspsc/types.h"

namespace vsp {

constexpr int kExcitationTaps = 32, kCorrelationTaps = 8;

// Interpolation in Q14, by the fraction of the lag in quarters and in the order of the samples: of the excitation (a
// fraction counts backwards, and reads from one sample earlier on), and of its correlations with the target.
extern const Vsp16s inter4_2[4][kExcitationTaps];
extern const Vsp16s inter4_1[4][kCorrelationTaps];

// While no sample is larger no partial sum of doubled products with the taps of a filter can leave 32 bits.
constexpr int kMaxExactExcitation = 30080;

// Weights of a lag by its distance from another one, and of any lag for itself: of lag 115 the last, of 114 the one before.
extern const Vsp16s wideCorrWeight[199];

}  // namespace vsp
