#pragma once

#include "core/level.h"

namespace vsp::VSP_LEVEL {

// The middle one of N values by size (`gmed_n`).
template <int N>
VSP_INLINE Vsp16s medianOf(const Vsp16s* values) {
    static_assert(N % 2 == 1);
    Vsp16s sorted[N];
    for (int i = 0; i < N; i++) {
        int at = i;
        for (; at > 0 && sorted[at - 1] > values[i]; at--) sorted[at] = sorted[at - 1];
        sorted[at] = values[i];
    }
    return sorted[N / 2];
}

}  // namespace vsp::VSP_LEVEL
