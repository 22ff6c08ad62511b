// The gains of a subframe from the codebooks and the predicted fixed-codebook gain (G.729 3.9.1 and 3.9.3).
#pragma once

#include "core/level.h"
#include "g729/gain_tables.h"

namespace vsp::VSP_LEVEL {

struct PredictedGain {
    Vsp16s mantissa;  // 16384 .. 32767
    int exponent;     // number of its fraction bits
};

// Gain_predict
PredictedGain ownPredictGain(const Vsp16s* code, const Vsp16s* pastEnergy);

// The pair of gains of two entries; moves the memory of the predictor on (Gain_update).
void ownGainsOfEntries(const GainCodebooks& t, int entry1, int entry2, PredictedGain predicted, Vsp16s* pastEnergy,
                       Vsp16s* gain);

}  // namespace vsp::VSP_LEVEL
