// The vector layer: S16, S32, S64, F32 and F64 at the width of the level, and the narrower widths below it for short
// arrays. Zips and packs work within 128-bit lanes, so that packSat puts back what zipLo and zipHi split.
#pragma once

#include <immintrin.h>

#include "core/level.h"

#if defined(__AVX512BW__)
#define VSP_NATIVE(name) name##_512
#define VSP_IF_256(...) __VA_ARGS__
#define VSP_IF_512(...) __VA_ARGS__
#elif defined(__AVX2__)
#define VSP_NATIVE(name) name##_256
#define VSP_IF_256(...) __VA_ARGS__
#define VSP_IF_512(...)
#else
#define VSP_NATIVE(name) name##_128
#define VSP_IF_256(...)
#define VSP_IF_512(...)
#endif

namespace vsp::VSP_LEVEL {

// --- Types -------------------------------------------------------------------------------------------------------------

#define VSP_TYPE(Name, Elem, bits, mm, set1)                                                                     \
    struct Name##_##bits {                                                                                       \
        using Reg = __m##bits##i;                                                                                \
        static constexpr int width = bits / (8 * sizeof(Elem));                                                  \
        Reg v;                                                                                                   \
        [[gnu::always_inline]] static Name##_##bits splat(Elem x) { return {mm##_##set1(x)}; }                   \
        [[gnu::always_inline]] static Name##_##bits load(const Elem* p) {                                        \
            return {mm##_loadu_si##bits(reinterpret_cast<const Reg*>(p))};                                       \
        }                                                                                                        \
        [[gnu::always_inline]] void store(Elem* p) const { mm##_storeu_si##bits(reinterpret_cast<Reg*>(p), v); } \
    };

VSP_TYPE(S16, Vsp16s, 128, _mm, set1_epi16)
VSP_TYPE(S32, Vsp32s, 128, _mm, set1_epi32)
VSP_TYPE(S64, Vsp64s, 128, _mm, set1_epi64x)
VSP_IF_256(VSP_TYPE(S16, Vsp16s, 256, _mm256, set1_epi16))
VSP_IF_256(VSP_TYPE(S32, Vsp32s, 256, _mm256, set1_epi32))
VSP_IF_256(VSP_TYPE(S64, Vsp64s, 256, _mm256, set1_epi64x))
VSP_IF_512(VSP_TYPE(S16, Vsp16s, 512, _mm512, set1_epi16))
VSP_IF_512(VSP_TYPE(S32, Vsp32s, 512, _mm512, set1_epi32))
VSP_IF_512(VSP_TYPE(S64, Vsp64s, 512, _mm512, set1_epi64))
#undef VSP_TYPE

#define VSP_FLOAT_TYPE(Name, Type, bits, mm, suffix)                                                         \
    struct Name##_##bits {                                                                                   \
        using Elem = Type;                                                                                   \
        using Reg = decltype(mm##_setzero_##suffix());                                                       \
        static constexpr int width = bits / (8 * sizeof(Elem));                                              \
        Reg v;                                                                                               \
        [[gnu::always_inline]] static Name##_##bits splat(Elem x) { return {mm##_set1_##suffix(x)}; }        \
        [[gnu::always_inline]] static Name##_##bits load(const Elem* p) { return {mm##_loadu_##suffix(p)}; } \
        [[gnu::always_inline]] void store(Elem* p) const { mm##_storeu_##suffix(p, v); }                     \
    };
VSP_FLOAT_TYPE(F32, Vsp32f, 128, _mm, ps)
VSP_FLOAT_TYPE(F64, Vsp64f, 128, _mm, pd)
VSP_IF_256(VSP_FLOAT_TYPE(F32, Vsp32f, 256, _mm256, ps))
VSP_IF_256(VSP_FLOAT_TYPE(F64, Vsp64f, 256, _mm256, pd))
VSP_IF_512(VSP_FLOAT_TYPE(F32, Vsp32f, 512, _mm512, ps))
VSP_IF_512(VSP_FLOAT_TYPE(F64, Vsp64f, 512, _mm512, pd))
#undef VSP_FLOAT_TYPE

using S16 = VSP_NATIVE(S16);
using S32 = VSP_NATIVE(S32);
using S64 = VSP_NATIVE(S64);
using F32 = VSP_NATIVE(F32);
using F64 = VSP_NATIVE(F64);

// What slides over samples: loads at any place, of which the 64-byte ones all cross cache lines and cost more than they
// save.
#if defined(__AVX2__)
using Sliding16 = S16_256;
using Sliding32f = F32_256;
#else
using Sliding16 = S16_128;
using Sliding32f = F32_128;
#endif

// What belongs to an S16 of some width: the wider elements in a register of that width, and the S16 of half the width.
template <class V>
struct Related;
template <>
struct Related<S16_128> {
    using Wide = S32_128;
    using Sum = S64_128;
};
VSP_IF_256(template <> struct Related<S16_256> {
    using Wide = S32_256;
    using Sum = S64_256;
    using Half = S16_128;
};)
VSP_IF_512(template <> struct Related<S16_512> {
    using Wide = S32_512;
    using Sum = S64_512;
    using Half = S16_256;
};)
template <class V>
using Wide = typename Related<V>::Wide;
template <class V>
using Half = typename Related<V>::Half;

// The lowest elements of a vector of the level, as many as V has: a constant is made once, at the width of the level.
template <class V, class Native>
VSP_INLINE V lowest(Native a) {
    if constexpr (sizeof(V) == sizeof(Native))
        return a;
    else if constexpr (sizeof(V) == 16)
        return {__builtin_shufflevector(a.v, a.v, 0, 1)};
    else
        return {__builtin_shufflevector(a.v, a.v, 0, 1, 2, 3)};
}

// --- Operations that every width has under the same name ---------------------------------------------------------------

#define VSP_UNARY(name, In, Out, op)                                                 \
    VSP_INLINE Out##_128 name(In##_128 a) { return {_mm_##op(a.v)}; }                \
    VSP_IF_256(VSP_INLINE Out##_256 name(In##_256 a) { return {_mm256_##op(a.v)}; }) \
    VSP_IF_512(VSP_INLINE Out##_512 name(In##_512 a) { return {_mm512_##op(a.v)}; })
#define VSP_BINARY(name, In, Out, op)                                                                 \
    VSP_INLINE Out##_128 name(In##_128 a, In##_128 b) { return {_mm_##op(a.v, b.v)}; }                \
    VSP_IF_256(VSP_INLINE Out##_256 name(In##_256 a, In##_256 b) { return {_mm256_##op(a.v, b.v)}; }) \
    VSP_IF_512(VSP_INLINE Out##_512 name(In##_512 a, In##_512 b) { return {_mm512_##op(a.v, b.v)}; })
#define VSP_SHIFT(name, In, op)                                                                                  \
    VSP_INLINE In##_128 name(In##_128 a, int n) { return {_mm_##op(a.v, _mm_cvtsi32_si128(n))}; }                \
    VSP_IF_256(VSP_INLINE In##_256 name(In##_256 a, int n) { return {_mm256_##op(a.v, _mm_cvtsi32_si128(n))}; }) \
    VSP_IF_512(VSP_INLINE In##_512 name(In##_512 a, int n) { return {_mm512_##op(a.v, _mm_cvtsi32_si128(n))}; })

VSP_BINARY(add, S16, S16, add_epi16)
VSP_BINARY(addSat, S16, S16, adds_epi16)
VSP_BINARY(sub, S16, S16, sub_epi16)
VSP_BINARY(subSat, S16, S16, subs_epi16)
VSP_BINARY(mulLo, S16, S16, mullo_epi16)
VSP_BINARY(mulHi, S16, S16, mulhi_epi16)
VSP_BINARY(mulHiU, S16, S16, mulhi_epu16)         // of unsigned values
VSP_BINARY(mulRoundWrap, S16, S16, mulhrs_epi16)  // (a * b + 2^14) >> 15; -32768 * -32768 gives -32768
VSP_UNARY(magnitude, S16, S16, abs_epi16)         // -32768 gives 0x8000, an unsigned value
VSP_BINARY(max, S16, S16, max_epi16)
VSP_BINARY(min, S16, S16, min_epi16)
VSP_BINARY(maxU, S16, S16, max_epu16)
VSP_SHIFT(shl, S16, sll_epi16)  // shift counts beyond the element give 0 or the sign
VSP_SHIFT(shr, S16, sra_epi16)
VSP_SHIFT(shrU, S16, srl_epi16)

VSP_BINARY(zipLo, S16, S32, unpacklo_epi16)  // 32-bit elements: a is the low half, b the high half
VSP_BINARY(zipHi, S16, S32, unpackhi_epi16)
VSP_BINARY(dot2, S16, S32, madd_epi16)  // a[2i] * b[2i] + a[2i+1] * b[2i+1]; only 2 * (-32768)^2 wraps
VSP_BINARY(packSat, S32, S16, packs_epi32)

VSP_BINARY(add, S32, S32, add_epi32)
VSP_BINARY(sub, S32, S32, sub_epi32)
VSP_BINARY(max, S32, S32, max_epi32)
VSP_BINARY(min, S32, S32, min_epi32)
VSP_BINARY(minU, S32, S32, min_epu32)
VSP_BINARY(maxU, S32, S32, max_epu32)
VSP_SHIFT(shl, S32, sll_epi32)
VSP_SHIFT(shr, S32, sra_epi32)
VSP_SHIFT(shrU, S32, srl_epi32)
VSP_UNARY(magnitude, S32, S32, abs_epi32)
VSP_BINARY(zipLo, S32, S32, unpacklo_epi32)
VSP_BINARY(zipHi, S32, S32, unpackhi_epi32)
VSP_BINARY(mulLo, S32, S32, mullo_epi32)

VSP_BINARY(add, S64, S64, add_epi64)
VSP_BINARY(sub, S64, S64, sub_epi64)
VSP_BINARY(mulLo, S64, S64, mul_epi32)  // the exact product of the signed lower halves
VSP_BINARY(zipLo, S64, S64, unpacklo_epi64)
VSP_BINARY(zipHi, S64, S64, unpackhi_epi64)
VSP_SHIFT(shl, S64, sll_epi64)
VSP_SHIFT(shrU, S64, srl_epi64)

#define VSP_FLOAT_BINARY(name)                                                                           \
    VSP_INLINE F32_128 name(F32_128 a, F32_128 b) { return {_mm_##name##_ps(a.v, b.v)}; }                \
    VSP_INLINE F64_128 name(F64_128 a, F64_128 b) { return {_mm_##name##_pd(a.v, b.v)}; }                \
    VSP_IF_256(VSP_INLINE F32_256 name(F32_256 a, F32_256 b) { return {_mm256_##name##_ps(a.v, b.v)}; }) \
    VSP_IF_256(VSP_INLINE F64_256 name(F64_256 a, F64_256 b) { return {_mm256_##name##_pd(a.v, b.v)}; }) \
    VSP_IF_512(VSP_INLINE F32_512 name(F32_512 a, F32_512 b) { return {_mm512_##name##_ps(a.v, b.v)}; }) \
    VSP_IF_512(VSP_INLINE F64_512 name(F64_512 a, F64_512 b) { return {_mm512_##name##_pd(a.v, b.v)}; })
VSP_FLOAT_BINARY(add)
VSP_FLOAT_BINARY(sub)
VSP_FLOAT_BINARY(mul)
VSP_FLOAT_BINARY(max)
#undef VSP_FLOAT_BINARY
#undef VSP_UNARY
#undef VSP_BINARY
#undef VSP_SHIFT

// (a * b + 2^14) >> 15, saturated: -32768, which only -32768 * -32768 gives, turns into 32767 on the way down by one and
// up.
template <class V>
VSP_INLINE V mulRound(V a, V b) {
    const V minusOne = V::splat(-1);
    return subSat(add(mulRoundWrap(a, b), minusOne), minusOne);
}

// --- Pairs: 32-bit elements of two 16-bit ones -------------------------------------------------------------------------

// The bytes of a pattern in every 128 bits.
#define VSP_SHUFFLE_BYTES(name, ...)                                                                   \
    VSP_INLINE S16_128 name(S16_128 a) { return {_mm_shuffle_epi8(a.v, _mm_setr_epi8(__VA_ARGS__))}; } \
    VSP_IF_256(VSP_INLINE S16_256 name(S16_256 a) {                                                    \
        return {_mm256_shuffle_epi8(a.v, _mm256_broadcastsi128_si256(_mm_setr_epi8(__VA_ARGS__)))};    \
    })                                                                                                 \
    VSP_IF_512(VSP_INLINE S16_512 name(S16_512 a) {                                                    \
        return {_mm512_shuffle_epi8(a.v, _mm512_broadcast_i32x4(_mm_setr_epi8(__VA_ARGS__)))};         \
    })

VSP_SHUFFLE_BYTES(swapInPairs, 2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13)  // a[1], a[0], a[3], a[2], ...
VSP_SHUFFLE_BYTES(pairHalves, 0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15)   // a[0], a[4], a[1], a[5], ...
#undef VSP_SHUFFLE_BYTES

// The elements in reverse order.
VSP_INLINE S16_128 reversed(S16_128 a) {
    return {_mm_shuffle_epi8(a.v, _mm_setr_epi8(14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1))};
}
VSP_IF_256(VSP_INLINE S16_256 reversed(S16_256 a) {
    const __m128i lo = reversed(S16_128{_mm256_castsi256_si128(a.v)}).v;
    const __m128i hi = reversed(S16_128{_mm256_extracti128_si256(a.v, 1)}).v;
    return {_mm256_inserti128_si256(_mm256_castsi128_si256(hi), lo, 1)};
})

// a[0], b[0], a[1], b[1], ... saturated.
template <class V32>
VSP_INLINE auto packSatAlternating(V32 a, V32 b) {
    return pairHalves(packSat(a, b));
}

// a[0], b[0], a[1], b[1], ... at p.
VSP_INLINE void storeAlternating(S32_128 a, S32_128 b, Vsp32s* p) {
    zipLo(a, b).store(p);
    zipHi(a, b).store(p + 4);
}
VSP_IF_256(VSP_INLINE void storeAlternating(S32_256 a, S32_256 b, Vsp32s* p) {
    const __m256i lo = zipLo(a, b).v, hi = zipHi(a, b).v;
    S32_256{_mm256_permute2x128_si256(lo, hi, 0x20)}.store(p);
    S32_256{_mm256_permute2x128_si256(lo, hi, 0x31)}.store(p + 8);
})
VSP_IF_512(VSP_INLINE void storeAlternating(S32_512 a, S32_512 b, Vsp32s* p) {
    const __m512i lower = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    const __m512i upper = _mm512_setr_epi32(8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    S32_512{_mm512_permutex2var_epi32(a.v, lower, b.v)}.store(p);
    S32_512{_mm512_permutex2var_epi32(a.v, upper, b.v)}.store(p + 16);
})

// Both samples at p in every pair.
template <class V>
VSP_INLINE V splatPair(const Vsp16s* p) {
    Vsp32s pair;
    __builtin_memcpy(&pair, p, sizeof pair);
    return {Wide<V>::splat(pair).v};
}

// The first elements of the pairs from a, the second ones from b.
VSP_INLINE S16_128 firstAndSecond(S16_128 a, S16_128 b) { return {_mm_blend_epi16(a.v, b.v, 0xAA)}; }
VSP_IF_256(VSP_INLINE S16_256 firstAndSecond(S16_256 a, S16_256 b) { return {_mm256_blend_epi16(a.v, b.v, 0xAA)}; })

// The first element everywhere.
template <class V>
VSP_INLINE V splatFirst(S16_128 a) {
    if constexpr (sizeof(V) == 16) return {_mm_shuffle_epi8(a.v, _mm_set1_epi16(0x0100))};
    VSP_IF_256(else return {_mm256_broadcastw_epi16(a.v)};)
}

// How many elements of the vectors are greater than those of b.
VSP_INLINE int countGreater(const S16_128 (&a)[4], S16_128 b) {
    const auto greater = [&](int i) { return _mm_cmpgt_epi16(a[i].v, b.v); };
    const int low = _mm_movemask_epi8(_mm_packs_epi16(greater(0), greater(1)));
    const int high = _mm_movemask_epi8(_mm_packs_epi16(greater(2), greater(3)));
    return __builtin_popcount(Vsp32u(low) | Vsp32u(high) << 16);
}
VSP_IF_256(VSP_INLINE int countGreater(const S16_256 (&a)[2], S16_256 b) {
    const auto greater = [&](int i) { return _mm256_cmpgt_epi16(a[i].v, b.v); };
    return __builtin_popcount(Vsp32u(_mm256_movemask_epi8(_mm256_packs_epi16(greater(0), greater(1)))));
})

// --- Within a vector ---------------------------------------------------------------------------------------------------

VSP_INLINE Vsp16s first(S16_128 a) { return Vsp16s(_mm_cvtsi128_si32(a.v)); }

// Both 32-bit halves of every element as unsigned values, added.
template <class V>
VSP_INLINE V addHalves(V a) {
    return add(V{a.v & V::splat(0xFFFFFFFF).v}, shrU(a, 32));
}

// The lower half of the elements combined with the upper half: the sum, or the larger one as unsigned values.
VSP_IF_256(VSP_INLINE S64_128 foldSum(S64_256 a) {
    return add(S64_128{_mm256_castsi256_si128(a.v)}, S64_128{_mm256_extracti128_si256(a.v, 1)});
})
VSP_IF_512(VSP_INLINE S64_256 foldSum(S64_512 a) {
    return add(S64_256{_mm512_castsi512_si256(a.v)}, S64_256{_mm512_extracti64x4_epi64(a.v, 1)});
})
VSP_IF_256(VSP_INLINE S32_128 foldSum(S32_256 a) {
    return add(S32_128{_mm256_castsi256_si128(a.v)}, S32_128{_mm256_extracti128_si256(a.v, 1)});
})
VSP_IF_512(VSP_INLINE S32_256 foldSum(S32_512 a) {
    return add(S32_256{_mm512_castsi512_si256(a.v)}, S32_256{_mm512_extracti64x4_epi64(a.v, 1)});
})
VSP_IF_256(VSP_INLINE S16_128 foldMaxU(S16_256 a) {
    return maxU(S16_128{_mm256_castsi256_si128(a.v)}, S16_128{_mm256_extracti128_si256(a.v, 1)});
})
VSP_IF_512(VSP_INLINE S16_256 foldMaxU(S16_512 a) {
    return maxU(S16_256{_mm512_castsi512_si256(a.v)}, S16_256{_mm512_extracti64x4_epi64(a.v, 1)});
})

VSP_INLINE bool anyBit(S32_128 a) { return _mm_testz_si128(a.v, a.v) == 0; }
VSP_IF_256(VSP_INLINE bool anyBit(S32_256 a) { return _mm256_testz_si256(a.v, a.v) == 0; })
VSP_IF_512(VSP_INLINE bool anyBit(S32_512 a) { return _mm512_test_epi32_mask(a.v, a.v) != 0; })

VSP_IF_256(VSP_INLINE S32_128 foldMinU(S32_256 a) {
    return minU(S32_128{_mm256_castsi256_si128(a.v)}, S32_128{_mm256_extracti128_si256(a.v, 1)});
})
VSP_IF_512(VSP_INLINE S32_256 foldMinU(S32_512 a) {
    return minU(S32_256{_mm512_castsi512_si256(a.v)}, S32_256{_mm512_extracti64x4_epi64(a.v, 1)});
})

// The smallest element as an unsigned value.
VSP_INLINE Vsp32s smallestU(S32_128 a) {
    const S32_128 pairs = minU(a, S32_128{_mm_unpackhi_epi64(a.v, a.v)});
    return _mm_cvtsi128_si32(minU(pairs, S32_128{_mm_shuffle_epi32(pairs.v, 1)}).v);
}
template <class V>
VSP_INLINE Vsp32s smallestU(V a) {
    return smallestU(foldMinU(a));
}

VSP_INLINE Vsp64s sum(S64_128 a) { return _mm_cvtsi128_si64(a.v) + _mm_extract_epi64(a.v, 1); }
VSP_INLINE Vsp32s sum(S32_128 a) {  // wraps
    const __m128i pairs = _mm_add_epi32(a.v, _mm_unpackhi_epi64(a.v, a.v));
    return _mm_cvtsi128_si32(_mm_add_epi32(pairs, _mm_shuffle_epi32(pairs, 1)));
}
template <class V>
VSP_INLINE auto sum(V a) {
    return sum(foldSum(a));
}

VSP_INLINE Vsp32u largestU(S32_128 a) {
    const S32_128 pairs = maxU(a, S32_128{_mm_unpackhi_epi64(a.v, a.v)});
    return Vsp32u(_mm_cvtsi128_si32(maxU(pairs, S32_128{_mm_shuffle_epi32(pairs.v, 1)}).v));
}

// The sums of four vectors, each of which wraps.
VSP_INLINE S32_128 sums(S32_128 a, S32_128 b, S32_128 c, S32_128 d) {
    const __m128i ab = add(zipLo(a, b), zipHi(a, b)).v, cd = add(zipLo(c, d), zipHi(c, d)).v;
    return {_mm_add_epi32(_mm_unpacklo_epi64(ab, cd), _mm_unpackhi_epi64(ab, cd))};
}
VSP_IF_256(VSP_INLINE S32_128 sums(S32_256 a, S32_256 b, S32_256 c, S32_256 d) {
    const __m256i ab = add(zipLo(a, b), zipHi(a, b)).v, cd = add(zipLo(c, d), zipHi(c, d)).v;
    return foldSum(S32_256{_mm256_add_epi32(_mm256_unpacklo_epi64(ab, cd), _mm256_unpackhi_epi64(ab, cd))});
})

VSP_INLINE Vsp16u largestU(S16_128 a) {
    return Vsp16u(~_mm_cvtsi128_si32(_mm_minpos_epu16(_mm_xor_si128(a.v, _mm_set1_epi16(-1)))));
}

// --- Four values, from scalars and in double precision -----------------------------------------------------------------

VSP_INLINE F32_128 vectorOf(const Vsp32f (&x)[4]) { return {_mm_setr_ps(x[0], x[1], x[2], x[3])}; }
VSP_INLINE S32_128 vectorOf(const Vsp32s (&x)[4]) { return {_mm_setr_epi32(x[0], x[1], x[2], x[3])}; }

// Element i everywhere.
template <int i>
VSP_INLINE S32_128 splatElement(S32_128 a) {
    return {_mm_shuffle_epi32(a.v, 0x55 * i)};
}

// The lower halves of the elements i and i + 1 in every pair.
template <int i>
VSP_INLINE S16_128 splatLowerHalves(S32_128 a) {
    return {_mm_shuffle_epi8(a.v, _mm_set1_epi32(0x05040100 + 0x04040404 * i))};
}

VSP_INLINE S16_128 fourAt(const Vsp16s* p) { return {_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))}; }
VSP_INLINE void storeFour(S16_128 a, Vsp16s* p) { _mm_storel_epi64(reinterpret_cast<__m128i*>(p), a.v); }

// Sign-extended.
VSP_INLINE S32_128 widenFour(S16_128 a) { return {_mm_cvtepi16_epi32(a.v)}; }
VSP_INLINE S32_128 loadFour(const Vsp16s* p) { return widenFour(fourAt(p)); }

// The first n elements, of up to three; zeros behind them, or where the elements are all bits.
VSP_INLINE S32_128 loadFew(const Vsp16s* p, int n) {
    return vectorOf({p[0], n > 1 ? Vsp32s(p[1]) : 0, n > 2 ? Vsp32s(p[2]) : 0, 0});
}
VSP_INLINE S32_128 firstFew(int n) { return vectorOf({-1, n > 1 ? -1 : 0, n > 2 ? -1 : 0, 0}); }

#if defined(__AVX2__)
using FourDoubles = F64_256;
VSP_INLINE FourDoubles toDouble(F32_128 a) { return {_mm256_cvtps_pd(a.v)}; }
VSP_INLINE FourDoubles toDouble(S32_128 a) { return {_mm256_cvtepi32_pd(a.v)}; }
#else
struct FourDoubles {
    F64_128 lo, hi;
    [[gnu::always_inline]] static FourDoubles splat(Vsp64f x) { return {F64_128::splat(x), F64_128::splat(x)}; }
};
VSP_INLINE FourDoubles add(FourDoubles a, FourDoubles b) { return {add(a.lo, b.lo), add(a.hi, b.hi)}; }
VSP_INLINE FourDoubles mul(FourDoubles a, FourDoubles b) { return {mul(a.lo, b.lo), mul(a.hi, b.hi)}; }
VSP_INLINE FourDoubles toDouble(F32_128 a) { return {{_mm_cvtps_pd(a.v)}, {_mm_cvtps_pd(_mm_movehl_ps(a.v, a.v))}}; }
VSP_INLINE FourDoubles toDouble(S32_128 a) {
    return {{_mm_cvtepi32_pd(a.v)}, {_mm_cvtepi32_pd(_mm_unpackhi_epi64(a.v, a.v))}};
}
#endif

// Bit i tells whether a[i] > b[i].
VSP_INLINE Vsp32u greater(F32_128 a, F32_128 b) { return Vsp32u(_mm_movemask_ps(_mm_cmpgt_ps(a.v, b.v))); }
VSP_INLINE Vsp32u greater(FourDoubles a, FourDoubles b) {
#if defined(__AVX2__)
    return Vsp32u(_mm256_movemask_pd(_mm256_cmp_pd(a.v, b.v, _CMP_GT_OS)));
#else
    const __m128 lo = _mm_castpd_ps(_mm_cmpgt_pd(a.lo.v, b.lo.v)), hi = _mm_castpd_ps(_mm_cmpgt_pd(a.hi.v, b.hi.v));
    return Vsp32u(_mm_movemask_ps(_mm_shuffle_ps(lo, hi, 0x88)));
#endif
}

}  // namespace vsp::VSP_LEVEL
