// The excitation repeated with a lag, from which the adaptive vectors are made (`Get_Rez`).
#pragma once

#include "core/level.h"

namespace vsp::VSP_LEVEL {

constexpr int kPastExcitation = 145, kResidual = 64;

// lag is 17 .. 147; what lies before the past excitation counts as 0.
VSP_INLINE void repeatExcitation(const Vsp16s* past, int lag, Vsp16s* residual) {
    const int first = kPastExcitation - lag;
    for (int i = -2; i < 0; i++) residual[2 + i] = first + i >= 0 ? past[first + i] : Vsp16s(0);
    for (int i = 0, from = first; i < kResidual - 2; i++) {
        residual[2 + i] = from >= 0 ? past[from] : Vsp16s(0);
        from = from + 1 < kPastExcitation ? from + 1 : first;
    }
}

}  // namespace vsp::VSP_LEVEL
