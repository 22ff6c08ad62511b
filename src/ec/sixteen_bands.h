// Sixteen bands at once, in as many vectors as they take, and a single one: functions that are written for either.
#pragma once

#include "ec/near_speech.h"
#include "ec/partial_sums.h"
#include "vector/complex_vector.h"

namespace vsp::VSP_LEVEL {

// --- Vectors -----------------------------------------------------------------------------------------------------------

VSP_INLINE F32_128 quotient(F32_128 a, F32_128 b) { return {_mm_div_ps(a.v, b.v)}; }
VSP_INLINE F32_128 upTo(F32_128 a, F32_128 most) { return {_mm_and_ps(a.v, _mm_cmple_ps(a.v, most.v))}; }
VSP_INLINE F32_128 floatsAs(F32_128, const Vsp32f* p) { return F32_128::load(p); }
VSP_INLINE F32_128 floatsAs(F32_128, const Vsp32s* p) { return {_mm_cvtepi32_ps(S32_128::load(p).v)}; }
#if defined(__AVX2__)
VSP_INLINE F32_256 quotient(F32_256 a, F32_256 b) { return {_mm256_div_ps(a.v, b.v)}; }
VSP_INLINE F32_256 upTo(F32_256 a, F32_256 most) { return {_mm256_and_ps(a.v, _mm256_cmp_ps(a.v, most.v, _CMP_LE_OS))}; }
VSP_INLINE F32_256 floatsAs(F32_256, const Vsp32f* p) { return F32_256::load(p); }
VSP_INLINE F32_256 floatsAs(F32_256, const Vsp32s* p) { return {_mm256_cvtepi32_ps(S32_256::load(p).v)}; }
#endif
#if defined(__AVX512F__)
VSP_INLINE F32_512 quotient(F32_512 a, F32_512 b) { return {_mm512_div_ps(a.v, b.v)}; }
VSP_INLINE F32_512 upTo(F32_512 a, F32_512 most) {
    return {_mm512_maskz_mov_ps(_mm512_cmp_ps_mask(a.v, most.v, _CMP_LE_OS), a.v)};
}
VSP_INLINE F32_512 floatsAs(F32_512, const Vsp32f* p) { return F32_512::load(p); }
VSP_INLINE F32_512 floatsAs(F32_512, const Vsp32s* p) { return {_mm512_cvtepi32_ps(S32_512::load(p).v)}; }
#endif

// The bits of the values.
VSP_INLINE S32_128 bitsOf(F32_128 a) { return {_mm_castps_si128(a.v)}; }
VSP_IF_256(VSP_INLINE S32_256 bitsOf(F32_256 a) { return {_mm256_castps_si256(a.v)}; })
VSP_IF_512(VSP_INLINE S32_512 bitsOf(F32_512 a) { return {_mm512_castps_si512(a.v)}; })

// --- Sixteen values ----------------------------------------------------------------------------------------------------

struct Sixteen {
    using V = F32;
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
    return sixteen([&](int i) { return max(a.part[i], b.part[i]); });
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
