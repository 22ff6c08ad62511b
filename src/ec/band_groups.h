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

// Asks for what follows a group in its vector, without reading it. Vectors of thousands of bands do not stay in the
// first-level cache, and the groups go through all vectors before they come to the next bands.
VSP_INLINE void prefetchNext(const void* group) {
    constexpr unsigned long kAhead = 128;  // two groups of the widest vectors
    __builtin_prefetch(reinterpret_cast<const void*>(reinterpret_cast<unsigned long>(group) + kAhead), 0, 2);
}

}  // namespace vsp::VSP_LEVEL
