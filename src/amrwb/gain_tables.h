// The joint quantisers of the gains, stored by column, so that a search runs over neighbouring entries.
#pragma once

#include "vspsc/types.h"

namespace vsp {

// Pitch gain (Q14) and correction of the predicted code gain (Q11), by rising pitch gain.
template <int N>
struct WideGainTable {
    Vsp16s pitch[N], code[N];
};
extern const WideGainTable<64> qua_gain6b;
extern const WideGainTable<128> qua_gain7b;

}  // namespace vsp
