// Groups of fixed-point sub-bands: the real part in the lower half of a 64-bit element, the imaginary part in the upper.
#pragma once

#include "ec/band_groups.h"
#include "vector/saturating_64.h"

namespace vsp::VSP_LEVEL {

template <class V>
VSP_INLINE V loadBands(const Vsp32sc* p) {
    return V::load(reinterpret_cast<const Vsp64s*>(p));
}

template <class V>
VSP_INLINE void storeBands(V a, Vsp32sc* p) {
    a.store(reinterpret_cast<Vsp64s*>(p));
}

// The imaginary parts as lower halves.
template <class V>
VSP_INLINE V imaginary(V bands) {
    return shrU(bands, 32);
}

// Whether a lower half is negative.
VSP_INLINE bool anyNegativeMantissa(const Vsp32sc* stepSize, Vsp32s numSubbands) {
    bool any = false;
    forBandGroups<S64>(0, numSubbands,
                       [&]<class V>(Vsp32s k) { any |= anyOf(loadBands<V>(stepSize + k), V::splat(1LL << 31)); });
    return any;
}

}  // namespace vsp::VSP_LEVEL
