// Levinson-Durbin recursion in block floating point and bandwidth expansion (G.728 blocks 37, 38, 44, 45, 50, 51).
#include "core/checks.h"
#include "g728/block_float.h"
#include "g728/exports.h"
#include "g728/tables.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

using namespace g728;

namespace {

constexpr int kMaxOrder = 50, kPostFilterOrder = 10, kLowestScale = 13, kHighestScale = 15;

// The filter of one order after the other, forwards and backwards, with zeros where it has no coefficients yet.
struct Recursion {
    static constexpr int kStep = 16, kPadded = kMaxOrder + kStep;
    Vsp16s a[kPadded], backward[kPadded];  // backward[kMaxOrder - 1 - j] is a[j]
    Vsp16s alpha;
    int halvings;  // of the filter, to keep it within 16 bits: Q15 - halvings

    void start(const Vsp16s* filter, int order) {
        for (int j = 0; j < kPadded; j++) a[j] = backward[j] = 0;
        for (int j = 0; j < order; j++) set(j, filter[j]);
    }
    void set(int j, Vsp16s x) { a[j] = backward[kMaxOrder - 1 - j] = x; }

    // num / alpha, Q16, truncated.
    Vsp32u quotient(Vsp64s num) const { return num >= alpha ? 0xFFFF : Vsp32u(num << 16) / Vsp32u(alpha); }

    bool first(const Vsp16s* r) {
        if (r[0] <= 0) return false;
        alpha = r[0], halvings = 0;
        const Vsp64s magnitude = roundHigh(Vsp64s(quotient(r[1] < 0 ? -r[1] : r[1])) << 15);
        start(nullptr, 0);
        set(0, Vsp16s(r[1] > 0 ? -magnitude : magnitude));
        alpha = Vsp16s(roundHigh(r[0] * 0x10000LL + 2 * a[0] * Vsp64s(r[1])));
        return true;
    }

    // All coefficients of order i plus half k times those of the reverse order, unless one leaves 16 bits.
    bool addReverse(int half, int i) {
        const Vsp16s* const mirrored = backward + kMaxOrder - i;  // mirrored[j] is a[i - 1 - j]
        Vsp16s forwards[kPadded], reverse[kPadded];
        Vsp32s beyond = 0;
        const auto added = [half, &beyond](Vsp16s f, Vsp16s g) {
            const Vsp32s t = f * 0x8000 + half * g;  // half of what is rounded
            beyond |= t ^ Vsp32s(Vsp32u(t) << 1);
            const Vsp32s rounded = Vsp32s(Vsp32u(t) + 0x4000) >> 15;
            return Vsp16s(rounded < kMax16 ? rounded : kMax16);
        };
        for (int j = 0; j < i; j += kStep)
            for (int k = j; k < j + kStep; k++) {
                forwards[k] = added(a[k], mirrored[k]);
                reverse[k] = added(mirrored[k], a[k]);
            }
        if (beyond < 0) return false;
        for (int j = 0; j < i; j++) {
            a[j] = forwards[j];
            backward[kMaxOrder - i + j] = reverse[j];
        }
        return true;
    }

    // The same, pair after pair; at one that leaves 16 bits all coefficients are halved, at most twice.
    [[gnu::noinline]] bool addReverseHalving(int half, int i) {
        const Vsp64s k = 2 * half;
        for (int j = 0; 2 * j <= i - 1; j++) {
            Vsp16s &f = a[j], &g = a[i - 1 - j];
            Vsp64s x = f * 0x10000LL + k * g, y = g * 0x10000LL + k * f;
            if (x != Vsp32s(x) || y != Vsp32s(y)) {
                if (++halvings > kHighestScale - kLowestScale) return false;
                for (int m = 0; m < i; m++) a[m] >>= 1;
                x = f * 0x10000LL + k * g, y = g * 0x10000LL + k * f;
            }
            f = Vsp16s(roundHigh(x));
            g = Vsp16s(roundHigh(y));
        }
        for (int j = 0; j < i; j++) set(j, a[j]);
        return true;
    }

    // From order i to order i + 1. r is r[i + 1] and lags[j] r[i - j].
    bool next(Vsp16s r, const Vsp16s* lags, int i) {
        const Vsp64s h = roundHigh(r * 0x10000LL + dot(a, lags, i) * (2 << halvings)), magnitude = h < 0 ? -h : h;
        if (magnitude >= alpha) return false;
        const Vsp32u q = quotient(magnitude);
        const int half = int(roundHigh(Vsp64s(q) << 15)) * (h > 0 ? -1 : 1);
        const Vsp64s energy = alpha * 0x10000LL + 2 * half * h;
        if (energy <= 0) return false;
        if (!addReverse(half, i) && !addReverseHalving(half, i)) return false;
        alpha = Vsp16s(roundHigh(energy));
        const Vsp64s last = roundHigh((Vsp64s(q) << 15) >> halvings);
        set(i, Vsp16s(h > 0 ? -last : last));
        return true;
    }
};

Vsp16s expanded(Vsp16s a, Vsp16s power, int scale) {
    return Vsp16s(roundHigh(Cnvrt_64s32s(a * Vsp64s(power) * (1 << (16 - scale)))));
}

// Whether the product stays within 32 bits.
bool fits(Vsp16s a, Vsp16s power, int scale) {
    const Vsp64s product = a * Vsp64s(power) * (1 << (16 - scale));
    return product == Vsp32s(product);
}

bool allFit(const Vsp16s* a, const Vsp16s* powers, int order, int scale) {
    bool all = true;
    for (int i = 0; i < order; i++) all &= fits(a[i], powers[i], scale);
    return all || scale != kLowestScale;
}

}  // namespace

VspStatus vspsLevinsonDurbin_G728_16s_ISfs(const Vsp16s* r, Vsp32s from, Vsp32s to, Vsp16s* pSrcDst, Vsp16s* pRC1,
                                           Vsp16s* pAlpha, Vsp16s* pScale) {
    if (anyNull(r, pSrcDst, pAlpha, pScale) || (from == 0 && anyNull(pRC1))) return vspStsNullPtrErr;
    if (from < 0 || from >= to || to > kMaxOrder) return vspStsRangeErr;
    if (from > 0 && (*pScale < kLowestScale || *pScale > kHighestScale)) return vspStsScaleRangeErr;

    constexpr int kFirstPart = 10;  // a failure behind it leaves that filter
    Recursion filter, kept;
    int order = from;
    if (from == 0) {
        if (!filter.first(r)) return vspStsLevinsonErr;
        order = 1;
    } else {
        filter.start(pSrcDst, from);
        filter.alpha = *pAlpha;
        filter.halvings = kHighestScale - *pScale;
    }
    const Vsp16s rc1 = filter.a[0];
    Vsp16s reversed[kMaxOrder];  // reversed[to - 1 - j] is r[j + 1]
    for (int j = 0; j < to; j++) reversed[to - 1 - j] = r[j + 1];
    bool complete = true;
    for (; order < to && complete; order++) {
        if (order == kFirstPart) kept = filter;
        complete = filter.next(r[order + 1], reversed + to - order, order);
        if (!complete && order < kFirstPart) return vspStsLevinsonErr;
    }
    int valid = to;
    if (!complete) {
        if (from > kFirstPart) return vspStsOverflow;
        filter = kept;
        valid = kFirstPart;
    }
    for (int i = 0; i < valid; i++) pSrcDst[i] = filter.a[i];
    if (from == 0) *pRC1 = rc1;
    *pAlpha = filter.alpha;
    *pScale = Vsp16s(kHighestScale - filter.halvings);
    return complete ? vspStsNoErr : vspStsOverflow;
}

VspStatus vspsBandwidthExpand_G728_16s(const Vsp16s* pSrc, Vsp32s kind, Vsp32s scale, Vsp16s* pDst, Vsp32s* pFlag) {
    static constexpr const Vsp16s* kPowers[] = {kExpandSynthesis,     kExpandLogGain,        kExpandWeightingPole,
                                                kExpandWeightingZero, kExpandPostFilterPole, kExpandPostFilterZero,
                                                kExpandErasure};
    if (anyNull(pSrc, pDst, pFlag)) return vspStsNullPtrErr;
    if (kind < 0 || kind > 6 || scale < kLowestScale || scale > kHighestScale) return vspStsRangeErr;
    const int order = kind == 0 || kind == 6 ? 50 : 10;
    const bool fit = allFit(pSrc, kPowers[kind], order, scale);
    *pFlag = fit ? 0 : 1;
    if (!fit) return vspStsNoErr;
    for (int i = 0; i < order; i++) pDst[i] = expanded(pSrc[i], kPowers[kind][i], scale);
    return vspStsNoErr;
}

VspStatus vspsPostFilterCoeff_G728_16s(const Vsp16s* pLPC, Vsp32s scale, Vsp32s rc1, Vsp16s* pZero, Vsp16s* pPole,
                                       Vsp16s* pTilt, Vsp16s* pInverse) {
    constexpr int kTiltFactor = 4915;  // 0.15, Q15
    if (anyNull(pLPC, pZero, pPole, pTilt, pInverse)) return vspStsNullPtrErr;
    if (scale < kLowestScale || scale > kHighestScale || rc1 != Vsp16s(rc1)) return vspStsRangeErr;
    const bool fit = allFit(pLPC, kExpandPostFilterPole, kPostFilterOrder, scale);
    for (int i = 0; i < kPostFilterOrder; i++) {
        const Vsp16s a = pLPC[i];
        if (fit) {
            pZero[i] = expanded(a, kExpandPostFilterZero[i], scale);
            pPole[i] = expanded(a, kExpandPostFilterPole[i], scale);
        }
        pInverse[i] = Vsp16s(roundHigh(a * (1LL << (29 - scale))));
    }
    if (fit) *pTilt = Vsp16s(roundHigh(kTiltFactor * Vsp64s(rc1)));
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
