// Groups of fixed-point sub-bands: the real part in the lower half of a 64-bit element, the imaginary part in the upper.
#pragma once

#include "ec/band_groups.h"
#include "vector/saturating_64.h"

namespace vsp::VSP_LEVEL {

template <class V>
VSP_INLINE V loadBands(const Vsp32sc* p) {
    V a;
    __builtin_memcpy(&a, p, sizeof a);
    return a;
}

template <class V>
VSP_INLINE void storeBands(V a, Vsp32sc* p) {
    __builtin_memcpy(p, &a, sizeof a);
}

// The imaginary parts as lower halves.
template <class V>
VSP_INLINE V imaginary(V bands) {
    return shrU(bands, 32);
}

}  // namespace vsp::VSP_LEVEL
