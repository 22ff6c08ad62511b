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
    Vsp32s distances[S32::width], blocks[S32::width];
    best.store(distances);
    block.store(blocks);
    Vsp64s smallest = Vsp64s(distances[0]) << 32 | blocks[0];
    for (int lane = 1; lane < S32::width; lane++) {
        const Vsp64s candidate = Vsp64s(distances[lane]) << 32 | (blocks[lane] + lane);
        smallest = candidate < smallest ? candidate : smallest;
    }
    return int(smallest & 0x7FFFFFFF);
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
