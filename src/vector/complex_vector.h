// Vectors of complex numbers, real and imaginary parts apart, and what moves them between the layouts of a transform.
#pragma once

#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

// One element with the interface of a vector, for transforms that are shorter than a vector.
template <class T>
struct Single {
    using Elem = T;
    static constexpr int width = 1;
    T v;
    [[gnu::always_inline]] static Single splat(T x) { return {x}; }
    [[gnu::always_inline]] static Single load(const T* p) {
        Single a;
        __builtin_memcpy(&a.v, p, sizeof a.v);
        return a;
    }
    [[gnu::always_inline]] void store(T* p) const { __builtin_memcpy(p, &v, sizeof v); }
};
using F32_1 = Single<Vsp32f>;
using F64_1 = Single<Vsp64f>;

VSP_INLINE F32_1 add(F32_1 a, F32_1 b) { return {a.v + b.v}; }
VSP_INLINE F32_1 sub(F32_1 a, F32_1 b) { return {a.v - b.v}; }
VSP_INLINE F32_1 mul(F32_1 a, F32_1 b) { return {a.v * b.v}; }
VSP_INLINE F64_1 add(F64_1 a, F64_1 b) { return {a.v + b.v}; }
VSP_INLINE F64_1 sub(F64_1 a, F64_1 b) { return {a.v - b.v}; }
VSP_INLINE F64_1 mul(F64_1 a, F64_1 b) { return {a.v * b.v}; }

template <class V>
struct Complex {
    V re, im;
};

template <class V>
VSP_INLINE Complex<V> add(Complex<V> a, Complex<V> b) {
    return {add(a.re, b.re), add(a.im, b.im)};
}
template <class V>
VSP_INLINE Complex<V> sub(Complex<V> a, Complex<V> b) {
    return {sub(a.re, b.re), sub(a.im, b.im)};
}
template <class V>
VSP_INLINE Complex<V> mul(Complex<V> a, Complex<V> b) {
    return {sub(mul(a.re, b.re), mul(a.im, b.im)), add(mul(a.re, b.im), mul(a.im, b.re))};
}
// a * conj(b)
template <class V>
VSP_INLINE Complex<V> mulConj(Complex<V> a, Complex<V> b) {
    return {add(mul(a.re, b.re), mul(a.im, b.im)), sub(mul(a.im, b.re), mul(a.re, b.im))};
}
template <class V>
VSP_INLINE Complex<V> scale(Complex<V> a, V factor) {
    return {mul(a.re, factor), mul(a.im, factor)};
}
// a - j b and a + j b
template <class V>
VSP_INLINE Complex<V> subJ(Complex<V> a, Complex<V> b) {
    return {add(a.re, b.im), sub(a.im, b.re)};
}
template <class V>
VSP_INLINE Complex<V> addJ(Complex<V> a, Complex<V> b) {
    return {sub(a.re, b.im), add(a.im, b.re)};
}
template <class V>
VSP_INLINE Complex<V> swapParts(Complex<V> a) {
    return {a.im, a.re};
}

// --- The first element -------------------------------------------------------------------------------------------------

template <class T>
VSP_INLINE T first(Single<T> a) {
    return a.v;
}
VSP_INLINE Vsp32f first(F32_128 a) { return _mm_cvtss_f32(a.v); }
VSP_INLINE Vsp64f first(F64_128 a) { return _mm_cvtsd_f64(a.v); }
VSP_IF_256(VSP_INLINE Vsp32f first(F32_256 a) { return _mm256_cvtss_f32(a.v); })
VSP_IF_256(VSP_INLINE Vsp64f first(F64_256 a) { return _mm256_cvtsd_f64(a.v); })

// The first element of the second, the others of the first.
template <class T>
VSP_INLINE Single<T> withFirstOf(Single<T>, Single<T> b) {
    return b;
}
VSP_INLINE F32_128 withFirstOf(F32_128 a, F32_128 b) { return {_mm_blend_ps(a.v, b.v, 1)}; }
VSP_INLINE F64_128 withFirstOf(F64_128 a, F64_128 b) { return {_mm_blend_pd(a.v, b.v, 1)}; }
VSP_IF_256(VSP_INLINE F32_256 withFirstOf(F32_256 a, F32_256 b) { return {_mm256_blend_ps(a.v, b.v, 1)}; })
VSP_IF_256(VSP_INLINE F64_256 withFirstOf(F64_256 a, F64_256 b) { return {_mm256_blend_pd(a.v, b.v, 1)}; })

// --- Order of the elements ---------------------------------------------------------------------------------------------

template <class T>
VSP_INLINE Single<T> reverse(Single<T> a) {
    return a;
}
VSP_INLINE F32_128 reverse(F32_128 a) { return {_mm_shuffle_ps(a.v, a.v, 0x1B)}; }
VSP_INLINE F64_128 reverse(F64_128 a) { return {_mm_shuffle_pd(a.v, a.v, 1)}; }
VSP_IF_256(VSP_INLINE F32_256 reverse(F32_256 a) {
    return {_mm256_permutevar8x32_ps(a.v, _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0))};
})
VSP_IF_256(VSP_INLINE F64_256 reverse(F64_256 a) { return {_mm256_permute4x64_pd(a.v, 0x1B)}; })

// All but the first element reversed.
template <class T>
VSP_INLINE Single<T> reverseRest(Single<T> a) {
    return a;
}
VSP_INLINE F32_128 reverseRest(F32_128 a) { return {_mm_shuffle_ps(a.v, a.v, 0x6C)}; }
VSP_INLINE F64_128 reverseRest(F64_128 a) { return a; }
VSP_IF_256(VSP_INLINE F32_256 reverseRest(F32_256 a) {
    return {_mm256_permutevar8x32_ps(a.v, _mm256_setr_epi32(0, 7, 6, 5, 4, 3, 2, 1))};
})
VSP_IF_256(VSP_INLINE F64_256 reverseRest(F64_256 a) { return {_mm256_permute4x64_pd(a.v, 0x6C)}; })

// --- A square of as many vectors as elements ----------------------------------------------------------------------------

template <class T>
VSP_INLINE void transpose(Single<T> (&)[1]) {}

VSP_INLINE void transpose(F64_128 (&a)[2]) {
    const __m128d x = a[0].v, y = a[1].v;
    a[0].v = _mm_unpacklo_pd(x, y);
    a[1].v = _mm_unpackhi_pd(x, y);
}

VSP_INLINE void transpose(F32_128 (&a)[4]) {
    const __m128 lo01 = _mm_unpacklo_ps(a[0].v, a[1].v), hi01 = _mm_unpackhi_ps(a[0].v, a[1].v);
    const __m128 lo23 = _mm_unpacklo_ps(a[2].v, a[3].v), hi23 = _mm_unpackhi_ps(a[2].v, a[3].v);
    a[0].v = _mm_movelh_ps(lo01, lo23);
    a[1].v = _mm_movehl_ps(lo23, lo01);
    a[2].v = _mm_movelh_ps(hi01, hi23);
    a[3].v = _mm_movehl_ps(hi23, hi01);
}

#if defined(__AVX2__)
VSP_INLINE void transpose(F64_256 (&a)[4]) {
    const __m256d lo01 = _mm256_unpacklo_pd(a[0].v, a[1].v), hi01 = _mm256_unpackhi_pd(a[0].v, a[1].v);
    const __m256d lo23 = _mm256_unpacklo_pd(a[2].v, a[3].v), hi23 = _mm256_unpackhi_pd(a[2].v, a[3].v);
    a[0].v = _mm256_permute2f128_pd(lo01, lo23, 0x20);
    a[1].v = _mm256_permute2f128_pd(hi01, hi23, 0x20);
    a[2].v = _mm256_permute2f128_pd(lo01, lo23, 0x31);
    a[3].v = _mm256_permute2f128_pd(hi01, hi23, 0x31);
}

// Four rows within 128-bit lanes, then the lanes of the upper four with those of the lower four.
VSP_INLINE void transpose(F32_256 (&a)[8]) {
    __m256 rows[8];
    for (int i = 0; i < 8; i += 4) {
        const __m256 lo01 = _mm256_unpacklo_ps(a[i].v, a[i + 1].v), hi01 = _mm256_unpackhi_ps(a[i].v, a[i + 1].v);
        const __m256 lo23 = _mm256_unpacklo_ps(a[i + 2].v, a[i + 3].v), hi23 = _mm256_unpackhi_ps(a[i + 2].v, a[i + 3].v);
        rows[i] = _mm256_shuffle_ps(lo01, lo23, 0x44);
        rows[i + 1] = _mm256_shuffle_ps(lo01, lo23, 0xEE);
        rows[i + 2] = _mm256_shuffle_ps(hi01, hi23, 0x44);
        rows[i + 3] = _mm256_shuffle_ps(hi01, hi23, 0xEE);
    }
    for (int i = 0; i < 4; i++) {
        a[i].v = _mm256_permute2f128_ps(rows[i], rows[i + 4], 0x20);
        a[i + 4].v = _mm256_permute2f128_ps(rows[i], rows[i + 4], 0x31);
    }
}
#endif

// --- Real and imaginary parts in turn ----------------------------------------------------------------------------------

template <class T>
VSP_INLINE Complex<Single<T>> pairsOf(Single<T> a, Single<T> b) {
    return {a, b};
}
VSP_INLINE Complex<F32_128> pairsOf(F32_128 a, F32_128 b) {
    return {{_mm_shuffle_ps(a.v, b.v, 0x88)}, {_mm_shuffle_ps(a.v, b.v, 0xDD)}};
}
VSP_INLINE Complex<F64_128> pairsOf(F64_128 a, F64_128 b) {
    return {{_mm_unpacklo_pd(a.v, b.v)}, {_mm_unpackhi_pd(a.v, b.v)}};
}
#if defined(__AVX2__)
VSP_INLINE Complex<F32_256> pairsOf(F32_256 a, F32_256 b) {
    const __m256 lo = _mm256_permute2f128_ps(a.v, b.v, 0x20), hi = _mm256_permute2f128_ps(a.v, b.v, 0x31);
    return {{_mm256_shuffle_ps(lo, hi, 0x88)}, {_mm256_shuffle_ps(lo, hi, 0xDD)}};
}
#endif
VSP_IF_512(VSP_INLINE Complex<F32_512> pairsOf(F32_512 a, F32_512 b) {
    const __m512i even = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
    const __m512i odd = _mm512_setr_epi32(1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
    return {{_mm512_permutex2var_ps(a.v, even, b.v)}, {_mm512_permutex2var_ps(a.v, odd, b.v)}};
})

template <class V>
VSP_INLINE Complex<V> loadPairs(const typename V::Elem* p) {
    return pairsOf(V::load(p), V::load(p + V::width));
}

template <class T>
VSP_INLINE void storePairs(Complex<Single<T>> a, T* p) {
    a.re.store(p);
    a.im.store(p + 1);
}
VSP_INLINE void storePairs(Complex<F32_128> a, Vsp32f* p) {
    _mm_storeu_ps(p, _mm_unpacklo_ps(a.re.v, a.im.v));
    _mm_storeu_ps(p + 4, _mm_unpackhi_ps(a.re.v, a.im.v));
}
#if defined(__AVX2__)
VSP_INLINE void storePairs(Complex<F32_256> a, Vsp32f* p) {
    const __m256 lo = _mm256_unpacklo_ps(a.re.v, a.im.v), hi = _mm256_unpackhi_ps(a.re.v, a.im.v);
    _mm256_storeu_ps(p, _mm256_permute2f128_ps(lo, hi, 0x20));
    _mm256_storeu_ps(p + 8, _mm256_permute2f128_ps(lo, hi, 0x31));
}
#endif

}  // namespace vsp::VSP_LEVEL
