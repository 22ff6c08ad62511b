// The quantisers of the gains by bit rates.
#pragma once

#include "gsmamr/gain_terms.h"

namespace vsp::VSP_LEVEL {

// The signals of a subframe, null where a bit rate has no use for them.
struct GainSignals {
    const Vsp16s *residual, *exc, *code, *target, *target2, *y1, *y2, *coeff;
};

// The memory of the quantisers of 4.75 and 7.95 kbit/s.
struct GainMemory {
    Vsp16s* words;

    Vsp16s* unquantisedPred() const { return words; }
    Vsp16s& onset() const { return words[8]; }
    Vsp16s& alpha() const { return words[9]; }
    Vsp16s& codeGain() const { return words[10]; }
    Vsp16s* ltpGains() const { return words + 11; }
    Vsp16s* evenSubframe() const { return words + 16; }
};

// 4.75 kbit/s: the first subframe of a pair leaves what the second one quantises together with its own
// (`MR475_gain_quant`).
void ownPrepareGains475(const GainSignals& signals, Vsp16s* pred, GainMemory mem, Vsp16s* gain);
int ownQuantiseGains475(const GainSignals& signals, Vsp16s limit, Vsp16s* pred, GainMemory mem, Vsp16s* gain,
                        Vsp16s* gainPrev);

// 7.95 kbit/s (`MR795_gain_quant`): two indices.
void ownQuantiseGains795(const GainSignals& signals, Vsp16s limit, Vsp16s* pred, GainMemory mem, Vsp16s* gain,
                         Vsp16s* index);

}  // namespace vsp::VSP_LEVEL
