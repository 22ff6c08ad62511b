// What the signs of vectors tell, and sums and choices made by them.
#pragma once

#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

// The saturated sum of 32-bit elements.
template <class V32>
VSP_INLINE V32 addSat32(V32 a, V32 b) {
    const V32 sum = add(a, b), limit{shr(a, 31).v ^ V32::splat(0x7FFFFFFF).v};
    const auto outside = shr(V32{~(a.v ^ b.v) & (a.v ^ sum.v)}, 31).v;
    return {(sum.v & ~outside) | (limit.v & outside)};
}

// Bit i tells whether a[i] and b[i] are both positive or both negative.
VSP_INLINE Vsp32u sameSign(S16_128 a, S16_128 b) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i same = _mm_or_si128(_mm_cmpgt_epi16(min(a, b).v, zero), _mm_cmpgt_epi16(zero, max(a, b).v));
    return Vsp32u(_mm_movemask_epi8(_mm_packs_epi16(same, zero)));
}

VSP_INLINE bool anyNegative(S32_128 a) { return _mm_movemask_ps(_mm_castsi128_ps(a.v)) != 0; }
VSP_IF_256(VSP_INLINE bool anyNegative(S32_256 a) { return _mm256_movemask_ps(_mm256_castsi256_ps(a.v)) != 0; })
VSP_IF_512(VSP_INLINE bool anyNegative(S32_512 a) { return _mm512_movepi32_mask(a.v) != 0; })

// The elements of b where a bit of kMask is set, else those of a.
template <int kMask>
VSP_INLINE S16_128 blend(S16_128 a, S16_128 b) {
    return {_mm_blend_epi16(a.v, b.v, kMask)};
}
VSP_IF_256(VSP_INLINE S16_256 joined(S16_128 lo, S16_128 hi) { return {_mm256_set_m128i(hi.v, lo.v)}; })

}  // namespace vsp::VSP_LEVEL
