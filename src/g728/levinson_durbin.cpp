// Levinson-Durbin recursion in block floating point and bandwidth expansion (G.728 blocks 37, 38, 44, 45, 50, 51).
#include "core/checks.h"
#include "g728/block_float.h"
#include "g728/exports.h"
#include "g728/tables.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

using namespace g728;

namespace {

constexpr int kMaxOrder = 50, kShortOrder = 10, kLowestScale = 13, kHighestScale = 15;

using V = Sliding16;
constexpr int kPadded = 64;

struct OneElement {
    Vsp16s bits[2 * kPadded];
};
constexpr OneElement oneElement() {
    OneElement one{};
    one.bits[kPadded] = -1;
    return one;
}
constexpr OneElement kOneAt = oneElement();  // from kPadded - i on, all bits of element i

VSP_INLINE F64_128 mulAdd(F64_128 a, F64_128 b, F64_128 c) {
#if defined(__FMA__)
    return {_mm_fmadd_pd(a.v, b.v, c.v)};
#else
    return add(mul(a, b), c);
#endif
}

// The elements moved up by one, the first one taken from the end of `before`; and the sums of the elements of a and of b,
// by turns, where two more have those of others; they wrap.
#if defined(__AVX2__)
VSP_INLINE V movedUp(V a, V before) {
    return {_mm256_alignr_epi8(a.v, _mm256_permute2x128_si256(before.v, a.v, 0x21), 14)};
}
VSP_INLINE S32_128 sumsByTurns(S32_256 a, S32_256 b, S32_128 others) {
    const __m256i four = add(zipLo(a, b), zipHi(a, b)).v;
    const S32_128 lower = add(S32_128{_mm256_castsi256_si128(four)}, others);
    const S32_128 two = add(lower, S32_128{_mm256_extracti128_si256(four, 1)});
    return add(two, S32_128{_mm_shuffle_epi32(two.v, 0x4E)});
}
#else
VSP_INLINE V movedUp(V a, V before) { return {_mm_alignr_epi8(a.v, before.v, 14)}; }
VSP_INLINE S32_128 sumsByTurns(S32_128 a, S32_128 b, S32_128 others) {
    const S32_128 two = add(add(zipLo(a, b), others), zipHi(a, b));
    return add(two, S32_128{_mm_shuffle_epi32(two.v, 0x4E)});
}
#endif

// About the reciprocal of an integer in the first element.
VSP_INLINE F64_128 reciprocalEstimate(S64_128 integer, F64_128 a) {
#if defined(__AVX512VL__)
    (void)integer;
    return {_mm_rcp14_pd(a.v)};
#else
    (void)a;
    return {_mm_cvtps_pd(_mm_rcp_ps(_mm_cvtepi32_ps(integer.v)))};
#endif
}

// The filter of one order after the other. Behind its coefficients are zeros.
class Recursion {
  public:
    Vsp16s a[kPadded];
    int order, alpha;
    int halvings;  // of the filter, to keep it within 16 bits: Q15 - halvings

    // For lags up to the highest one.
    Recursion(const Vsp16s* r, int highest) : first_(r[1]) {
        using Eight = S16_128;
        Eight smallest = Eight::splat(first_);
        const auto take = [&](Eight x, int j) {
            smallest = min(smallest, x);
            x.store(later_ + j);
        };
        int j = 0;
        for (; j + Eight::width < highest; j += Eight::width) take(Eight::load(r + 2 + j), j);
        Vsp16s rest[Eight::width] = {};
        for (int i = 0; j + i + 1 < highest; i++) rest[i] = r[2 + j + i];
        take(Eight::load(rest), j);
        for (j += Eight::width; j < kPadded; j += Eight::width) take(Eight::splat(0), j);
        exact_ = _mm_movemask_epi8(_mm_cmpeq_epi16(smallest.v, Eight::splat(kMin16).v)) != 0;
    }

    bool first(const Vsp16s* r) {
        if (r[0] <= 0) return false;
        const int magnitude = r[1] < 0 ? -r[1] : r[1];
        const Vsp32u q = magnitude >= r[0] ? 0xFFFF : (Vsp32u(magnitude) << 16) / Vsp32u(r[0]);
        const Vsp64s k = roundHigh(Vsp64s(q) << 15);
        const Vsp16s reflection = Vsp16s(r[1] > 0 ? -k : k);
        start(&reflection, 1, int(roundHigh(r[0] * 0x10000LL + 2 * reflection * Vsp64s(r[1]))), 0);
        return true;
    }

    void start(const Vsp16s* filter, int filterOrder, int filterAlpha, int filterHalvings) {
        order = filterOrder;
        alpha = filterAlpha;
        halvings = filterHalvings;
        for (int j = 0; j < kPadded; j++) a[j] = reversed_[j] = 0;
        for (int j = 0; j < order; j++) a[j] = reversed_[order - 1 - j] = filter[j];
        prepare();
    }

    // Up to another order, at most kLanes.
    template <int kLanes>
    bool advance(int to) {
        while (order < to) {
            if (!exact_) advanceInVectors<kLanes>(to);
            if (order < to && !advanceExactly()) return false;
        }
        return true;
    }

  private:
    // An integer added to it is in the lower bits of the sum.
    static constexpr Vsp64f kRounding = 6755399441055744.0;  // 1.5 * 2^52

    // What the next stage starts from: the sum of products, in units of the numerator, and about its upper half, by turns;
    // the largest legal numerator, 2^15 alpha + 2^14, and the reciprocal of alpha; the unit of the filter.
    struct Stage {
        S32_128 sums, most;
        S64_128 energy;
        F64_128 reciprocal, unit;
    };

    // Of the first element, times minus one half: the quotient of numbers of 16 bits is rounded to the nearest, in the
    // middle away from zero. For that it has a surplus that is more than the error, which is the third power of that of the
    // estimate, and less than what separates any other quotient from the middle.
    static F64_128 reciprocalOf(S64_128 integer) {
        const F64_128 a{_mm_cvtepi32_pd(integer.v)}, estimate = reciprocalEstimate(integer, a);
        constexpr Vsp64f kMinusHalf = -32768.0 * (1.0 + 1.0 / (1LL << 33));
        const F64_128 error = mulAdd(sub(F64_128::splat(0.0), a), estimate, F64_128::splat(1.0));
        const F64_128 half = mul(estimate, F64_128::splat(kMinusHalf));
        return mulAdd(half, mulAdd(error, error, error), half);
    }

    Vsp16s reversed_[kPadded];       // reversed_[j] is a[order - 1 - j]
    Vsp16s first_, later_[kPadded];  // later_[j] is r[j + 2]
    bool exact_;                     // a product of two lags and coefficients may wrap
    Stage stage_;

    // Stage after stage as advanceExactly(), in vectors and with a reciprocal that is there in time, up to one in which
    // something leaves its range.
    template <int kLanes>
    [[gnu::noinline]] void advanceInVectors(int to) {
        constexpr int kWidth = V::width, kCount = kLanes / kWidth;
        constexpr int kMostHigh = kMax16 - kPadded;  // what is cut off of the upper halves is less
        const S16_128 one{_mm_cvtsi32_si128(Vsp16u(first_))};
        V f[kCount], b[kCount];
        for (int n = 0; n < kCount; n++) f[n] = V::load(a + n * kWidth);
        for (int n = 0; n < kCount; n++) b[n] = V::load(reversed_ + n * kWidth);
        S32_128 sums = stage_.sums, most = stage_.most;
        S64_128 energy = stage_.energy;
        F64_128 reciprocal = stage_.reciprocal;
        const F64_128 unit = stage_.unit;
        const S32_128 mostHigh = vectorOf({kMax32, kMostHigh, kMax32, kMostHigh});
        const __m128i shift = _mm_cvtsi32_si128(15 - halvings);
        int i = order;
        for (; i < to; i++) {
            const S32_128 h{_mm_sra_epi32(sums.v, shift)};
            const F64_128 numerator{_mm_cvtepi32_pd(h.v)};
            const F64_128 quotient = mulAdd(numerator, reciprocal, F64_128::splat(kRounding));
            const F64_128 newest = mulAdd(mul(numerator, unit), reciprocal, F64_128::splat(kRounding));
            const S64_128 half{_mm_castpd_si128(quotient.v)};
            const V k = splatFirst<V>(S16_128{half.v});
            const S64_128 newEnergy = add(energy, mulLo(half, S64_128{h.v})), newAlpha = shrU(newEnergy, 15);

            V moved[kCount], extreme = V::splat(0);
            Wide<V> total, totalHigh;
            for (int n = 0; n < kCount; n++) {
                moved[n] = addSat(b[n], mulRoundWrap(k, f[n]));
                const Wide<V> products = dot2(moved[n], V::load(later_ + n * kWidth)), upper = shr(products, 16);
                total = n == 0 ? products : add(total, products);
                totalHigh = n == 0 ? upper : add(totalHigh, upper);
            }
            const S16_128 last = splatFirst<S16_128>(S16_128{_mm_castpd_si128(newest.v)});
            const V lastEverywhere = splatFirst<V>(last);
            const int lag = (later_[i] * 0x10000 | 0x8000) >> (1 + halvings);
            const S32_128 others = add(dot2(last, one), S32_128{_mm_cvtsi32_si128(lag)});
            for (int n = 0; n < kCount; n++) {
                f[n] = addSat(f[n], mulRoundWrap(k, b[n]));
                extreme = maxU(extreme, magnitude(f[n]));
            }
            const __m128i illegal =
                _mm_cmpgt_epi32(magnitude(h).v, most.v) | _mm_cmpgt_epi32(magnitude(sums).v, mostHigh.v);
            const auto outside = shrU(add(extreme, V::splat(1)), 15);
            if (anyBit(Wide<V>{outside.v}) || anyBit(S32_128{illegal})) break;
            for (int n = 0; n < kCount; n++) f[n].v |= lastEverywhere.v & V::load(kOneAt.bits + kPadded - i + n * kWidth).v;
            for (int n = 0; n < kCount; n++) b[n] = movedUp(moved[n], n > 0 ? moved[n > 0 ? n - 1 : 0] : lastEverywhere);
            sums = sumsByTurns(total, totalHigh, zipLo(others, shr(others, 16)));
            reciprocal = reciprocalOf(newAlpha);
            most.v = add(newAlpha, S64_128::splat((Vsp64s(kMax32) << 32) - 1)).v;
            energy = {(newEnergy.v & S64_128::splat(~0x7FFFLL).v) | S64_128::splat(0x4000).v};
        }
        for (int n = 0; n < kCount; n++) b[n].store(reversed_ + n * kWidth);
        order = i;
        alpha = int(_mm_cvtsi128_si64(energy.v) >> 15);
        if (order == to)
            for (int n = 0; n < kCount; n++) f[n].store(a + n * kWidth);
        else
            for (int j = 0; j < order; j++) a[j] = reversed_[order - 1 - j];
        stage_ = {sums, most, energy, reciprocal, unit};
    }

    Vsp64s sumOfProducts() const {
        Vsp64s sum = order > 0 ? first_ * a[order - 1] : 0;
        for (int j = 1; j < order; j++) sum += later_[j - 1] * a[order - 1 - j];
        return sum;
    }

    void prepare() {
        const Vsp64s sum = sumOfProducts() + ((later_[order - 1] * 0x10000LL + 0x8000) >> (1 + halvings));
        const Vsp32s low = Vsp32s(sum), high = Cnvrt_64s32s(sum >> 16);
        stage_ = {vectorOf({low, high, low, high}), vectorOf({alpha - 1, kMax32, alpha - 1, kMax32}),
                  S64_128::splat(alpha * 0x8000LL + 0x4000), reciprocalOf(S64_128::splat(alpha)),
                  F64_128::splat(1.0 / (1 << halvings))};
    }

    // One stage by its definition.
    [[gnu::noinline]] bool advanceExactly() {
        if (alpha <= 0) return false;
        const Vsp64s h = (later_[order - 1] * 0x10000LL + (sumOfProducts() << (1 + halvings)) + 0x8000) >> 16;
        const Vsp64s size = h < 0 ? -h : h;
        if (size >= alpha) return false;
        const Vsp64s quotient = (size << 16) / alpha, magnitude = roundHigh(quotient << 15);
        const Vsp64s k = h > 0 ? -2 * magnitude : 2 * magnitude;
        alpha = int((alpha * 0x10000LL + 0x8000 + k * h) >> 16);
        if (!addReverse(k)) return false;
        const Vsp64s last = roundHigh(quotient << 15 >> halvings);
        a[order] = Vsp16s(h > 0 ? -last : last);
        order++;
        for (int j = 0; j < order; j++) reversed_[j] = a[order - 1 - j];
        prepare();
        return true;
    }

    // All coefficients plus k times those of the reverse order, pair after pair; at one that leaves 16 bits all are halved,
    // at most twice.
    bool addReverse(Vsp64s k) {
        for (int j = 0; 2 * j <= order - 1; j++) {
            Vsp16s &f = a[j], &g = a[order - 1 - j];
            Vsp64s x = f * 0x10000LL + k * g, y = g * 0x10000LL + k * f;
            if (x != Vsp32s(x) || y != Vsp32s(y)) {
                if (++halvings > kHighestScale - kLowestScale) return false;
                for (int m = 0; m < order; m++) a[m] >>= 1;
                x = f * 0x10000LL + k * g, y = g * 0x10000LL + k * f;
            }
            f = Vsp16s(roundHigh(x));
            g = Vsp16s(roundHigh(y));
        }
        return true;
    }
};

// Multiplies by powers, Q14. False, and nothing written, if a product leaves 32 bits, as may happen at the lowest scale.
template <int kOrder>
bool expand(const Vsp16s* a, const Vsp16s* powers, int scale, Vsp16s* dst) {
    const int shift = kHighestScale + 1 - scale;
    Vsp16s expanded[kOrder];
    Vsp32s beyond = 0;
    for (int i = 0; i < kOrder; i++) {
        const Vsp32s product = a[i] * powers[i], x = Vsp32s(Vsp32u(product) << shift);
        beyond |= product ^ (x >> shift);
        const Vsp32s rounded = (x >> 16) + (x >> 15 & 1);
        expanded[i] = Vsp16s(rounded < kMax16 ? rounded : kMax16);
    }
    if (beyond != 0) return false;
    for (int i = 0; i < kOrder; i++) dst[i] = expanded[i];
    return true;
}

}  // namespace

VspStatus vspsLevinsonDurbin_G728_16s_ISfs(const Vsp16s* r, Vsp32s from, Vsp32s to, Vsp16s* pSrcDst, Vsp16s* pRC1,
                                           Vsp16s* pAlpha, Vsp16s* pScale) {
    if (anyNull(r, pSrcDst, pAlpha, pScale) || (from == 0 && anyNull(pRC1))) return vspStsNullPtrErr;
    if (from < 0 || from >= to || to > kMaxOrder) return vspStsRangeErr;
    if (from > 0 && (*pScale < kLowestScale || *pScale > kHighestScale)) return vspStsScaleRangeErr;

    constexpr int kFirstPart = 10;  // a failure behind it leaves that filter
    Recursion filter(r, to);
    if (from > 0)
        filter.start(pSrcDst, from, *pAlpha, kHighestScale - *pScale);
    else if (!filter.first(r))
        return vspStsLevinsonErr;
    const Vsp16s rc1 = filter.a[0];
    const auto upTo = [to](int order) { return order < to ? order : to; };
    if (!filter.advance<16>(upTo(kFirstPart))) return vspStsLevinsonErr;
    Vsp16s kept[kFirstPart];
    for (int i = 0; i < kFirstPart; i++) kept[i] = filter.a[i];
    const int keptAlpha = filter.alpha, keptHalvings = filter.halvings;
    const bool complete =
        filter.advance<16>(upTo(16)) && filter.advance<32>(upTo(32)) && filter.advance<64>(upTo(kMaxOrder));
    if (!complete && from > kFirstPart) return vspStsOverflow;
    for (int i = 0; i < (complete ? to : kFirstPart); i++) pSrcDst[i] = complete ? filter.a[i] : kept[i];
    if (from == 0) *pRC1 = rc1;
    *pAlpha = Vsp16s(complete ? filter.alpha : keptAlpha);
    *pScale = Vsp16s(kHighestScale - (complete ? filter.halvings : keptHalvings));
    return complete ? vspStsNoErr : vspStsOverflow;
}

VspStatus vspsBandwidthExpand_G728_16s(const Vsp16s* pSrc, Vsp32s kind, Vsp32s scale, Vsp16s* pDst, Vsp32s* pFlag) {
    static constexpr const Vsp16s* kPowers[] = {kExpandSynthesis,     kExpandLogGain,        kExpandWeightingPole,
                                                kExpandWeightingZero, kExpandPostFilterPole, kExpandPostFilterZero,
                                                kExpandErasure};
    if (anyNull(pSrc, pDst, pFlag)) return vspStsNullPtrErr;
    if (kind < 0 || kind > 6 || scale < kLowestScale || scale > kHighestScale) return vspStsRangeErr;
    const bool fit = kind == 0 || kind == 6 ? expand<kMaxOrder>(pSrc, kPowers[kind], scale, pDst)
                                            : expand<kShortOrder>(pSrc, kPowers[kind], scale, pDst);
    *pFlag = fit ? 0 : 1;
    return vspStsNoErr;
}

VspStatus vspsPostFilterCoeff_G728_16s(const Vsp16s* pLPC, Vsp32s scale, Vsp32s rc1, Vsp16s* pZero, Vsp16s* pPole,
                                       Vsp16s* pTilt, Vsp16s* pInverse) {
    constexpr int kTiltFactor = 4915;  // 0.15, Q15
    if (anyNull(pLPC, pZero, pPole, pTilt, pInverse)) return vspStsNullPtrErr;
    if (scale < kLowestScale || scale > kHighestScale || rc1 != Vsp16s(rc1)) return vspStsRangeErr;
    Vsp16s lpc[kShortOrder];
    for (int i = 0; i < kShortOrder; i++) lpc[i] = pLPC[i];
    if (expand<kShortOrder>(lpc, kExpandPostFilterPole, scale, pPole)) {
        expand<kShortOrder>(lpc, kExpandPostFilterZero, scale, pZero);
        *pTilt = Vsp16s(roundHigh(kTiltFactor * Vsp64s(rc1)));
    }
    for (int i = 0; i < kShortOrder; i++) pInverse[i] = Vsp16s(roundHigh(lpc[i] * (1LL << (29 - scale))));
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
