// Sixteen 16-bit values, and sixteen 32-bit ones: what the sixteen places of a pulse track need at every level.
#pragma once

#include "vector/eight_32s.h"

namespace vsp::VSP_LEVEL {

#if defined(__AVX2__)
using Sixteen16s = S16_256;
VSP_INLINE Sixteen16s select(Sixteen16s which, Sixteen16s a, Sixteen16s b) {
    return {_mm256_blendv_epi8(b.v, a.v, which.v)};
}
VSP_INLINE Sixteen16s exclusiveOr(Sixteen16s a, Sixteen16s b) { return {a.v ^ b.v}; }
// All bits set where a[i] > b[i].
VSP_INLINE Sixteen16s whereGreater(Sixteen16s a, Sixteen16s b) { return {_mm256_cmpgt_epi16(a.v, b.v)}; }
// All bits set where a[i] * b[i] + c[i] * d[i] > 0, of products whose sum does not wrap.
VSP_INLINE Sixteen16s wherePositive(Sixteen16s a, Sixteen16s b, Sixteen16s c, Sixteen16s d) {
    const __m256i zero = _mm256_setzero_si256();
    const __m256i lo = _mm256_cmpgt_epi32(dot2(S16_256{zipLo(a, c).v}, S16_256{zipLo(b, d).v}).v, zero);
    const __m256i hi = _mm256_cmpgt_epi32(dot2(S16_256{zipHi(a, c).v}, S16_256{zipHi(b, d).v}).v, zero);
    return {_mm256_packs_epi32(lo, hi)};
}
// Bit i tells whether all bits of a[i] are set.
VSP_INLINE Vsp32u bitsOf(Sixteen16s a) {
    return Vsp32u(_mm_movemask_epi8(_mm_packs_epi16(_mm256_castsi256_si128(a.v), _mm256_extracti128_si256(a.v, 1))));
}
// The elements moved up by one, the first one taken from the end of `before`.
VSP_INLINE Eight32s movedUp(Eight32s a, Eight32s before) {
    return {_mm256_alignr_epi8(a.v, _mm256_permute2x128_si256(before.v, a.v, 0x21), 12)};
}
// lo and hi, narrowed, in reverse order.
VSP_INLINE Sixteen16s narrowReversed(Eight32s lo, Eight32s hi) {
    const S16_256 packed = packSat(lo, hi);  // lanes: lo 0-3, hi 0-3; lo 4-7, hi 4-7
    return reversed(S16_256{_mm256_permute4x64_epi64(packed.v, 0xD8)});
}
VSP_INLINE Vsp16u largestMagnitude(Sixteen16s a, Sixteen16s b) {
    return largestU(foldMaxU(maxU(magnitude(a), magnitude(b))));
}
VSP_INLINE Eight32f quotient(Eight32f a, Eight32f b) { return {_mm256_div_ps(a.v, b.v)}; }
// The 32-bit elements at p that have even numbers, and the others, of sixteen.
VSP_INLINE void evenAndOdd(const Vsp16s* p, Eight32s& even, Eight32s& odd) {
    const __m256 a = _mm256_castsi256_ps(S16_256::load(p).v), b = _mm256_castsi256_ps(S16_256::load(p + 16).v);
    const auto inOrder = [](__m256 x) { return _mm256_permute4x64_epi64(_mm256_castps_si256(x), 0xD8); };
    even.v = inOrder(_mm256_shuffle_ps(a, b, 0x88));
    odd.v = inOrder(_mm256_shuffle_ps(a, b, 0xDD));
}
#else
struct Sixteen16s {
    S16_128 lo, hi;
    [[gnu::always_inline]] static Sixteen16s splat(Vsp16s x) { return {S16_128::splat(x), S16_128::splat(x)}; }
    [[gnu::always_inline]] static Sixteen16s load(const Vsp16s* p) { return {S16_128::load(p), S16_128::load(p + 8)}; }
    [[gnu::always_inline]] void store(Vsp16s* p) const {
        lo.store(p);
        hi.store(p + 8);
    }
};
#define VSP_SIXTEEN(name) \
    VSP_INLINE Sixteen16s name(Sixteen16s a, Sixteen16s b) { return {name(a.lo, b.lo), name(a.hi, b.hi)}; }
VSP_SIXTEEN(add)
VSP_SIXTEEN(sub)
VSP_SIXTEEN(addSat)
VSP_SIXTEEN(mulHiU)
VSP_SIXTEEN(min)
VSP_SIXTEEN(mulShift15)
VSP_SIXTEEN(mulShift15Sat)
#undef VSP_SIXTEEN
VSP_INLINE Sixteen16s shr(Sixteen16s a, int n) { return {shr(a.lo, n), shr(a.hi, n)}; }
VSP_INLINE Sixteen16s magnitude(Sixteen16s a) { return {magnitude(a.lo), magnitude(a.hi)}; }
VSP_INLINE Sixteen16s select(Sixteen16s which, Sixteen16s a, Sixteen16s b) {
    return {select(which.lo, a.lo, b.lo), select(which.hi, a.hi, b.hi)};
}
VSP_INLINE Sixteen16s exclusiveOr(Sixteen16s a, Sixteen16s b) { return {{a.lo.v ^ b.lo.v}, {a.hi.v ^ b.hi.v}}; }
VSP_INLINE Sixteen16s whereGreater(Sixteen16s a, Sixteen16s b) {
    return {{_mm_cmpgt_epi16(a.lo.v, b.lo.v)}, {_mm_cmpgt_epi16(a.hi.v, b.hi.v)}};
}
VSP_INLINE S16_128 wherePositive(S16_128 a, S16_128 b, S16_128 c, S16_128 d) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i lo = _mm_cmpgt_epi32(dot2(S16_128{zipLo(a, c).v}, S16_128{zipLo(b, d).v}).v, zero);
    const __m128i hi = _mm_cmpgt_epi32(dot2(S16_128{zipHi(a, c).v}, S16_128{zipHi(b, d).v}).v, zero);
    return {_mm_packs_epi32(lo, hi)};
}
VSP_INLINE Sixteen16s wherePositive(Sixteen16s a, Sixteen16s b, Sixteen16s c, Sixteen16s d) {
    return {wherePositive(a.lo, b.lo, c.lo, d.lo), wherePositive(a.hi, b.hi, c.hi, d.hi)};
}
VSP_INLINE Vsp32u bitsOf(Sixteen16s a) { return Vsp32u(_mm_movemask_epi8(_mm_packs_epi16(a.lo.v, a.hi.v))); }
VSP_INLINE Eight32s movedUp(Eight32s a, Eight32s before) {
    return {{_mm_alignr_epi8(a.lo.v, before.hi.v, 12)}, {_mm_alignr_epi8(a.hi.v, a.lo.v, 12)}};
}
VSP_INLINE Sixteen16s narrowReversed(Eight32s lo, Eight32s hi) {
    return {reversed(narrowSat(hi)), reversed(narrowSat(lo))};
}
VSP_INLINE Vsp16u largestMagnitude(Sixteen16s a, Sixteen16s b) {
    return largestU(maxU(maxU(magnitude(a.lo), magnitude(a.hi)), maxU(magnitude(b.lo), magnitude(b.hi))));
}
VSP_INLINE Eight32f quotient(Eight32f a, Eight32f b) {
    return {{_mm_div_ps(a.lo.v, b.lo.v)}, {_mm_div_ps(a.hi.v, b.hi.v)}};
}
VSP_INLINE void evenAndOdd(const Vsp16s* p, Eight32s& even, Eight32s& odd) {
    __m128 x[4];
    for (int i = 0; i < 4; i++) x[i] = _mm_castsi128_ps(S16_128::load(p + 8 * i).v);
    even = {{_mm_castps_si128(_mm_shuffle_ps(x[0], x[1], 0x88))}, {_mm_castps_si128(_mm_shuffle_ps(x[2], x[3], 0x88))}};
    odd = {{_mm_castps_si128(_mm_shuffle_ps(x[0], x[1], 0xDD))}, {_mm_castps_si128(_mm_shuffle_ps(x[2], x[3], 0xDD))}};
}
#endif

// The pairs at p as 32-bit elements.
VSP_INLINE Eight32s loadPairs(const Vsp16s* p) {
    Vsp32s pairs[8];
    __builtin_memcpy(pairs, p, sizeof pairs);
    return Eight32s::load(pairs);
}

VSP_INLINE bool allPositive(Sixteen16s a) { return bitsOf(whereGreater(a, Sixteen16s::splat(0))) == 0xFFFF; }

}  // namespace vsp::VSP_LEVEL
