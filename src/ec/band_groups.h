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

}  // namespace vsp::VSP_LEVEL
