// Sixteen bands at once, in as many vectors as they take, and a single one: functions that are written for either.
#pragma once

#include "ec/near_speech.h"
#include "ec/partial_sums.h"
#include "vector/complex_vector.h"

namespace vsp::VSP_LEVEL {

// --- Vectors -----------------------------------------------------------------------------------------------------------

VSP_INLINE F32_128 quotient(F32_128 a, F32_128 b) { return {_mm_div_ps(a.v, b.v)}; }
VSP_INLINE F32_128 larger(F32_128 a, F32_128 b) { return {_mm_max_ps(a.v, b.v)}; }
VSP_INLINE F32_128 upTo(F32_128 a, F32_128 most) { return {_mm_and_ps(a.v, _mm_cmple_ps(a.v, most.v))}; }
VSP_INLINE F32_128 floatsAs(F32_128, const Vsp32f* p) { return F32_128::load(p); }
VSP_INLINE F32_128 floatsAs(F32_128, const Vsp32s* p) { return {_mm_cvtepi32_ps(S32_128::load(p).v)}; }
#if defined(__AVX2__)
VSP_INLINE F32_256 quotient(F32_256 a, F32_256 b) { return {_mm256_div_ps(a.v, b.v)}; }
VSP_INLINE F32_256 larger(F32_256 a, F32_256 b) { return {_mm256_max_ps(a.v, b.v)}; }
VSP_INLINE F32_256 upTo(F32_256 a, F32_256 most) { return {_mm256_and_ps(a.v, _mm256_cmp_ps(a.v, most.v, _CMP_LE_OS))}; }
VSP_INLINE F32_256 floatsAs(F32_256, const Vsp32f* p) { return F32_256::load(p); }
VSP_INLINE F32_256 floatsAs(F32_256, const Vsp32s* p) { return {_mm256_cvtepi32_ps(S32_256::load(p).v)}; }
#endif
#if defined(__AVX512F__)
struct Floats_512 {
    using Elem = Vsp32f;
    static constexpr int width = 16;
    __m512 v;
    [[gnu::always_inline]] static Floats_512 splat(Vsp32f x) { return {_mm512_set1_ps(x)}; }
    [[gnu::always_inline]] static Floats_512 load(const Vsp32f* p) { return {_mm512_loadu_ps(p)}; }
    [[gnu::always_inline]] void store(Vsp32f* p) const { _mm512_storeu_ps(p, v); }
};
VSP_INLINE Floats_512 add(Floats_512 a, Floats_512 b) { return {_mm512_add_ps(a.v, b.v)}; }
VSP_INLINE Floats_512 sub(Floats_512 a, Floats_512 b) { return {_mm512_sub_ps(a.v, b.v)}; }
VSP_INLINE Floats_512 mul(Floats_512 a, Floats_512 b) { return {_mm512_mul_ps(a.v, b.v)}; }
VSP_INLINE Floats_512 quotient(Floats_512 a, Floats_512 b) { return {_mm512_div_ps(a.v, b.v)}; }
VSP_INLINE Floats_512 larger(Floats_512 a, Floats_512 b) { return {_mm512_max_ps(a.v, b.v)}; }
VSP_INLINE Floats_512 upTo(Floats_512 a, Floats_512 most) {
    return {_mm512_maskz_mov_ps(_mm512_cmp_ps_mask(a.v, most.v, _CMP_LE_OS), a.v)};
}
VSP_INLINE Floats_512 floatsAs(Floats_512, const Vsp32f* p) { return Floats_512::load(p); }
VSP_INLINE Floats_512 floatsAs(Floats_512, const Vsp32s* p) { return {_mm512_cvtepi32_ps(S32_512::load(p).v)}; }
VSP_INLINE Complex<Floats_512> pairsOf(Floats_512 a, Floats_512 b) {
    const __m512i even = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
    const __m512i odd = _mm512_setr_epi32(1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
    return {{_mm512_permutex2var_ps(a.v, even, b.v)}, {_mm512_permutex2var_ps(a.v, odd, b.v)}};
}
using Floats = Floats_512;
#else
using Floats = Sliding32f;
#endif

// The bits of the values.
VSP_INLINE S32_128 bitsOf(F32_128 a) { return {_mm_castps_si128(a.v)}; }
VSP_IF_256(VSP_INLINE S32_256 bitsOf(F32_256 a) { return {_mm256_castps_si256(a.v)}; })
VSP_IF_512(VSP_INLINE S32_512 bitsOf(Floats_512 a) { return {_mm512_castps_si512(a.v)}; })

VSP_INLINE S32_128 shiftedUp(S32_128 a, int n) { return {_mm_slli_epi32(a.v, n)}; }
VSP_IF_256(VSP_INLINE S32_256 shiftedUp(S32_256 a, int n) { return {_mm256_slli_epi32(a.v, n)}; })
VSP_IF_512(VSP_INLINE S32_512 shiftedUp(S32_512 a, int n) { return {_mm512_slli_epi32(a.v, unsigned(n))}; })

VSP_IF_512(VSP_INLINE void storeAlternating(S32_512 a, S32_512 b, Vsp32s* p) {
    const __m512i lower = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    const __m512i upper = _mm512_setr_epi32(8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    _mm512_storeu_si512(p, _mm512_permutex2var_epi32(a.v, lower, b.v));
    _mm512_storeu_si512(p + 16, _mm512_permutex2var_epi32(a.v, upper, b.v));
})

// --- Sixteen values ----------------------------------------------------------------------------------------------------

struct Sixteen {
    using V = Floats;
    static constexpr int width = kPartialSums, vectors = width / V::width;
    V part[vectors];

    Sixteen() = default;
    [[gnu::always_inline]] Sixteen(Vsp32f x) {  // NOLINT(google-explicit-constructor): stands for sixteen of it
        for (int i = 0; i < vectors; i++) part[i] = V::splat(x);
    }
};

template <class Op>
VSP_INLINE Sixteen sixteen(Op op) {
    Sixteen a;
    for (int i = 0; i < Sixteen::vectors; i++) a.part[i] = op(i);
    return a;
}

VSP_INLINE Sixteen operator+(const Sixteen& a, const Sixteen& b) {
    return sixteen([&](int i) { return add(a.part[i], b.part[i]); });
}
VSP_INLINE Sixteen operator-(const Sixteen& a, const Sixteen& b) {
    return sixteen([&](int i) { return sub(a.part[i], b.part[i]); });
}
VSP_INLINE Sixteen operator*(const Sixteen& a, const Sixteen& b) {
    return sixteen([&](int i) { return mul(a.part[i], b.part[i]); });
}
VSP_INLINE Sixteen operator/(const Sixteen& a, const Sixteen& b) {
    return sixteen([&](int i) { return quotient(a.part[i], b.part[i]); });
}
VSP_INLINE Sixteen larger(const Sixteen& a, const Sixteen& b) {
    return sixteen([&](int i) { return larger(a.part[i], b.part[i]); });
}
// Zero where a is more, or no number.
VSP_INLINE Sixteen upTo(const Sixteen& a, const Sixteen& most) {
    return sixteen([&](int i) { return upTo(a.part[i], most.part[i]); });
}
VSP_INLINE Vsp32f upTo(Vsp32f a, Vsp32f most) { return a <= most ? a : 0; }

// --- Either of them ----------------------------------------------------------------------------------------------------

template <class T>
constexpr bool isSingle = sizeof(T) == sizeof(Vsp32f);

template <class T>
VSP_INLINE T valuesAt(const Vsp32f* p) {
    if constexpr (isSingle<T>)
        return *p;
    else
        return sixteen([p](int i) { return T::V::load(p + i * T::V::width); });
}

VSP_INLINE void store(Vsp32f a, Vsp32f* p) { *p = a; }
VSP_INLINE void store(const Sixteen& a, Vsp32f* p) {
    for (int i = 0; i < Sixteen::vectors; i++) a.part[i].store(p + i * Sixteen::V::width);
}

// The bands at p, floating or fixed point.
template <class T, class Band>
VSP_INLINE Complex<T> bandsAt(const Band* p) {
    if constexpr (isSingle<T>) {
        return {Vsp32f(p->re), Vsp32f(p->im)};
    } else {
        using V = typename T::V;
        const auto pairs = [p](int i) {
            const auto* const from = &p->re + 2 * i * V::width;
            return pairsOf(floatsAs(V(), from), floatsAs(V(), from + V::width));
        };
        return {sixteen([&](int i) { return pairs(i).re; }), sixteen([&](int i) { return pairs(i).im; })};
    }
}
template <class T, class Band>
VSP_INLINE Complex<T> bandsAt(const Band* p, Vsp32f unit) {
    const Complex<T> z = bandsAt<T>(p);
    return {unit * z.re, unit * z.im};
}

template <class T>
VSP_INLINE T powerOf(const Complex<T>& z) {
    return z.re * z.re + z.im * z.im;
}

// The sum of the squares of each band's values at k of some vectors: of real and of imaginary parts first.
template <class T, class Band>
VSP_INLINE T squaresAt(const Band* const* rows, Vsp32s count, Vsp32s k) {
    if constexpr (isSingle<T>) {
        Complex<T> sum = {0, 0};
        for (Vsp32s t = 0; t < count; t++) {
            const Complex<T> z = bandsAt<T>(rows[t] + k);
            sum.re += z.re * z.re;
            sum.im += z.im * z.im;
        }
        return sum.re + sum.im;
    } else {
        using V = typename T::V;
        V sums[2 * T::vectors] = {};
        for (Vsp32s t = 0; t < count; t++) {
            for (int i = 0; i < 2 * T::vectors; i++) {
                const V x = floatsAs(V(), &rows[t][k].re + i * V::width);
                sums[i] = add(sums[i], mul(x, x));
            }
        }
        return sixteen([&](int i) {
            const Complex<V> pairs = pairsOf(sums[2 * i], sums[2 * i + 1]);
            return add(pairs.re, pairs.im);
        });
    }
}

// A sum over bands, in the parts that every level has.
struct BandSum {
    Vsp32f parts[kPartialSums];
    [[gnu::always_inline]] void clear() { store(Sixteen(0), parts); }
    [[gnu::always_inline]] void add(Vsp32s k, Vsp32f x) { parts[k % kPartialSums] += x; }
    [[gnu::always_inline]] void add(Vsp32s, const Sixteen& x) { store(valuesAt<Sixteen>(parts) + x, parts); }
    [[gnu::always_inline]] Vsp32f total() { return sumOfParts(parts); }
};

template <class... Sums>
VSP_INLINE void clear(Sums&... sums) {
    (sums.clear(), ...);
}

// Calls op.operator()<T>(k) for the bands 0 .. count-1, sixteen at a time and then one by one.
template <class Op>
VSP_INLINE void forSixteens(Vsp32s count, Op op) {
    Vsp32s k = 0;
    for (; count - k >= Sixteen::width; k += Sixteen::width) op.template operator()<Sixteen>(k);
    for (; k < count; k++) op.template operator()<Vsp32f>(k);
}

}  // namespace vsp::VSP_LEVEL
