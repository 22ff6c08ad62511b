// The nearest entry of a codebook, found among all entries side by side.
#pragma once

#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

// The first of the entries with the smallest distance, which is below 2^31 and not negative. distanceOf(i) gives the
// distances of entries i and following, as many as an S32 holds.
template <class Distance>
VSP_INLINE int firstSmallest(int entries, Distance distanceOf) {
    S32 best = distanceOf(0), block = S32::splat(0);
    for (int i = S32::width; i < entries; i += S32::width) {
        const S32 distance = distanceOf(i);
        const S32 smaller = shr(sub(distance, best), 31);
        block = max(block, S32{smaller.v & S32::splat(i).v});
        best = min(best, distance);
    }
    static constexpr Vsp32s kLanes[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    const S32 above = sub(best, S32::splat(smallestU(best)));
    const S32 notSmallest = shr(sub(S32::splat(0), above), 31);
    return smallestU(S32{add(block, S32::load(kLanes)).v | notSmallest.v});
}

// Sums of products of 16-bit values that saturate as the doubled sums of the standards do: from here on a doubled sum is
// 2^31 - 1.
constexpr Vsp32s kSaturatedSum = 1 << 30;

// Adds the sums of dot2, which are not negative (-32768 * -32768 * 2 being an unsigned value), to a sum that is not above
// kSaturatedSum.
template <class V>
VSP_INLINE V addLimited(V sum, V products) {
    return minU(add(sum, products), V::splat(kSaturatedSum));
}

}  // namespace vsp::VSP_LEVEL
