// Sub-bands in groups as wide as a vector; what is left over in narrower ones, and nothing beyond.
#pragma once

#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

// Calls op.operator()<V>(k) for the groups of V::width bands at k that first .. end-1 consist of.
template <class V, class Op>
VSP_INLINE void forBandGroups(Vsp32s first, Vsp32s end, Op op) {
    Vsp32s k = first;
    for (; end - k >= V::width; k += V::width) op.template operator()<V>(k);
    if constexpr (V::width > 1) forBandGroups<Half<V>>(k, end, op);
}

// Whether the taps of so many bands exceed what stays in the caches near the processor.
VSP_INLINE bool isLarge(Vsp32s len, Vsp32s numSubbands) { return len * numSubbands > 0x8000; }

// Asks for what follows a group in its vector, without reading it: the groups go through all vectors before they come to
// the next bands.
VSP_INLINE void prefetchNext(const void* group) {
    constexpr unsigned long kAhead = 128;  // two groups of the widest vectors
    __builtin_prefetch(reinterpret_cast<const void*>(reinterpret_cast<unsigned long>(group) + kAhead), 0, 2);
}
VSP_INLINE void prefetchNext(bool large, const void* src, const void* coef) {
    if (!large) return;
    prefetchNext(src);
    prefetchNext(coef);
}

}  // namespace vsp::VSP_LEVEL
