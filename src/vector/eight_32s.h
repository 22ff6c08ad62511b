// Eight 32-bit values beside eight 16-bit ones: what the eight places of a pulse track need at every level.
#pragma once

#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

#if defined(__AVX2__)
using Eight32s = S32_256;
VSP_INLINE Eight32s widen(S16_128 a) { return {_mm256_cvtepi16_epi32(a.v)}; }
VSP_INLINE S16_128 narrowSat(Eight32s a) {
    return {_mm_packs_epi32(_mm256_castsi256_si128(a.v), _mm256_extracti128_si256(a.v, 1))};
}
// The products of the lower halves of the elements with x.
VSP_INLINE Eight32s mulLower(Eight32s a, Vsp16s x) { return dot2(S16_256{a.v}, S16_256{S32_256::splat(Vsp16u(x)).v}); }
// The products of the halves of the elements with the two samples at p, added.
VSP_INLINE Eight32s dotPairs(Eight32s a, const Vsp16s* p) { return dot2(S16_256{a.v}, splatPair<S16_256>(p)); }
#else
struct Eight32s {
    S32_128 lo, hi;
    [[gnu::always_inline]] static Eight32s splat(Vsp32s x) { return {S32_128::splat(x), S32_128::splat(x)}; }
    [[gnu::always_inline]] static Eight32s load(const Vsp32s* p) { return {S32_128::load(p), S32_128::load(p + 4)}; }
    [[gnu::always_inline]] void store(Vsp32s* p) const {
        lo.store(p);
        hi.store(p + 4);
    }
};
VSP_INLINE Eight32s add(Eight32s a, Eight32s b) { return {add(a.lo, b.lo), add(a.hi, b.hi)}; }
VSP_INLINE Eight32s shr(Eight32s a, int n) { return {shr(a.lo, n), shr(a.hi, n)}; }
VSP_INLINE Eight32s widen(S16_128 a) {
    return {{_mm_cvtepi16_epi32(a.v)}, {_mm_cvtepi16_epi32(_mm_unpackhi_epi64(a.v, a.v))}};
}
VSP_INLINE S16_128 narrowSat(Eight32s a) { return packSat(a.lo, a.hi); }
VSP_INLINE Eight32s mulLower(Eight32s a, Vsp16s x) {
    const S16_128 factor{S32_128::splat(Vsp16u(x)).v};
    return {dot2(S16_128{a.lo.v}, factor), dot2(S16_128{a.hi.v}, factor)};
}
VSP_INLINE Eight32s dotPairs(Eight32s a, const Vsp16s* p) {
    const S16_128 factors = splatPair<S16_128>(p);
    return {dot2(S16_128{a.lo.v}, factors), dot2(S16_128{a.hi.v}, factors)};
}
#endif

// Rows to columns.
VSP_INLINE void transpose(S16_128 (&m)[8]) {
    __m128i a[8], b[8];
    for (int i = 0; i < 4; i++) {
        a[2 * i] = _mm_unpacklo_epi16(m[i].v, m[i + 4].v);
        a[2 * i + 1] = _mm_unpackhi_epi16(m[i].v, m[i + 4].v);
    }
    for (int i = 0; i < 4; i++) {
        b[2 * i] = _mm_unpacklo_epi16(a[i], a[i + 4]);
        b[2 * i + 1] = _mm_unpackhi_epi16(a[i], a[i + 4]);
    }
    for (int i = 0; i < 4; i++) {
        m[2 * i].v = _mm_unpacklo_epi16(b[i], b[i + 4]);
        m[2 * i + 1].v = _mm_unpackhi_epi16(b[i], b[i + 4]);
    }
}

// Where which has all bits set the elements of a, else those of b.
VSP_INLINE S16_128 select(S16_128 which, S16_128 a, S16_128 b) { return {_mm_blendv_epi8(b.v, a.v, which.v)}; }

// (a * b) >> 15, which wraps for -32768 * -32768 only.
VSP_INLINE S16_128 mulShift15(S16_128 a, S16_128 b) { return {(shl(mulHi(a, b), 1).v | shrU(mulLo(a, b), 15).v)}; }

// (a * b) >> 15, saturated (mult of the standards).
VSP_INLINE S16_128 mulShift15Sat(S16_128 a, S16_128 b) {
    const __m128i product = mulShift15(a, b).v;
    return {_mm_xor_si128(product, _mm_cmpeq_epi16(product, _mm_set1_epi16(-0x8000)))};
}

}  // namespace vsp::VSP_LEVEL
