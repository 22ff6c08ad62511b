// Applies an operation on vectors to whole arrays of any length. The operation is a generic lambda: it gets vectors of one
// of the widths of the level. The destination may be a source, and nothing outside the arrays is touched.
#pragma once

#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

// dst[i] = op(src[i]...), one vector or more. The last vector overlaps the one before; it is computed before anything is
// stored.
template <class V, class Op, class... Sources>
VSP_INLINE void mapWhole(int len, Op op, Vsp16s* dst, Sources... src) {
    const int tail = len - V::width;
    const V last = op(V::load(src + tail)...);
    for (int i = 0; i < tail; i += V::width) op(V::load(src + i)...).store(dst + i);
    last.store(dst + tail);
}

template <class V = S16, class Op, class... Sources>
VSP_INLINE void map(int len, Op op, Vsp16s* dst, Sources... src) {
    if (len >= V::width) return mapWhole<V>(len, op, dst, src...);
    if constexpr (V::width > 8) {
        map<Half<V>>(len, op, dst, src...);
    } else {
        const auto padded = [len](const Vsp16s* p) {
            alignas(16) Vsp16s elements[8] = {};
            for (int i = 0; i < len; i++) elements[i] = p[i];
            return V::load(elements);
        };
        alignas(16) Vsp16s result[8];
        op(padded(src)...).store(result);
        for (int i = 0; i < len; i++) dst[i] = result[i];
    }
}

}  // namespace vsp::VSP_LEVEL
