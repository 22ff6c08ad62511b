// 64-bit elements: shifts by a count for each element, saturation, and pairs of 32-bit halves in them. S64_1 is one element
// with the same operations.
#pragma once

#include "arithmetic/basic_ops.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

struct S64_1 {
    static constexpr int width = 1;
    Vsp64s v;
    [[gnu::always_inline]] static S64_1 splat(Vsp64s x) { return {x}; }
    [[gnu::always_inline]] static S64_1 load(const Vsp64s* p) {
        S64_1 a;
        __builtin_memcpy(&a.v, p, sizeof a.v);
        return a;
    }
    [[gnu::always_inline]] void store(Vsp64s* p) const { __builtin_memcpy(p, &v, sizeof v); }
};

VSP_INLINE S64_1 add(S64_1 a, S64_1 b) { return {Vsp64s(Vsp64u(a.v) + Vsp64u(b.v))}; }
VSP_INLINE S64_1 sub(S64_1 a, S64_1 b) { return {Vsp64s(Vsp64u(a.v) - Vsp64u(b.v))}; }
VSP_INLINE S64_1 mulLo(S64_1 a, S64_1 b) { return {Vsp64s(Vsp32s(a.v)) * Vsp32s(b.v)}; }
VSP_INLINE S64_1 shl(S64_1 a, int n) { return {Vsp64s(Vsp64u(a.v) << n)}; }
VSP_INLINE S64_1 shrU(S64_1 a, int n) { return {Vsp64s(Vsp64u(a.v) >> n)}; }

template <>
struct Related<S64_128> {
    using Half = S64_1;
};
VSP_IF_256(template <> struct Related<S64_256> { using Half = S64_128; };)
VSP_IF_512(template <> struct Related<S64_512> { using Half = S64_256; };)

// --- Bits --------------------------------------------------------------------------------------------------------------

template <class V>
VSP_INLINE V both(V a, V b) {
    return {a.v & b.v};
}
template <class V>
VSP_INLINE V either(V a, V b) {
    return {a.v | b.v};
}
template <class V>
VSP_INLINE V differing(V a, V b) {
    return {a.v ^ b.v};
}

// a but for the bits of b
template <class V>
VSP_INLINE V without(V a, V b) {
    return {a.v & ~b.v};
}

// All bits of the negative elements.
VSP_INLINE S64_1 negative(S64_1 a) { return {a.v >> 63}; }
VSP_INLINE S64_128 negative(S64_128 a) { return {_mm_cmpgt_epi64(_mm_setzero_si128(), a.v)}; }
VSP_IF_256(VSP_INLINE S64_256 negative(S64_256 a) { return {_mm256_cmpgt_epi64(_mm256_setzero_si256(), a.v)}; })
VSP_IF_512(VSP_INLINE S64_512 negative(S64_512 a) { return {_mm512_srai_epi64(a.v, 63)}; })

// Where which is negative the elements of a, else those of b.
VSP_INLINE S64_1 select(S64_1 which, S64_1 a, S64_1 b) { return which.v < 0 ? a : b; }
VSP_INLINE S64_128 select(S64_128 which, S64_128 a, S64_128 b) {
    return {_mm_castpd_si128(_mm_blendv_pd(_mm_castsi128_pd(b.v), _mm_castsi128_pd(a.v), _mm_castsi128_pd(which.v)))};
}
VSP_IF_256(VSP_INLINE S64_256 select(S64_256 which, S64_256 a, S64_256 b) {
    return {_mm256_castpd_si256(
        _mm256_blendv_pd(_mm256_castsi256_pd(b.v), _mm256_castsi256_pd(a.v), _mm256_castsi256_pd(which.v)))};
})
VSP_IF_512(VSP_INLINE S64_512 select(S64_512 which, S64_512 a, S64_512 b) {
    return {_mm512_mask_mov_epi64(b.v, _mm512_movepi64_mask(which.v), a.v)};
})

// Whether any element has any of the bits.
VSP_INLINE bool anyOf(S64_1 a, S64_1 bits) { return (a.v & bits.v) != 0; }
VSP_INLINE bool anyOf(S64_128 a, S64_128 bits) { return _mm_testz_si128(a.v, bits.v) == 0; }
VSP_IF_256(VSP_INLINE bool anyOf(S64_256 a, S64_256 bits) { return _mm256_testz_si256(a.v, bits.v) == 0; })
VSP_IF_512(VSP_INLINE bool anyOf(S64_512 a, S64_512 bits) { return _mm512_test_epi64_mask(a.v, bits.v) != 0; })

// --- Halves ------------------------------------------------------------------------------------------------------------

// The lower halves of a and the upper halves of b.
VSP_INLINE S64_1 joinHalves(S64_1 a, S64_1 b) { return {Vsp64s((Vsp64u(b.v) & ~0xFFFFFFFFULL) | Vsp32u(a.v))}; }
VSP_INLINE S64_128 joinHalves(S64_128 a, S64_128 b) { return {_mm_blend_epi16(a.v, b.v, 0xCC)}; }
VSP_IF_256(VSP_INLINE S64_256 joinHalves(S64_256 a, S64_256 b) { return {_mm256_blend_epi32(a.v, b.v, 0xAA)}; })
VSP_IF_512(VSP_INLINE S64_512 joinHalves(S64_512 a, S64_512 b) { return {_mm512_mask_mov_epi32(a.v, 0xAAAA, b.v)}; })

// The lower halves of both side by side.
template <class V>
VSP_INLINE V packLo(V a, V b) {
    return joinHalves(a, shl(b, 32));
}

// The sums of the halves, which wrap.
VSP_INLINE S64_1 addHalves(S64_1 a, S64_1 b) { return packLo(add(a, b), add(shrU(a, 32), shrU(b, 32))); }
VSP_INLINE S64_128 addHalves(S64_128 a, S64_128 b) { return {_mm_add_epi32(a.v, b.v)}; }
VSP_IF_256(VSP_INLINE S64_256 addHalves(S64_256 a, S64_256 b) { return {_mm256_add_epi32(a.v, b.v)}; })
VSP_IF_512(VSP_INLINE S64_512 addHalves(S64_512 a, S64_512 b) { return {_mm512_add_epi32(a.v, b.v)}; })

// The larger ones of the lower halves as signed values; the upper halves are zero and stay so.
VSP_INLINE S64_1 maxLo(S64_1 a, S64_1 b) { return Vsp32s(a.v) > Vsp32s(b.v) ? a : b; }
VSP_INLINE S64_128 maxLo(S64_128 a, S64_128 b) { return {_mm_max_epi32(a.v, b.v)}; }
VSP_IF_256(VSP_INLINE S64_256 maxLo(S64_256 a, S64_256 b) { return {_mm256_max_epi32(a.v, b.v)}; })
VSP_IF_512(VSP_INLINE S64_512 maxLo(S64_512 a, S64_512 b) { return {_mm512_max_epi32(a.v, b.v)}; })

// The magnitudes of the upper halves, 2^31 for the lowest value: h such that -(h + 1) * 2^32 <= a < (h + 1) * 2^32. The
// lower halves mean nothing.
VSP_INLINE S64_1 magnitudeHi(S64_1 a) { return a.v < 0 ? sub({0}, a) : a; }
VSP_INLINE S64_128 magnitudeHi(S64_128 a) { return {_mm_abs_epi32(a.v)}; }
VSP_IF_256(VSP_INLINE S64_256 magnitudeHi(S64_256 a) { return {_mm256_abs_epi32(a.v)}; })
VSP_IF_512(VSP_INLINE S64_512 magnitudeHi(S64_512 a) { return {_mm512_abs_epi32(a.v)}; })

// The halves as signed 64-bit values.
#if defined(__AVX512VL__)
VSP_INLINE S64_128 signedHi(S64_128 a) { return {_mm_srai_epi64(a.v, 32)}; }
VSP_INLINE S64_256 signedHi(S64_256 a) { return {_mm256_srai_epi64(a.v, 32)}; }
VSP_INLINE S64_512 signedHi(S64_512 a) { return {_mm512_srai_epi64(a.v, 32)}; }
#else
VSP_INLINE S64_128 signedHi(S64_128 a) { return joinHalves(shrU(a, 32), S64_128{_mm_srai_epi32(a.v, 31)}); }
VSP_IF_256(VSP_INLINE S64_256 signedHi(S64_256 a) { return joinHalves(shrU(a, 32), S64_256{_mm256_srai_epi32(a.v, 31)}); })
#endif
VSP_INLINE S64_1 signedHi(S64_1 a) { return {a.v >> 32}; }
template <class V>
VSP_INLINE V signedLo(V a) {
    return signedHi(shl(a, 32));
}

// --- Shifts ------------------------------------------------------------------------------------------------------------

// By the count of each element, 0 to 63.
VSP_INLINE S64_1 shl(S64_1 a, S64_1 n) { return shl(a, int(n.v)); }
VSP_INLINE S64_1 shrU(S64_1 a, S64_1 n) { return shrU(a, int(n.v)); }
#if defined(__AVX2__)
VSP_INLINE S64_128 shl(S64_128 a, S64_128 n) { return {_mm_sllv_epi64(a.v, n.v)}; }
VSP_INLINE S64_256 shl(S64_256 a, S64_256 n) { return {_mm256_sllv_epi64(a.v, n.v)}; }
VSP_INLINE S64_128 shrU(S64_128 a, S64_128 n) { return {_mm_srlv_epi64(a.v, n.v)}; }
VSP_INLINE S64_256 shrU(S64_256 a, S64_256 n) { return {_mm256_srlv_epi64(a.v, n.v)}; }
VSP_IF_512(VSP_INLINE S64_512 shl(S64_512 a, S64_512 n) { return {_mm512_sllv_epi64(a.v, n.v)}; })
VSP_IF_512(VSP_INLINE S64_512 shrU(S64_512 a, S64_512 n) { return {_mm512_srlv_epi64(a.v, n.v)}; })
#else
// The instructions take one count for the whole vector: once by each, and one element of either result.
VSP_INLINE S64_128 shl(S64_128 a, S64_128 n) {
    const __m128i upper = _mm_sll_epi64(a.v, _mm_unpackhi_epi64(n.v, n.v));
    return {_mm_blend_epi16(_mm_sll_epi64(a.v, n.v), upper, 0xF0)};
}
VSP_INLINE S64_128 shrU(S64_128 a, S64_128 n) {
    const __m128i upper = _mm_srl_epi64(a.v, _mm_unpackhi_epi64(n.v, n.v));
    return {_mm_blend_epi16(_mm_srl_epi64(a.v, n.v), upper, 0xF0)};
}
#endif

// Arithmetic, by n or by the count of each element. Without an instruction for it: as unsigned values with 2^63 added.
#if defined(__AVX512VL__)
VSP_INLINE S64_128 shr(S64_128 a, int n) { return {_mm_sra_epi64(a.v, _mm_cvtsi32_si128(n))}; }
VSP_INLINE S64_256 shr(S64_256 a, int n) { return {_mm256_sra_epi64(a.v, _mm_cvtsi32_si128(n))}; }
VSP_INLINE S64_512 shr(S64_512 a, int n) { return {_mm512_sra_epi64(a.v, _mm_cvtsi32_si128(n))}; }
VSP_INLINE S64_128 shr(S64_128 a, S64_128 n) { return {_mm_srav_epi64(a.v, n.v)}; }
VSP_INLINE S64_256 shr(S64_256 a, S64_256 n) { return {_mm256_srav_epi64(a.v, n.v)}; }
VSP_INLINE S64_512 shr(S64_512 a, S64_512 n) { return {_mm512_srav_epi64(a.v, n.v)}; }
#else
template <class V, class Count>
VSP_INLINE V shr(V a, Count n) {
    const V bias = V::splat(kMin64);
    return sub(shrU(differing(a, bias), n), shrU(bias, n));
}
#endif
VSP_INLINE S64_1 shr(S64_1 a, int n) { return {a.v >> n}; }
VSP_INLINE S64_1 shr(S64_1 a, S64_1 n) { return {a.v >> n.v}; }

// --- Saturation --------------------------------------------------------------------------------------------------------

// The sum, saturated to 64 bits.
template <class V>
VSP_INLINE V addSat(V a, V b) {
    const V sum = add(a, b), overflow = both(differing(sum, a), differing(sum, b));
    return select(overflow, differing(negative(b), V::splat(kMax64)), sum);
}

VSP_INLINE S64_1 min(S64_1 a, S64_1 b) { return a.v < b.v ? a : b; }
VSP_INLINE S64_1 max(S64_1 a, S64_1 b) { return a.v > b.v ? a : b; }
#if defined(__AVX512VL__)
VSP_INLINE S64_128 min(S64_128 a, S64_128 b) { return {_mm_min_epi64(a.v, b.v)}; }
VSP_INLINE S64_128 max(S64_128 a, S64_128 b) { return {_mm_max_epi64(a.v, b.v)}; }
VSP_INLINE S64_256 min(S64_256 a, S64_256 b) { return {_mm256_min_epi64(a.v, b.v)}; }
VSP_INLINE S64_256 max(S64_256 a, S64_256 b) { return {_mm256_max_epi64(a.v, b.v)}; }
VSP_INLINE S64_512 min(S64_512 a, S64_512 b) { return {_mm512_min_epi64(a.v, b.v)}; }
VSP_INLINE S64_512 max(S64_512 a, S64_512 b) { return {_mm512_max_epi64(a.v, b.v)}; }
#else
VSP_INLINE S64_128 min(S64_128 a, S64_128 b) { return select({_mm_cmpgt_epi64(a.v, b.v)}, b, a); }
VSP_INLINE S64_128 max(S64_128 a, S64_128 b) { return select({_mm_cmpgt_epi64(a.v, b.v)}, a, b); }
VSP_IF_256(VSP_INLINE S64_256 min(S64_256 a, S64_256 b) { return select({_mm256_cmpgt_epi64(a.v, b.v)}, b, a); })
VSP_IF_256(VSP_INLINE S64_256 max(S64_256 a, S64_256 b) { return select({_mm256_cmpgt_epi64(a.v, b.v)}, a, b); })
#endif

template <class V>
VSP_INLINE V clamp(V a, V lowest, V highest) {
    return max(min(a, highest), lowest);
}

// Both saturated to 32 bits, side by side.
VSP_INLINE S64_1 packSat(S64_1 lower, S64_1 upper) {
    return packLo(S64_1{Cnvrt_64s32s(lower.v)}, S64_1{Cnvrt_64s32s(upper.v)});
}
#define VSP_PACK_SAT(bits, mm)                                                                           \
    VSP_INLINE S64_##bits packSat(S64_##bits lower, S64_##bits upper) {                                  \
        const auto lo = packLo(lower, upper).v, hi = joinHalves(shrU(lower, 32), upper).v;               \
        const auto sign = mm##_srai_epi32(hi, 31), fits = mm##_cmpeq_epi32(hi, mm##_srai_epi32(lo, 31)); \
        return {mm##_blendv_epi8(mm##_xor_si##bits(sign, mm##_set1_epi32(kMax32)), lo, fits)};           \
    }
VSP_PACK_SAT(128, _mm)
VSP_IF_256(VSP_PACK_SAT(256, _mm256))
#undef VSP_PACK_SAT
VSP_IF_512(VSP_INLINE S64_512 packSat(S64_512 lower, S64_512 upper) {
    const __m512i alternating = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    return {_mm512_permutex2var_epi32(_mm512_castsi256_si512(_mm512_cvtsepi64_epi32(lower.v)), alternating,
                                      _mm512_castsi256_si512(_mm512_cvtsepi64_epi32(upper.v)))};
})

}  // namespace vsp::VSP_LEVEL
