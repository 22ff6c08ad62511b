// Applies an operation on vectors to whole arrays of any length. The operation is a generic lambda: it gets vectors of any
// width of the level. The destination may be a source, and nothing outside the arrays is touched.
#pragma once

#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

// What the widest vectors leave goes through one vector of each narrower width that the rest of the length has, and then
// one by one. So an array is read and written in the same pieces every time, and a call finds what the one before it
// stored; with masked or overlapping last vectors it would wait for those stores.
template <class V, class Op, class... Sources>
VSP_INLINE void mapRest(int i, int len, Op op, Vsp16s* dst, Sources... src) {
    if constexpr (V::width > 8) {
        using H = Half<V>;
        if (len & H::width) {
            op(H::load(src + i)...).store(dst + i);
            i += H::width;
        }
        mapRest<H>(i, len, op, dst, src...);
    } else {
        for (; i < len; i++) dst[i] = first(op(V::splat(src[i])...));
    }
}

// dst[i] = op(src[i]...)
template <class Op, class... Sources>
VSP_INLINE void map(int len, Op op, Vsp16s* dst, Sources... src) {
    const int whole = len & -S16::width;
    for (int i = 0; i < whole; i += S16::width) op(S16::load(src + i)...).store(dst + i);
    mapRest<S16>(whole, len, op, dst, src...);
}

}  // namespace vsp::VSP_LEVEL
