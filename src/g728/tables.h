// Tables of G.728 Annex G. The first element of a window weighs the newest sample.
#pragma once

#include "vspsc/types.h"

namespace vsp {

extern const Vsp16s kSynthesisWindow[105], kWeightingWindow[60], kLogGainWindow[34];  // Q15

// Powers that the coefficients of a filter are multiplied by, Q14.
extern const Vsp16s kExpandSynthesis[50], kExpandLogGain[10], kExpandWeightingPole[10], kExpandWeightingZero[10],
    kExpandPostFilterPole[10], kExpandPostFilterZero[10], kExpandErasure[50];

extern const Vsp16s kShapes[5][128];            // the shape codebook, Q11, by sample
extern const Vsp16s kGainDB[8], kShapeDB[128];  // logarithms of gains and shapes, Q11
extern const Vsp32u kRandomStart[17];           // where the generator of the concealment begins

// The gain codebook without signs: twice the gain, Q12, and its square, Q11.
constexpr Vsp16s kTwiceGain[4] = {4224, 7392, 12936, 22638}, kSquaredGain[4] = {545, 1668, 5107, 15640};

}  // namespace vsp
