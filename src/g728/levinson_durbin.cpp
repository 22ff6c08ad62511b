// Levinson-Durbin recursion in block floating point and bandwidth expansion (G.728 blocks 37, 38, 44, 45, 50, 51).
#include "core/checks.h"
#include "g728/block_float.h"
#include "g728/exports.h"
#include "g728/tables.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

using namespace g728;

namespace {

constexpr int kMaxOrder = 50, kShortOrder = 10, kLowestScale = 13, kHighestScale = 15;

// The elements moved up by one, the first one taken from the end of `before`.
#if defined(__AVX2__)
VSP_INLINE S16_256 movedUp(S16_256 a, S16_256 before) {
    return {_mm256_alignr_epi8(a.v, _mm256_permute2x128_si256(before.v, a.v, 0x21), 14)};
}
#else
VSP_INLINE S16_128 movedUp(S16_128 a, S16_128 before) { return {_mm_alignr_epi8(a.v, before.v, 14)}; }
#endif

using V = Sliding16;

template <int kLanes>
struct Lanes {
    static constexpr int kCount = kLanes / V::width;
    V v[kCount];

    [[gnu::always_inline]] explicit Lanes(const Vsp16s* x) {
        for (int n = 0; n < kCount; n++) v[n] = V::load(x + n * V::width);
    }
    [[gnu::always_inline]] void store(Vsp16s* x) const {
        for (int n = 0; n < kCount; n++) v[n].store(x + n * V::width);
    }
    [[gnu::always_inline]] V before(int n) const { return n > 0 ? v[n - 1] : V::splat(0); }
};

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

// The filter of one order after the other. Behind its coefficients are zeros.
struct Recursion {
    alignas(64) Vsp16s a[kPadded], reversed[kPadded];  // reversed[j] is a[order - 1 - j]
    int order, alpha;
    int halvings;  // of the filter, to keep it within 16 bits: Q15 - halvings

    void start(const Vsp16s* filter, int filterOrder) {
        order = filterOrder;
        for (int j = 0; j < kPadded; j++) a[j] = reversed[j] = 0;
        for (int j = 0; j < order; j++) a[j] = reversed[order - 1 - j] = filter[j];
    }

    bool first(const Vsp16s* r) {
        if (r[0] <= 0) return false;
        const int magnitude = r[1] < 0 ? -r[1] : r[1];
        const Vsp32u q = magnitude >= r[0] ? 0xFFFF : (Vsp32u(magnitude) << 16) / Vsp32u(r[0]);
        const Vsp64s k = roundHigh(Vsp64s(q) << 15);
        const Vsp16s reflection = Vsp16s(r[1] > 0 ? -k : k);
        start(&reflection, 1);
        alpha = int(roundHigh(r[0] * 0x10000LL + 2 * reflection * Vsp64s(r[1])));
        halvings = 0;
        return true;
    }

    // All coefficients plus half k times those of the reverse order, pair after pair; at one that leaves 16 bits all are
    // halved, at most twice.
    [[gnu::noinline]] bool addReverseHalving(int half) {
        const Vsp64s k = 2 * half;
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

    // Up to another order, at most kLanes. lags[j] is r[j + 1], with zeros behind. The recursion waits for one quotient
    // after the other, so all else is done beside: the reverse filter b moves up before
    // half k is known, and the reciprocal of alpha is there when the sum of products is.
    template <int kLanes>
    bool advance(const Vsp16s* lags, int to) {
        if (order >= to) return true;
        using L = Lanes<kLanes>;
        L f(a), b(reversed), r(lags);
        const auto lastOf = [&](Vsp64s quotient, Vsp64s h) {
            const int last = int(roundHigh((quotient >> 30 << 15) >> halvings));
            return Vsp16s(h > 0 ? -last : last);
        };
        for (; order < to; order++) {
            const L behind(kOneAt.bits + kPadded - order);
            const V foremost = V::load(kOneAt.bits + kPadded);
            L upF = f, upB = b;
            auto products = biasedProducts(r.v[0], b.v[0]);
            for (int n = 1; n < L::kCount; n++) products = add(products, biasedProducts(r.v[n], b.v[n]));
            for (int n = 0; n < L::kCount; n++) {
                upF.v[n] = movedUp(f.v[n], f.before(n));
                upB.v[n] = movedUp(b.v[n], b.before(n));
            }
            if (alpha <= 0) return false;
            // floor(n / alpha) for n < 2^31 is this times n / 2^46, rounded down
            const Vsp64s inverse = Vsp64s((1ULL << 46) / Vsp32u(alpha)) + 1;
            const int scale = 1 + halvings;
            const Vsp64s rest = lags[order] * 0x10000LL + 0x8000 - (Vsp64s(kLanes / 2) * kDotBias << scale);
            const Vsp64s h = ((sum(products) << scale) + rest) >> 16, size = h < 0 ? -h : h;
            if (size >= alpha) return false;
            // half the quotient of -h and alpha, its magnitude rounded to the nearest, upwards in the middle
            const int half = int(((1LL << 30) - (h > 0) - h * inverse) >> 31);
            const Vsp64s rounded = alpha * 0x10000LL + 0x8000 + 2 * half * h;  // no more than alpha was
            if (rounded <= 0x8000) return false;
            alpha = int(rounded >> 16);

            const V k = V::splat(Vsp16s(half)), last = V::splat(halvings == 0 ? Vsp16s(half) : lastOf(size * inverse, h));
            const L old = f;
            V extreme = V::splat(0);
            for (int n = 0; n < L::kCount; n++) {
                f.v[n] = addSat(f.v[n], mulRoundWrap(k, b.v[n]));
                extreme = maxU(extreme, magnitude(f.v[n]));
                f.v[n].v |= last.v & behind.v[n].v;
                b.v[n] = addSat(upB.v[n], mulRoundWrap(k, upF.v[n]));
                if (n == 0) b.v[n].v |= last.v & foremost.v;
            }
            if (anyBit(Wide<V>{shrU(add(extreme, V::splat(1)), 15).v})) {  // perhaps one leaves 16 bits
                old.store(a);
                if (!addReverseHalving(half)) return false;
                a[order] = lastOf(size * inverse, h);
                f = L(a);
                for (int j = 0; j <= order; j++) reversed[j] = a[order - j];
                b = L(reversed);
            }
        }
        f.store(a);
        b.store(reversed);
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
    Recursion filter, kept;
    if (from == 0) {
        if (!filter.first(r)) return vspStsLevinsonErr;
    } else {
        filter.start(pSrcDst, from);
        filter.alpha = *pAlpha;
        filter.halvings = kHighestScale - *pScale;
    }
    const Vsp16s rc1 = filter.a[0];
    alignas(64) Vsp16s lags[kPadded];
    for (int j = 0; j < kPadded; j++) lags[j] = j < to ? r[j + 1] : Vsp16s(0);
    const auto upTo = [to](int order) { return order < to ? order : to; };
    if (!filter.advance<16>(lags, upTo(kFirstPart))) return vspStsLevinsonErr;
    kept = filter;
    const bool complete = filter.advance<16>(lags, upTo(16)) && filter.advance<32>(lags, upTo(32)) &&
                          filter.advance<64>(lags, upTo(kMaxOrder));
    if (!complete && from > kFirstPart) return vspStsOverflow;
    if (!complete) filter = kept;
    for (int i = 0; i < (complete ? to : kFirstPart); i++) pSrcDst[i] = filter.a[i];
    if (from == 0) *pRC1 = rc1;
    *pAlpha = Vsp16s(filter.alpha);
    *pScale = Vsp16s(kHighestScale - filter.halvings);
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
