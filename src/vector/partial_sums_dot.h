// The dot product in floating point whose order is ours.
#pragma once

#include "core/inline.h"
#include "vspsc/types.h"

namespace vsp {

// Partial sums, each of every kSums-th product, added in a fixed tree, so that every level gives the same bits.
template <int kSums>
VSP_INLINE Vsp32f partialSumsDot(const Vsp32f* a, const Vsp32f* b, int len) {
    Vsp32f sums[kSums] = {};
    int n = 0;
    for (; len - n >= kSums; n += kSums)
        for (int i = 0; i < kSums; i++) sums[i] += a[n + i] * b[n + i];
    for (int i = 0; n + i < len; i++) sums[i] += a[n + i] * b[n + i];
    for (int half = kSums / 2; half > 0; half /= 2)
        for (int i = 0; i < half; i++) sums[i] += sums[i + half];
    return sums[0];
}

}  // namespace vsp
