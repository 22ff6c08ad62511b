// The excitation of a subframe from both codebooks.
#pragma once

#include "vspsc/common.h"

namespace vspv::amr {

// Gains in Q14 and Q1, the code in Q13; at 12.2 kbit/s it is in Q12, and the lowest bit of the pitch gain does not count.
inline void totalExcitation(Vsp32s rateCode, const Vsp16s* vector, const Vsp16s* gain, const Vsp16s* code, Vsp16s* dst) {
    const Vsp32s less = rateCode == 12;
    vspsInterpolateC_NR_G729_16s_Sfs(vector, Vsp16s(gain[0] >> less), code, gain[1], dst, 40, 14 - less);
}

}  // namespace vspv::amr
