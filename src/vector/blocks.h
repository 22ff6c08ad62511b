// Vectors as blocks of 128 bits, each of which has eight 16-bit values or four 32-bit ones: one, two or four of them.
#pragma once

#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

template <class V>
constexpr int kBlocks = sizeof(V) / 16;

// The sums of unsigned values, saturated.
VSP_INLINE S16_128 addSatU(S16_128 a, S16_128 b) { return {_mm_adds_epu16(a.v, b.v)}; }
VSP_IF_256(VSP_INLINE S16_256 addSatU(S16_256 a, S16_256 b) { return {_mm256_adds_epu16(a.v, b.v)}; })
VSP_IF_512(VSP_INLINE S16_512 addSatU(S16_512 a, S16_512 b) { return {_mm512_adds_epu16(a.v, b.v)}; })

// The values at p in their order, each in all elements of Each blocks, or of the only one.
template <class V, int Each>
VSP_INLINE V splatInBlocks(const Vsp32s* p) {
    if constexpr (kBlocks<V> <= Each) return V::splat(p[0]);
    VSP_IF_256(else if constexpr (kBlocks<V> == 2) return {_mm256_set_m128i(_mm_set1_epi32(p[1]), _mm_set1_epi32(p[0]))};)
    VSP_IF_512(else {
        constexpr int k1 = 1 / Each, k2 = 2 / Each, k3 = 3 / Each;
        return {_mm512_permutexvar_epi32(_mm512_setr_epi32(0, 0, 0, 0, k1, k1, k1, k1, k2, k2, k2, k2, k3, k3, k3, k3),
                                         _mm512_castsi128_si512(S32_128::load(p).v))};
    })
}
template <class V, int Each>
VSP_INLINE V splatInBlocks(const Vsp16s* p) {
    if constexpr (kBlocks<V> <= Each) return V::splat(p[0]);
    VSP_IF_256(else if constexpr (kBlocks<V> == 2) return {_mm256_set_m128i(_mm_set1_epi16(p[1]), _mm_set1_epi16(p[0]))};)
    VSP_IF_512(else {
        constexpr int kLater = 0x02020202, k1 = 0x01000100 + kLater * (1 / Each), k2 = 0x01000100 + kLater * (2 / Each),
                      k3 = 0x01000100 + kLater * (3 / Each), k0 = 0x01000100;
        const __m512i four = _mm512_broadcastq_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)));
        return {
            _mm512_shuffle_epi8(four, _mm512_setr_epi32(k0, k0, k0, k0, k1, k1, k1, k1, k2, k2, k2, k2, k3, k3, k3, k3))};
    })
}

// Of Count blocks at p, which are repeated, those of vector i.
template <class V, int Count, class T>
VSP_INLINE V repeatedBlocks(const T* p, int i) {
    const auto* const blocks = reinterpret_cast<const __m128i*>(p);
    if constexpr (kBlocks<V> == 1) return {_mm_loadu_si128(blocks + i % Count)};
    VSP_IF_256(
        else if constexpr (kBlocks<V> == 2 && Count == 2) return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p))};
        else if constexpr (kBlocks<V> == 2) return {_mm256_broadcastsi128_si256(_mm_loadu_si128(blocks))};)
    VSP_IF_512(else if constexpr (Count == 2) return {
        _mm512_broadcast_i64x4(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)))};
               else return {_mm512_broadcast_i32x4(_mm_loadu_si128(blocks))};)
}

VSP_INLINE bool anyNotPositive(S32_128 a) {
    return _mm_movemask_ps(_mm_castsi128_ps(_mm_cmpgt_epi32(a.v, _mm_setzero_si128()))) != 0xF;
}
VSP_IF_256(VSP_INLINE bool anyNotPositive(S32_256 a) {
    return _mm256_movemask_ps(_mm256_castsi256_ps(_mm256_cmpgt_epi32(a.v, _mm256_setzero_si256()))) != 0xFF;
})
VSP_IF_512(VSP_INLINE bool anyNotPositive(S32_512 a) { return _mm512_cmple_epi32_mask(a.v, _mm512_setzero_si512()) != 0; })

// --- Quotients, wrong by less than kQuotientError ----------------------------------------------------------------------

constexpr Vsp32f kQuotientError = 1.0f / (1 << (F32::width == 16 ? 13 : 11));

VSP_INLINE F32_128 quotientEstimate(S32_128 a, S32_128 b) {
    return {_mm_mul_ps(_mm_cvtepi32_ps(a.v), _mm_rcp_ps(_mm_cvtepi32_ps(b.v)))};
}
VSP_IF_256(VSP_INLINE F32_256 quotientEstimate(S32_256 a, S32_256 b) {
    return {_mm256_mul_ps(_mm256_cvtepi32_ps(a.v), _mm256_rcp_ps(_mm256_cvtepi32_ps(b.v)))};
})
VSP_IF_512(VSP_INLINE F32_512 quotientEstimate(S32_512 a, S32_512 b) {
    return {_mm512_mul_ps(_mm512_cvtepi32_ps(a.v), _mm512_rcp14_ps(_mm512_cvtepi32_ps(b.v)))};
})

VSP_INLINE Vsp32f largest(F32_128 a) {
    const __m128 two = _mm_max_ps(a.v, _mm_movehl_ps(a.v, a.v));
    return _mm_cvtss_f32(_mm_max_ss(two, _mm_movehdup_ps(two)));
}
VSP_IF_256(VSP_INLINE Vsp32f largest(F32_256 a) {
    return largest(F32_128{_mm_max_ps(_mm256_castps256_ps128(a.v), _mm256_extractf128_ps(a.v, 1))});
})
VSP_IF_512(VSP_INLINE Vsp32f largest(F32_512 a) {
    return largest(F32_256{_mm256_max_ps(_mm512_castps512_ps256(a.v), _mm512_extractf32x8_ps(a.v, 1))});
})

// Bit i tells whether a[i] >= b[i].
VSP_INLINE Vsp32u atLeast(F32_128 a, F32_128 b) { return Vsp32u(_mm_movemask_ps(_mm_cmpge_ps(a.v, b.v))); }
VSP_IF_256(VSP_INLINE Vsp32u atLeast(F32_256 a, F32_256 b) {
    return Vsp32u(_mm256_movemask_ps(_mm256_cmp_ps(a.v, b.v, _CMP_GE_OS)));
})
VSP_IF_512(VSP_INLINE Vsp32u atLeast(F32_512 a, F32_512 b) { return _mm512_cmp_ps_mask(a.v, b.v, _CMP_GE_OS); })

}  // namespace vsp::VSP_LEVEL
