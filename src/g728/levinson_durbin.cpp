// Levinson-Durbin recursion in block floating point and bandwidth expansion (G.728 blocks 37, 38, 44, 45, 50, 51).
#include "core/checks.h"
#include "g728/block_float.h"
#include "g728/exports.h"
#include "g728/tables.h"

namespace vsp::VSP_LEVEL {

using namespace g728;

namespace {

constexpr int kMaxOrder = 50, kPostFilterOrder = 10, kLowestScale = 13, kHighestScale = 15;

// The filter of one order after the other.
struct Recursion {
    Vsp16s a[kMaxOrder];
    Vsp16s alpha;
    int halvings;  // of the filter, to keep it within 16 bits: Q15 - halvings

    // num / alpha, Q16, truncated.
    Vsp32u quotient(Vsp64s num) const {
        Vsp32u q = 0;
        for (int i = 0; i < 16; i++) {
            q *= 2, num *= 2;
            if (num >= alpha) num -= alpha, q++;
        }
        return q;
    }

    bool first(const Vsp16s* r) {
        if (r[0] <= 0) return false;
        alpha = r[0], halvings = 0;
        const Vsp64s magnitude = roundHigh(Vsp64s(quotient(r[1] < 0 ? -r[1] : r[1])) << 15);
        a[0] = Vsp16s(r[1] > 0 ? -magnitude : magnitude);
        alpha = Vsp16s(roundHigh(r[0] * 0x10000LL + 2 * a[0] * Vsp64s(r[1])));
        return true;
    }

    // From order i to order i + 1.
    bool next(const Vsp16s* r, int i) {
        Vsp64s sum = 0;
        for (int j = 0; j < i; j++) sum += r[j + 1] * a[i - 1 - j];
        const Vsp64s h = roundHigh(r[i + 1] * 0x10000LL + sum * (2 << halvings)), magnitude = h < 0 ? -h : h;
        if (magnitude >= alpha) return false;
        const Vsp32u q = quotient(magnitude);
        const Vsp64s half = roundHigh(Vsp64s(q) << 15), k = h > 0 ? -2 * half : 2 * half;
        const Vsp64s energy = alpha * 0x10000LL + k * h;
        if (energy <= 0) return false;
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
        alpha = Vsp16s(roundHigh(energy));
        const Vsp64s last = roundHigh((Vsp64s(q) << 15) >> halvings);
        a[i] = Vsp16s(h > 0 ? -last : last);
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
        for (int i = 0; i < from; i++) filter.a[i] = pSrcDst[i];
        filter.alpha = *pAlpha;
        filter.halvings = kHighestScale - *pScale;
    }
    const Vsp16s rc1 = filter.a[0];
    bool complete = true;
    for (; order < to && complete; order++) {
        if (order == kFirstPart) kept = filter;
        complete = filter.next(r, order);
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
