// The terms (ref * tap + 2^14) >> 15 of a 16-bit echo estimate.
#pragma once

#include "arithmetic/basic_ops.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

// Sums of as many terms cannot leave 32 bits, so they may be taken in any order.
constexpr Vsp32s kMaxUnsaturatedTaps = 65535;

VSP_INLINE Vsp32s echoTerm(Vsp16s ref, Vsp16s tap) { return (ref * tap + 16384) >> 15; }

// Pairs of terms, added, less kPairBias: a term less one has 16 bits even if it is that of -32768 and -32768.
constexpr Vsp32s kPairBias = 2;
template <class V>
VSP_INLINE Wide<V> biasedTermPairs(V ref, V taps) {
    return dot2(add(mulRoundWrap(ref, taps), V::splat(-1)), V::splat(1));
}

}  // namespace vsp::VSP_LEVEL
