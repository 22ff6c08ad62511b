// The gain of the adaptive codebook: measured (`G_pitch`), limited and, at 12.2 kbit/s, quantised on its own.
#include "arithmetic/standard_ops.h"
#include "common/lengths.h"
#include "core/checks.h"
#include "gsmamr/exports.h"
#include "gsmamr/mode_checks.h"
#include "gsmamr/pitch_gain_index.h"
#include "gsmamr/pitch_tables.h"
#include "vector/dot.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr Vsp16s kMaxGain = 19661;          // 1.2 in Q14
constexpr Vsp16s kClipGain = 15565;         // 0.95
constexpr Vsp16s kMaxGainLowRates = 13926;  // 0.85
constexpr Vsp64s kLargestSum = 0x3FFFFFFF;  // of products that can be doubled

// 1 and a sum of doubled products, every step saturated, and whether one did.
struct SaturatingSum {
    Vsp32s value;
    bool saturated;
};

SaturatingSum sumOf(const Vsp16s* x, const Vsp16s* y) {
    SaturatingSum sum{1, false};
    for (int i = 0; i < kL_subfr; i++) {
        const Vsp32s product = Mul2_16s32s(x[i], y[i]);
        const Vsp64s exact = Vsp64s(sum.value) + product;
        sum.value = Cnvrt_64s32s(exact);
        sum.saturated |= exact != sum.value || x[i] * y[i] == 0x40000000;
    }
    return sum;
}

// value = mantissa * 2^(16 - norm), rounded.
struct Mantissa {
    Vsp16s value;
    int norm;
};

Mantissa mantissaOf(Vsp32s value) {
    const int norm = norm_32s(value);
    return {round_32s(Vsp32s(Vsp32u(value) << norm)), norm};
}

struct Correlations {
    Mantissa yy, xy;
};

Correlations correlate(const Vsp16s* target, const Vsp16s* y) {
    Vsp16s quarter[kL_subfr];
    map(
        kL_subfr, [](auto a) { return shr(a, 2); }, quarter, y);
    Correlations c{};
    const Vsp64s yyExact = energy(y, kL_subfr);
    c.yy = mantissaOf(Cnvrt_64s32s(2 * (yyExact <= kLargestSum ? yyExact : energy(quarter, kL_subfr)) + 1));
    if (yyExact > kLargestSum) c.yy.norm -= 4;
    if (doubledSumsFit(energy(target, kL_subfr), yyExact)) {
        c.xy = mantissaOf(Vsp32s(2 * dot(target, y, kL_subfr) + 1));
    } else {
        const SaturatingSum sum = sumOf(target, y);
        c.xy = mantissaOf(sum.saturated ? sumOf(target, quarter).value : sum.value);
        if (sum.saturated) c.xy.norm -= 2;
    }
    return c;
}

}  // namespace

VspStatus vspsAdaptiveCodebookGain_GSMAMR_16s(const Vsp16s* pTarget, const Vsp16s* pY, Vsp32s mode, Vsp16s* pGain,
                                              Vsp16s* pCoeff) {
    if (anyNull(pTarget, pY, pGain, pCoeff)) return vspStsNullPtrErr;
    if (!isSpeechMode(mode)) return vspStsRangeErr;
    const Correlations c = correlate(pTarget, pY);
    pCoeff[0] = c.yy.value;
    pCoeff[1] = Vsp16s(15 - c.yy.norm);
    pCoeff[2] = c.xy.value;
    pCoeff[3] = Vsp16s(15 - c.xy.norm);
    *pGain = 0;
    if (c.xy.value < 4) return vspStsNoErr;
    const Vsp16s gain = shr_16s(Div_16s(Vsp16s(c.xy.value >> 1), c.yy.value), c.xy.norm - c.yy.norm);
    *pGain = gain < kMaxGain ? gain : kMaxGain;
    if (mode == kMode122) *pGain &= ~3;
    return vspStsNoErr;
}

VspStatus vspsPitchGainLimit_GSMAMR_16s(const Vsp16s* pHist, Vsp32s mode, Vsp32s resonance, Vsp16s* pGain, Vsp16s* pLimit) {
    constexpr int kHistory = 7;
    if (anyNull(pHist, pGain, pLimit)) return vspStsNullPtrErr;
    if (!isSpeechMode(mode)) return vspStsRangeErr;
    bool clip = false;
    if (resonance != 0 && *pGain > kClipGain) {
        Vsp16s sum = Vsp16s(*pGain >> 3);
        for (int i = 0; i < kHistory; i++) sum = Add_16s(sum, pHist[i]);
        clip = sum > kClipGain;
    }
    *pLimit = clip ? kClipGain : kMax16;
    if (mode <= kMode515) {
        if (*pGain > kMaxGainLowRates) *pGain = kMaxGainLowRates;
    } else if (clip) {
        *pGain = kClipGain;
    }
    return vspStsNoErr;
}

VspStatus vspsPitchGainQuant_GSMAMR_16s(Vsp16s limit, Vsp16s* pGain, Vsp16s* pIndex) {
    if (anyNull(pGain, pIndex)) return vspStsNullPtrErr;
    const int index = ownPitchGainIndex(*pGain, limit);
    *pGain = Vsp16s(qua_gain_pitch[index] & ~3);
    *pIndex = Vsp16s(index);
    return vspStsNoErr;
}

VspStatus vspsAdaptiveCodebookContribution_GSMAMR_16s(Vsp16s gain, const Vsp16s* pY, const Vsp16s* pX, Vsp16s* pDst) {
    if (anyNull(pY, pX, pDst)) return vspStsNullPtrErr;
    const auto remainder = [gain](auto y, auto x) {
        using V = decltype(y);
        const V factor = V::splat(gain), lo = mulLo(y, factor), hi = mulHi(y, factor);
        return subSat(x, packSat(shr(zipLo(lo, hi), 14), shr(zipHi(lo, hi), 14)));
    };
    map(kL_subfr, remainder, pDst, pY, pX);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
