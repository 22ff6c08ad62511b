// The largest of 32-bit elements and where it is.
#pragma once

#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

VSP_INLINE Vsp32s largest(S32_128 a) {
    const S32_128 pairs = max(a, S32_128{_mm_unpackhi_epi64(a.v, a.v)});
    return _mm_cvtsi128_si32(max(pairs, S32_128{_mm_shuffle_epi32(pairs.v, 1)}).v);
}
VSP_IF_256(VSP_INLINE Vsp32s largest(S32_256 a) {
    return largest(max(S32_128{_mm256_castsi256_si128(a.v)}, S32_128{_mm256_extracti128_si256(a.v, 1)}));
})
VSP_IF_512(VSP_INLINE Vsp32s largest(S32_512 a) {
    return largest(max(S32_256{_mm512_castsi512_si256(a.v)}, S32_256{_mm512_extracti64x4_epi64(a.v, 1)}));
})

// Bit i tells whether a[i] equals b[i].
VSP_INLINE Vsp32u equal(S32_128 a, S32_128 b) {
    return Vsp32u(_mm_movemask_ps(_mm_castsi128_ps(_mm_cmpeq_epi32(a.v, b.v))));
}
VSP_IF_256(VSP_INLINE Vsp32u equal(S32_256 a, S32_256 b) {
    return Vsp32u(_mm256_movemask_ps(_mm256_castsi256_ps(_mm256_cmpeq_epi32(a.v, b.v))));
})
VSP_IF_512(VSP_INLINE Vsp32u equal(S32_512 a, S32_512 b) { return _mm512_cmpeq_epi32_mask(a.v, b.v); })

}  // namespace vsp::VSP_LEVEL
