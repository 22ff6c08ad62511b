// The type IV cosine transform, dct_type_iv_a and dct_type_iv_s: levels of sums and differences of neighbours, products of
// ten elements each with a matrix, levels of rotations. The halved sums and the rotations of two products saturate once, at
// their end; so vectors compute them with products and sums that cannot overflow.
#include "arithmetic/basic_ops.h"
#include "core/checks.h"
#include "g7221/exports.h"
#include "g7221/transform_tables.h"
#include "vector/map.h"
#include "vector/signs.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kSmallestBlock = 2 * kDctCore;
constexpr int kSpill = 8;  // elements that a vector of results writes behind the last one

// Results of packSat of neighbours in memory.
VSP_INLINE S16_128 inOrder(S16_128 a) { return a; }
VSP_IF_256(VSP_INLINE S16_256 inOrder(S16_256 a) { return {_mm256_permute4x64_epi64(a.v, 0xD8)}; })

// Calls op<V>(i) for vectors that cover elements 0 .. count-1. The last one may overlap the one before.
template <class Op>
VSP_INLINE void cover(int count, Op op) {
    const auto with = [&]<class V>(V) {
        for (int i = 0; i < count - V::width; i += V::width) op.template operator()<V>(i);
        op.template operator()<V>(count - V::width);
    };
    if (count >= Sliding16::width)
        with(Sliding16{});
    else
        with(S16_128{});
}

// --- Sums and differences ----------------------------------------------------------------------------------------------

template <class V>
struct LowHigh {
    V low, high;
};

template <class V>
VSP_INLINE V inPairs(Vsp16s a, Vsp16s b) {
    return {Wide<V>::splat(Vsp32s(Vsp32u(Vsp16u(b)) << 16 | Vsp16u(a))).v};
}

// (a + b) >> 1 and (a - b) >> 1 of pairs in x and y.
template <class V>
VSP_INLINE V halved(V x, V y, V signs) {
    return inOrder(packSat(shr(dot2(x, signs), 1), shr(dot2(y, signs), 1)));
}

struct HalvedPairs {
    template <class V>
    [[gnu::always_inline]] LowHigh<V> operator()(const Vsp16s* in, int) const {
        const V x = V::load(in), y = V::load(in + V::width);
        return {halved(x, y, inPairs<V>(1, 1)), halved(x, y, inPairs<V>(1, -1))};
    }
};

// The first level of the inverse transform.
struct DitheredPairs {
    const Vsp16s* dither;

    template <class V>
    [[gnu::always_inline]] LowHigh<V> operator()(const Vsp16s* in, int place) const {
        const V x = V::load(in), y = V::load(in + V::width);
        const V dx = V::load(dither + place), dy = V::load(dither + place + V::width);
        const V first = inPairs<V>(-1, 0);
        const V lowX = addSat(x, V{dx.v & first.v}), lowY = addSat(y, V{dy.v & first.v});
        const V highX = addSat(x, V{shrU(Wide<V>{dx.v}, 16).v}), highY = addSat(y, V{shrU(Wide<V>{dy.v}, 16).v});
        return {halved(lowX, lowY, inPairs<V>(1, 1)), halved(highX, highY, inPairs<V>(1, -1))};
    }
};

// Its other levels. -32768 is negated to 32767.
struct SaturatedPairs {
    template <class V>
    [[gnu::always_inline]] LowHigh<V> operator()(const Vsp16s* in, int) const {
        const V x = V::load(in), y = V::load(in + V::width), sum = inPairs<V>(1, 1), difference = inPairs<V>(1, -1);
        const V least = inPairs<V>(kMin16, -kMax16);
        return {inOrder(packSat(dot2(x, sum), dot2(y, sum))),
                inOrder(packSat(dot2(max(x, least), difference), dot2(max(y, least), difference)))};
    }
};

// One level: of each block the sums in order, then the differences backwards.
template <class Pairs>
VSP_INLINE void addPairs(const Vsp16s* in, Vsp16s* out, int len, int block, Pairs pairs) {
    for (int start = 0; start < len; start += block)
        cover(block / 2, [&]<class V>(int i) {
            const LowHigh<V> both = pairs.template operator()<V>(in + start + 2 * i, start + 2 * i);
            both.low.store(out + start + i);
            reversed(both.high).store(out + start + block - i - V::width);
        });
}

// --- Core --------------------------------------------------------------------------------------------------------------

// A group of ten elements in every 128 bits: the first eight, and the last pair four times.
template <class V>
struct Groups {
    V eight, last;
};

template <class V>
VSP_INLINE Groups<V> groups(const Vsp16s* in) {
    if constexpr (V::width == 8) return {S16_128::load(in), splatPair<S16_128>(in + 8)};
    VSP_IF_256(else return {joined(S16_128::load(in), S16_128::load(in + kDctCore)),
                            joined(splatPair<S16_128>(in + 8), splatPair<S16_128>(in + kDctCore + 8))};)
}

template <class V>
VSP_INLINE V inEachLane(const Vsp16s* p) {
    if constexpr (V::width == 8) return S16_128::load(p);
    VSP_IF_256(else return {_mm256_broadcastsi128_si256(S16_128::load(p).v)};)
}

// 32-bit element i of every 128 bits, four times.
template <int i>
VSP_INLINE S16_128 splatInLanes(S16_128 a) {
    return {_mm_shuffle_epi32(a.v, 0x55 * i)};
}
VSP_IF_256(template <int i> VSP_INLINE S16_256 splatInLanes(S16_256 a) { return {_mm256_shuffle_epi32(a.v, 0x55 * i)}; })

VSP_INLINE void storeGroups(S16_128 eight, S16_128 last, Vsp16s* out) {
    eight.store(out);
    last.store(out + 8);
}
VSP_IF_256(VSP_INLINE void storeGroups(S16_256 eight, S16_256 last, Vsp16s* out) {
    storeGroups(S16_128{_mm256_castsi256_si128(eight.v)}, S16_128{_mm256_castsi256_si128(last.v)}, out);
    storeGroups(S16_128{_mm256_extracti128_si256(eight.v, 1)}, S16_128{_mm256_extracti128_si256(last.v, 1)},
                out + kDctCore);
})

// Whether a partial sum of the products of a group could leave 32 bits.
template <class V>
VSP_INLINE bool mayOverflow(const Groups<V>& x, Vsp32s safeEnergy) {
    const V eight{shrU(dot2(x.eight, x.eight), 3).v};
    const auto each = [&](V splat) { return Wide<V>{splat.v}; };
    const Wide<V> half = add(each(splatInLanes<0>(eight)), each(splatInLanes<1>(eight)));
    const Wide<V> rest = add(each(splatInLanes<2>(eight)), each(splatInLanes<3>(eight)));
    const Wide<V> energy = add(add(half, rest), shrU(dot2(x.last, x.last), 3));
    return anyNegative(sub(Wide<V>::splat(safeEnergy), energy));
}

template <class V>
VSP_INLINE void multiplyGroups(const DctCore& core, const Vsp16s* in, Vsp16s* out) {
    const Groups<V> x = groups<V>(in);
    if (mayOverflow(x, core.safeEnergy)) {
        for (int group = 0; group < V::width / 8; group++)
            for (int k = 0; k < kDctCore; k++)
                out[kDctCore * group + k] = round_32s(dotSaturating(in + kDctCore * group, core.rows[k], kDctCore));
        return;
    }
    const V pairs[] = {splatInLanes<0>(x.eight), splatInLanes<1>(x.eight), splatInLanes<2>(x.eight),
                       splatInLanes<3>(x.eight), x.last};
    Wide<V> sums[3];
    for (int v = 0; v < 3; v++) {
        sums[v] = Wide<V>::splat(0x4000);
        for (int p = 0; p < 5; p++) sums[v] = add(sums[v], dot2(pairs[p], inEachLane<V>(core.pairs[p][4 * v])));
        sums[v] = shr(sums[v], 15);
    }
    storeGroups(packSat(sums[0], sums[1]), packSat(sums[2], sums[2]), out);
}

// Writes up to kSpill elements behind the last one.
VSP_INLINE void multiply(const DctCore& core, const Vsp16s* in, Vsp16s* out, int len) {
    for (int i = 0; i < len; i += kDctCore * Sliding16::width / 8) multiplyGroups<Sliding16>(core, in + i, out + i);
}

// --- Rotations ---------------------------------------------------------------------------------------------------------

// a * c + b * s of the pairs of a and b, rounded and shifted right.
template <class V>
VSP_INLINE V products(V a, V b, V c, V s, int shift) {
    const auto round = [&](Wide<V> x) { return shr(add(x, Wide<V>::splat(1 << (shift - 1))), shift); };
    const auto pairs = [](Wide<V> x) { return V{x.v}; };
    return packSat(round(dot2(pairs(zipLo(a, b)), pairs(zipLo(c, s)))),
                   round(dot2(pairs(zipHi(a, b)), pairs(zipHi(c, s)))));
}

// One level. Each block turns its halves into sums in order and differences backwards.
VSP_INLINE void rotate(const DctRotations& all, const Vsp16s* in, Vsp16s* out, int len, int block, int shift) {
    const int half = block / 2, table = half - kDctCore;
    for (int start = 0; start < len; start += block)
        cover(half, [&]<class V>(int i) {
            const auto factors = [&](const Vsp16s* p) { return V::load(p + table + i); };
            const V low = V::load(in + start + i), high = V::load(in + start + half + i);
            products(low, high, factors(all.cosine), factors(all.alternatingSine), shift).store(out + start + i);
            reversed(products(low, high, factors(all.sine), factors(all.alternatingCosine), shift))
                .store(out + start + block - i - V::width);
        });
}

// --- Both transforms ---------------------------------------------------------------------------------------------------

// The two work arrays of a transform take turns.
struct Work {
    alignas(32) Vsp16s first[kMltMaxLen + kSpill], second[kMltMaxLen + kSpill];
    Vsp16s *in = first, *out = second;

    [[gnu::always_inline]] void turn() {
        Vsp16s* const written = out;
        out = in;
        in = written;
    }
};

// Of the input of the core, behind the levels of sums and differences. The result is in dst.
template <int len>
VSP_INLINE void finish(Work& w, const DctCore& core, const DctRotations& rotations, int shift, Vsp16s* dst) {
    multiply(core, w.in, w.out, len);
    for (int block = kSmallestBlock; block < len; block *= 2) {
        w.turn();
        rotate(rotations, w.in, w.out, len, block, shift);
    }
    rotate(rotations, w.out, dst, len, len, shift);
}

template <int len>
void forward(const Vsp16s* src, Vsp16s* dst) {
    Work w;
    if constexpr (len == kMltLen) {
        map(
            len, [](auto x, auto bias) { return addSat(x, bias); }, w.in, src, anal_bias);
        src = w.in;
    }
    addPairs(src, w.out, len, len, HalvedPairs{});
    for (int block = len / 2; block >= kSmallestBlock; block /= 2) {
        w.turn();
        addPairs(w.in, w.out, len, block, HalvedPairs{});
    }
    w.turn();
    finish<len>(w, dctCoreForward, dctRotationsForward, 15, dst);
}

template <int len>
void inverse(const Vsp16s* src, const Vsp16s* dithers, Vsp16s* dst) {
    Work w;
    addPairs(src, w.out, len, len, DitheredPairs{dithers});
    for (int block = len / 2; block >= kSmallestBlock; block /= 2) {
        w.turn();
        addPairs(w.in, w.out, len, block, SaturatedPairs{});
    }
    w.turn();
    finish<len>(w, dctCoreInverse, dctRotationsInverse, 14, dst);
    if constexpr (len == kMltLen)
        map(
            len, [](auto x, auto bias) { return addSat(x, bias); }, dst, dst, syn_bias_7khz);
}

}  // namespace

VspStatus vspsDCTFwd_G722_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len) {
    if (anyNull(pSrc, pDst)) return vspStsNullPtrErr;
    if (len != kMltLen && len != kMltMaxLen) return vspStsSizeErr;
    if (len == kMltLen)
        forward<kMltLen>(pSrc, pDst);
    else
        forward<kMltMaxLen>(pSrc, pDst);
    return vspStsNoErr;
}

VspStatus vspsDCTInv_G722_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len) {
    if (anyNull(pSrc, pDst)) return vspStsNullPtrErr;
    if (len != kMltLen && len != kMltMaxLen) return vspStsSizeErr;
    if (len == kMltLen)
        inverse<kMltLen>(pSrc, dither, pDst);
    else
        inverse<kMltMaxLen>(pSrc, max_dither, pDst);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
