#pragma once

#include "arithmetic/standard_ops.h"
#include "core/level.h"
#include "gsmamr/pitch_tables.h"

namespace vsp::VSP_LEVEL {

// The entry of qua_gain_pitch nearest to a gain, the first of equal ones, among entry 0 and those up to a limit.
VSP_INLINE int ownPitchGainIndex(Vsp16s gain, Vsp16s limit) {
    int index = 0;
    Vsp16s least = Abs_16s(Sub_16s(gain, qua_gain_pitch[0]));
    for (int i = 1; i < 16; i++) {
        const Vsp16s distance = Abs_16s(Sub_16s(gain, qua_gain_pitch[i]));
        if (qua_gain_pitch[i] <= limit && distance < least) {
            least = distance;
            index = i;
        }
    }
    return index;
}

}  // namespace vsp::VSP_LEVEL
