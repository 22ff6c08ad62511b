// The largest magnitude of a 16-bit vector.
#pragma once

#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

// Folds the largest magnitudes so far into the narrower widths and takes in what the rest of the length has.
template <class V>
VSP_INLINE Vsp16u maxMagnitudeRest(V largest, int i, const Vsp16s* src, int len) {
    if constexpr (V::width > 8) {
        using H = Half<V>;
        H folded = foldMaxU(largest);
        if (len & H::width) {
            folded = maxU(folded, magnitude(H::load(src + i)));
            i += H::width;
        }
        return maxMagnitudeRest(folded, i, src, len);
    } else {
        for (; i < len; i++) largest = maxU(largest, magnitude(V::splat(src[i])));
        return largestU(largest);
    }
}

// The largest magnitude of src[0 .. len-1]; that of -32768 is 32768.
VSP_INLINE Vsp16u maxMagnitude(const Vsp16s* src, int len) {
    S16 largest = S16::splat(0);
    const int whole = len & -S16::width;
    for (int i = 0; i < whole; i += S16::width) largest = maxU(largest, magnitude(S16::load(src + i)));
    return maxMagnitudeRest(largest, whole, src, len);
}

}  // namespace vsp::VSP_LEVEL
