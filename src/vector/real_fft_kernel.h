// Real transforms over vectors V, float or double. The same butterflies at every width, so the same bits.
//
// A source has load<V>(i), a sink store(i, a), for the pairs of samples or the bins i, i+1, ...
// The inverse complex transform is the forward one with real and imaginary parts exchanged before and after.
#pragma once

#include "vector/fft_butterflies.h"
#include "vector/real_fft_plan.h"

namespace vsp::VSP_LEVEL {

// f(Constant<0>()), f(Constant<1>()), ..., f(Constant<n-1>())
template <int i>
struct Constant {
    constexpr operator int() const { return i; }
};
template <int n, int i = 0, class F>
VSP_INLINE void unrolled(F f) {
    if constexpr (i < n) {
        f(Constant<i>());
        unrolled<n, i + 1>(f);
    }
}
#define VSP_LAMBDA_INLINE __attribute__((always_inline))

// f(0), f(1), ..., f(n-1): as straight code where the transform stays within the registers, else in a loop.
template <int n, bool withinRegisters, class F>
VSP_INLINE void repeated(F f) {
    if constexpr (withinRegisters)
        unrolled<n>(f);
    else
        for (int i = 0; i < n; i++) f(i);
}
#if defined(__AVX512VL__)
constexpr int kMostVectorsInRegisters = 32;  // complex ones: what does not fit is spilled
#else
constexpr int kMostVectorsInRegisters = 16;
#endif

// Elements i ... of an array in groups; i is a multiple of the width.
template <class V, int group = kFftGroup>
VSP_INLINE Complex<V> loadGroup(const typename V::Elem* array, int i) {
    const typename V::Elem* p = array + 2 * (i - i % group) + i % group;
    return {V::load(p), V::load(p + group)};
}
template <class V>
VSP_INLINE void storeGroup(typename V::Elem* array, int i, Complex<V> a) {
    typename V::Elem* p = array + 2 * (i - i % kFftGroup) + i % kFftGroup;
    a.re.store(p);
    a.im.store(p + kFftGroup);
}

// --- Between the spectrum of the pairs, Z, and that of the samples, X --------------------------------------------------

// Z[M-k], Z[M-k-1], ... from the vectors that begin at M-k-width and at M-k.
template <class V>
VSP_INLINE V mirrored(V before, V at) {
    return reverseRest(withFirstOf(before, at));
}
template <class V>
VSP_INLINE Complex<V> mirrored(Complex<V> before, Complex<V> at) {
    return {mirrored(before.re, at.re), mirrored(before.im, at.im)};
}
template <class V>
VSP_INLINE Complex<V> reverse(Complex<V> a) {
    return {reverse(a.re), reverse(a.im)};
}
template <class V>
VSP_INLINE V withoutFirst(V a) {
    return withFirstOf(a, V::splat(0));
}

template <class V>
struct Mirror {
    Complex<V> low, high;  // elements k, k+1, ... and M-k, M-k-1, ...
};

// From sum / 2 and difference of low and conj(high), w = -0.5 j exp(-j 2 pi k / N).
template <class V>
VSP_INLINE Mirror<V> samplesSpectrum(Mirror<V> z, Complex<V> w) {
    const Complex<V> sum = {add(z.low.re, z.high.re), sub(z.low.im, z.high.im)};
    const Complex<V> dif = {sub(z.low.re, z.high.re), add(z.low.im, z.high.im)};
    const Complex<V> e = scale(sum, V::splat(0.5)), o = mul(dif, w);
    return {add(e, o), {sub(e.re, o.re), sub(o.im, e.im)}};
}

// The way back; Z comes out times 2 factor.
template <class V>
VSP_INLINE Mirror<V> pairsSpectrum(Mirror<V> x, Complex<V> w, V factor) {
    const Complex<V> sum = {add(x.low.re, x.high.re), sub(x.low.im, x.high.im)};
    const Complex<V> dif = {sub(x.low.re, x.high.re), add(x.low.im, x.high.im)};
    const Complex<V> e = scale(sum, factor), o = mulConj(scale(dif, add(factor, factor)), w);
    return {add(e, o), {sub(e.re, o.re), sub(o.im, e.im)}};
}

// Bins 0 and M are real.
template <class V>
VSP_INLINE Mirror<V> realFirst(Mirror<V> x) {
    return {{x.low.re, withoutFirst(x.low.im)}, {x.high.re, withoutFirst(x.high.im)}};
}

template <class V, class Sink>
VSP_INLINE void storeMirror(Mirror<V> x, int k, int points, Sink sink) {
    sink.store(k, x.low);
    sink.store(points - k - V::width + 1, reverse(x.high));
}

template <class V, class Source>
VSP_INLINE Mirror<V> loadMirror(int k, int points, Source source) {
    return {source.template load<V>(k), reverse(source.template load<V>(points - k - V::width + 1))};
}

// Bin M/2 on its own: X is conj(Z).
template <class V, class Sink>
VSP_INLINE void storeMiddle(Complex<V> z, int k, Sink sink) {
    using One = Single<typename V::Elem>;
    sink.store(k, Complex<One>{{first(z.re)}, {-first(z.im)}});
}
template <class V, class Source>
VSP_INLINE Complex<V> middle(Source source, int k, V factor) {
    using One = Single<typename V::Elem>;
    const Complex<One> x = source.template load<One>(k);
    return scale(Complex<V>{V::splat(x.re.v), V::splat(-x.im.v)}, add(factor, factor));
}

// --- Short transforms, of M = R * L points -----------------------------------------------------------------------------

// load(i) gives a vector of pairs, store(i, a) takes one of the spectrum.
template <class V, int R, int L, class Load, class Store>
VSP_INLINE void transform(Load load, const typename V::Elem* table, Store store) {
    constexpr int W = V::width, group = smallerOf(kFftGroup, L);
    constexpr bool withinRegisters = R * L / W <= kMostVectorsInRegisters;
    Complex<V> rows[R][L / W];
    repeated<L / W, withinRegisters>([&](auto v) VSP_LAMBDA_INLINE {
        Complex<V> x[R];
        unrolled<R>([&](auto r) VSP_LAMBDA_INLINE { x[r] = load(r * L + v * W); });
        butterfly(x);
        rows[0][v] = x[0];
        unrolled<R - 1>([&](auto r) VSP_LAMBDA_INLINE {
            const auto* column = table + 2 * (R - 1) * (v * W - v * W % group);
            rows[r + 1][v] = mul(x[r + 1], loadGroup<V, group>(column, r * group + v * W % group));
        });
    });
    repeated<R / W, withinRegisters>([&](auto v) VSP_LAMBDA_INLINE {
        Complex<V> x[L];
        unrolled<L / W>([&](auto part) VSP_LAMBDA_INLINE {
            V re[W], im[W];
            unrolled<W>([&](auto i) VSP_LAMBDA_INLINE {
                re[i] = rows[v * W + i][part].re;
                im[i] = rows[v * W + i][part].im;
            });
            transpose(re);
            transpose(im);
            unrolled<W>([&](auto i) VSP_LAMBDA_INLINE { x[part * W + i] = {re[i], im[i]}; });
        });
        butterfly(x);
        unrolled<L>([&](auto k) VSP_LAMBDA_INLINE { store(k * R + v * W, x[k]); });
    });
}

template <class V, int R, int L, class Source, class Sink>
static void forwardSmall(Source source, Sink sink, const typename V::Elem* tables) {
    constexpr int W = V::width, points = R * L, vectors = points / W, group = smallerOf(kFftGroup, points / 2);
    Complex<V> z[vectors];
    transform<V, R, L>([&](int i) VSP_LAMBDA_INLINE { return source.template load<V>(i); }, tables + points,
                       [&](int i, Complex<V> a) VSP_LAMBDA_INLINE { z[i / W] = a; });
    repeated<vectors / 2, vectors <= kMostVectorsInRegisters>([&](auto v) VSP_LAMBDA_INLINE {
        const Mirror<V> both = {z[v], mirrored(z[vectors - 1 - v], z[(vectors - v) % vectors])};
        const Mirror<V> x = samplesSpectrum(both, loadGroup<V, group>(tables, v * W));
        storeMirror(v == 0 ? realFirst(x) : x, v * W, points, sink);
    });
    storeMiddle(z[vectors / 2], points / 2, sink);
}

template <class V, int R, int L, class Source, class Sink>
static void inverseSmall(Source source, Sink sink, const typename V::Elem* tables, typename V::Elem oneByN) {
    const V factor = V::splat(oneByN);
    constexpr int W = V::width, points = R * L, vectors = points / W, group = smallerOf(kFftGroup, points / 2);
    Complex<V> z[vectors], after = middle<V>(source, points / 2, factor);
    repeated<vectors / 2, vectors <= kMostVectorsInRegisters>([&](auto i) VSP_LAMBDA_INLINE {
        const int v = vectors / 2 - 1 - i;
        const Mirror<V> x = loadMirror<V>(v * W, points, source);
        const Mirror<V> both = pairsSpectrum(v == 0 ? realFirst(x) : x, loadGroup<V, group>(tables, v * W), factor);
        z[v] = both.low;
        z[vectors - 1 - v] = mirrored(both.high, after);
        after = both.high;
    });
    transform<V, R, L>([&](int i) VSP_LAMBDA_INLINE { return swapParts(z[i / W]); }, tables + points,
                       [&](int i, Complex<V> a) VSP_LAMBDA_INLINE { sink.store(i, swapParts(a)); });
}

// --- Longer ones, in a work array in groups ----------------------------------------------------------------------------

// One pass over a block of R * columns points.
template <class V, int R, class Load, class Store>
VSP_INLINE void pass(Load load, Store store, int columns, const typename V::Elem* table) {
    for (int c = 0; c < columns; c += V::width) {
        Complex<V> x[R];
        unrolled<R>([&](auto r) VSP_LAMBDA_INLINE { x[r] = load(r * columns + c); });
        butterfly(x);
        store(c, x[0]);
        const typename V::Elem* column = table + 2 * (R - 1) * (c - c % kFftGroup);
        unrolled<R - 1>([&](auto r) VSP_LAMBDA_INLINE {
            store((r + 1) * columns + c, mul(x[r + 1], loadGroup<V>(column, r * kFftGroup + c % kFftGroup)));
        });
    }
}

template <class V, int R>
static void passInPlace(typename V::Elem* work, int columns, const typename V::Elem* table) {
    pass<V, R>([=](int i) VSP_LAMBDA_INLINE { return loadGroup<V>(work, i); },
               [=](int i, Complex<V> a) VSP_LAMBDA_INLINE { storeGroup(work, i, a); }, columns, table);
}

template <class V, int R, class Source>
static void passFromSource(Source source, typename V::Elem* work, int columns, const typename V::Elem* table) {
    pass<V, R>([=](int i) VSP_LAMBDA_INLINE { return source.template load<V>(i); },
               [=](int i, Complex<V> a) VSP_LAMBDA_INLINE { storeGroup(work, i, a); }, columns, table);
}

template <class V>
static void passInPlace(int radix, typename V::Elem* work, int columns, const typename V::Elem* table) {
    switch (radix) {
        case 4: return passInPlace<V, 4>(work, columns, table);
        case 8: return passInPlace<V, 8>(work, columns, table);
        default: return passInPlace<V, 16>(work, columns, table);
    }
}

// The passes between the first and the last, block by block of the first, which then stays in the cache.
template <class V>
static void middlePasses(int order, typename V::Elem* work, const typename V::Elem* table) {
    const FftPlan& plan = kFftPlans[order - 1];
    const int points = 1 << (order - 1), blockPoints = points / plan.radix[0];
    for (int block = 0; block < points; block += blockPoints) {
        const typename V::Elem* passTable = table + fftPassTableLen(points, plan.radix[0]);
        int n = blockPoints;
        for (int i = 1; i + 1 < plan.passes; i++) {
            const int columns = n / plan.radix[i];
            for (int at = block; at < block + blockPoints; at += n)
                passInPlace<V>(plan.radix[i], work + 2 * at, columns, passTable);
            passTable += fftPassTableLen(n, plan.radix[i]);
            n = columns;
        }
    }
}

// The last pass, radix 8: eight blocks of eight points at a time, store(i, a) in the order of the result.
template <class V, class Store>
VSP_INLINE void lastPass(int order, const typename V::Elem* work, const Vsp32s* blocks, Store store) {
    constexpr int W = V::width;
    const int points = 1 << (order - 1), apart = points / kFftPlans[order - 1].radix[0], count = points / 8;
    for (int i = 0; i < count; i += W) {
        const typename V::Elem* from = work + 2 * (blocks[i / 8] + i % 8 * apart);
        Complex<V> x[8];
        unrolled<8 / W>([&](auto part) VSP_LAMBDA_INLINE {
            V re[W], im[W];
            unrolled<W>([&](auto lane) VSP_LAMBDA_INLINE {
                re[lane] = V::load(from + 2 * lane * apart + part * W);
                im[lane] = V::load(from + 2 * lane * apart + part * W + kFftGroup);
            });
            transpose(re);
            transpose(im);
            unrolled<W>([&](auto lane) VSP_LAMBDA_INLINE { x[part * W + lane] = {re[lane], im[lane]}; });
        });
        butterfly(x);
        unrolled<8>([&](auto k) VSP_LAMBDA_INLINE { store(k * count + i, x[k]); });
    }
}

template <class V, class Source, class Sink>
[[gnu::noinline]] static void forwardLarge(int order, Source source, Sink sink, const typename V::Elem* tables,
                                           const Vsp32s* blocks, typename V::Elem* work) {
    const int points = 1 << (order - 1), columns = points / kFftPlans[order - 1].radix[0];
    const typename V::Elem* passTables = tables + fftSpectrumTableLen(order);
    typename V::Elem* spectrum = work + 2 * points;
    if (kFftPlans[order - 1].radix[0] == 8)
        passFromSource<V, 8>(source, work, columns, passTables);
    else
        passFromSource<V, 16>(source, work, columns, passTables);
    middlePasses<V>(order, work, passTables);
    lastPass<V>(order, work, blocks, [=](int i, Complex<V> a) VSP_LAMBDA_INLINE { storeGroup(spectrum, i, a); });

    Complex<V> at = loadGroup<V>(spectrum, 0);
    for (int k = 0; k < points / 2; k += V::width) {
        const Complex<V> before = loadGroup<V>(spectrum, points - k - V::width);
        const Mirror<V> both = {loadGroup<V>(spectrum, k), mirrored(before, at)};
        const Mirror<V> x = samplesSpectrum(both, loadGroup<V>(tables, k));
        storeMirror(k == 0 ? realFirst(x) : x, k, points, sink);
        at = before;
    }
    storeMiddle(loadGroup<V>(spectrum, points / 2), points / 2, sink);
}

template <class V, class Source, class Sink>
[[gnu::noinline]] static void inverseLarge(int order, Source source, Sink sink, const typename V::Elem* tables,
                                           const Vsp32s* blocks, typename V::Elem* work, typename V::Elem oneByN) {
    const V factor = V::splat(oneByN);
    const int points = 1 << (order - 1), columns = points / kFftPlans[order - 1].radix[0];
    const typename V::Elem* passTables = tables + fftSpectrumTableLen(order);
    Complex<V> after = middle<V>(source, points / 2, factor);
    for (int k = points / 2 - V::width; k >= 0; k -= V::width) {
        const Mirror<V> x = loadMirror<V>(k, points, source);
        const Mirror<V> both = pairsSpectrum(k == 0 ? realFirst(x) : x, loadGroup<V>(tables, k), factor);
        storeGroup(work, k, swapParts(both.low));
        storeGroup(work, points - k - V::width, swapParts(mirrored(both.high, after)));
        after = both.high;
    }
    passInPlace<V>(kFftPlans[order - 1].radix[0], work, columns, passTables);
    middlePasses<V>(order, work, passTables);
    lastPass<V>(order, work, blocks, [=](int i, Complex<V> a) VSP_LAMBDA_INLINE { sink.store(i, swapParts(a)); });
}

// --- By order ----------------------------------------------------------------------------------------------------------

template <class T>
struct FftVectors;
template <>
struct FftVectors<Vsp32f> {
    using One = F32_1;
    using Four = F32_128;
#if defined(__AVX2__)
    using Native = F32_256;
#else
    using Native = F32_128;
#endif
};
template <>
struct FftVectors<Vsp64f> {
    using One = F64_1;
#if defined(__AVX2__)
    using Native = F64_256;
#else
    using Native = F64_128;
#endif
    using Four = Native;  // of at most four elements
};

template <class T, class Source, class Sink>
VSP_INLINE void realFftForward(int order, Source source, Sink sink, const T* tables, const Vsp32s* blocks, T* work) {
    using One = typename FftVectors<T>::One;
    using Four = typename FftVectors<T>::Four;
    using Native = typename FftVectors<T>::Native;
    switch (order) {
        case 1: {
            const Complex<One> pair = source.template load<One>(0);
            sink.store(0, Complex<One>{add(pair.re, pair.im), {0}});
            sink.store(1, Complex<One>{sub(pair.re, pair.im), {0}});
            return;
        }
        case 2: return forwardSmall<One, 1, 2>(source, sink, tables);
        case 3: return forwardSmall<One, 1, 4>(source, sink, tables);
        case 4: return forwardSmall<One, 1, 8>(source, sink, tables);
        case 5: return forwardSmall<Four, 4, 4>(source, sink, tables);
        case 6: return forwardSmall<Four, 8, 4>(source, sink, tables);
        case 7: return forwardSmall<Native, 8, 8>(source, sink, tables);
        case 8: return forwardSmall<Native, 16, 8>(source, sink, tables);
        default: return forwardLarge<Native>(order, source, sink, tables, blocks, work);
    }
}

// factor is 1/N, times any scaling of the result.
template <class T, class Source, class Sink>
VSP_INLINE void realFftInverse(int order, Source source, Sink sink, const T* tables, const Vsp32s* blocks, T* work,
                               T factor) {
    using One = typename FftVectors<T>::One;
    using Four = typename FftVectors<T>::Four;
    using Native = typename FftVectors<T>::Native;
    switch (order) {
        case 1: {
            const One a = source.template load<One>(0).re, b = source.template load<One>(1).re;
            return sink.store(0, scale(Complex<One>{add(a, b), sub(a, b)}, One{factor}));
        }
        case 2: return inverseSmall<One, 1, 2>(source, sink, tables, factor);
        case 3: return inverseSmall<One, 1, 4>(source, sink, tables, factor);
        case 4: return inverseSmall<One, 1, 8>(source, sink, tables, factor);
        case 5: return inverseSmall<Four, 4, 4>(source, sink, tables, factor);
        case 6: return inverseSmall<Four, 8, 4>(source, sink, tables, factor);
        case 7: return inverseSmall<Native, 8, 8>(source, sink, tables, factor);
        case 8: return inverseSmall<Native, 16, 8>(source, sink, tables, factor);
        default: return inverseLarge<Native>(order, source, sink, tables, blocks, work, factor);
    }
}

}  // namespace vsp::VSP_LEVEL
