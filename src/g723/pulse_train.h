// Pulses that repeat with the pitch within a subframe.
#pragma once

#include "vector/map.h"

namespace vsp::VSP_LEVEL {

// repeated[n] = x[n] + x[n - lag] + x[n - 2 * lag] + ..., saturated in this order; of a subframe (`Gen_Trn`).
VSP_INLINE void repeatPulses(const Vsp16s* x, int lag, Vsp16s* repeated) {
    constexpr int kLen = 60;
    for (int n = 0; n < kLen; n++) repeated[n] = x[n];
    for (int start = lag; start < kLen; start += lag)
        map(
            kLen - start, [](auto a, auto b) { return addSat(a, b); }, repeated + start, repeated + start, x);
}

}  // namespace vsp::VSP_LEVEL
