// Eight 32-bit values beside eight 16-bit ones: what the eight places of a pulse track need at every level.
#pragma once

#include "vector/blocks.h"

namespace vsp::VSP_LEVEL {

#if defined(__AVX2__)
using Eight32s = S32_256;
using Eight32f = F32_256;
VSP_INLINE Eight32s widen(S16_128 a) { return {_mm256_cvtepi16_epi32(a.v)}; }
VSP_INLINE S16_128 narrowSat(Eight32s a) {
    return {_mm_packs_epi32(_mm256_castsi256_si128(a.v), _mm256_extracti128_si256(a.v, 1))};
}
// The products of the lower halves of the elements with x.
VSP_INLINE Eight32s mulLower(Eight32s a, Vsp16s x) { return dot2(S16_256{a.v}, S16_256{S32_256::splat(Vsp16u(x)).v}); }
// The products of the halves of the elements with the two samples at p, added.
VSP_INLINE Eight32s dotPairs(Eight32s a, const Vsp16s* p) { return dot2(S16_256{a.v}, splatPair<S16_256>(p)); }
VSP_INLINE Eight32f toFloat(Eight32s a) { return {_mm256_cvtepi32_ps(a.v)}; }
VSP_INLINE Eight32f reciprocal(Eight32f a) { return {_mm256_rcp_ps(a.v)}; }  // wrong by 1.5 * 2^-12 at most
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
VSP_INLINE Eight32s sub(Eight32s a, Eight32s b) { return {sub(a.lo, b.lo), sub(a.hi, b.hi)}; }
VSP_INLINE Eight32s max(Eight32s a, Eight32s b) { return {max(a.lo, b.lo), max(a.hi, b.hi)}; }
VSP_INLINE Eight32s min(Eight32s a, Eight32s b) { return {min(a.lo, b.lo), min(a.hi, b.hi)}; }
VSP_INLINE bool anyNotPositive(Eight32s a) { return anyNotPositive(min(a.lo, a.hi)); }
VSP_INLINE Eight32s shl(Eight32s a, int n) { return {shl(a.lo, n), shl(a.hi, n)}; }
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
struct Eight32f {
    F32_128 lo, hi;
    [[gnu::always_inline]] static Eight32f splat(Vsp32f x) { return {F32_128::splat(x), F32_128::splat(x)}; }
    [[gnu::always_inline]] static Eight32f load(const Vsp32f* p) { return {F32_128::load(p), F32_128::load(p + 4)}; }
    [[gnu::always_inline]] void store(Vsp32f* p) const {
        lo.store(p);
        hi.store(p + 4);
    }
};
VSP_INLINE Eight32f toFloat(Eight32s a) { return {{_mm_cvtepi32_ps(a.lo.v)}, {_mm_cvtepi32_ps(a.hi.v)}}; }
VSP_INLINE Eight32f mul(Eight32f a, Eight32f b) { return {mul(a.lo, b.lo), mul(a.hi, b.hi)}; }
VSP_INLINE Eight32f reciprocal(Eight32f a) { return {{_mm_rcp_ps(a.lo.v)}, {_mm_rcp_ps(a.hi.v)}}; }
VSP_INLINE Eight32f max(Eight32f a, Eight32f b) { return {max(a.lo, b.lo), max(a.hi, b.hi)}; }
VSP_INLINE Vsp32f largest(Eight32f a) { return largest(max(a.lo, a.hi)); }
VSP_INLINE Vsp32u atLeast(Eight32f a, Eight32f b) { return atLeast(a.lo, b.lo) | atLeast(a.hi, b.hi) << 4; }
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
template <class V>
VSP_INLINE V mulShift15(V a, V b) {
    return {shl(mulHi(a, b), 1).v | shrU(mulLo(a, b), 15).v};
}

// (a * b) >> 15, saturated (mult of the standards): what wraps turns into 32767 on the way down by one and up.
template <class V>
VSP_INLINE V mulShift15Sat(V a, V b) {
    const V minusOne = V::splat(-1);
    return subSat(add(mulShift15(a, b), minusOne), minusOne);
}

}  // namespace vsp::VSP_LEVEL
