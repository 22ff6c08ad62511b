// The open-loop pitch search of the weighted speech at half the rate (3GPP TS 26.190, 5.4).
#include "amrwb/exports.h"
#include "amrwb/normalised.h"
#include "amrwb/pitch_tables.h"
#include "arithmetic/split_32.h"
#include "common/lag_max.h"
#include "common/median.h"
#include "core/checks.h"
#include "vector/magnitude.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kShortest = 18, kLongest = 115, kMaxSamples = 128;

// The lag with the largest weighted correlation, of equal ones the shortest. Short lags are favoured, and with a median
// also those close to it.
int searchLag(const Vsp16s* wsp, int len, int median, bool nearMedian) {
    constexpr int kLags = kLongest - kShortest + 1;
    constexpr int kOfLag = 83, kMiddle = 98;
    Vsp32s sums[kLags];
    ownLagSums(wsp, len, kShortest, kLongest, sums);
    for (int i = 0; i < kLags; i++) {
        const int lag = kLongest - i;
        sums[i] = mulSplit_32s16s(sums[i], wideCorrWeight[kOfLag + lag]);
        if (nearMedian) sums[i] = mulSplit_32s16s(sums[i], wideCorrWeight[kMiddle + lag - median]);
    }
    return kLongest - ownLastMax(sums, kLags);
}

// The correlation with the samples a lag earlier over the root of both energies, Q15.
Vsp16s normalisedCorrelation(const Vsp16s* x, int len, int lag) {
    const Vsp32s correlation = saturatingDot(0, x, x - lag, len);
    const int norm = norm_32s(correlation);
    const Normalised earlier = ownNormalisedEnergy(x - lag, len), current = ownNormalisedEnergy(x, len);
    const Vsp32s product = Mul2_16s32s(round_32s(earlier.value), round_32s(current.value));
    const int normOfProduct = norm_32s(product);
    const Normalised root =
        ownInverseSqrt({product << normOfProduct, earlier.exponent + current.exponent + 2 - normOfProduct});
    const Vsp32s gain = Mul2_16s32s(round_32s(shl_32s(correlation, norm)), round_32s(root.value));
    return round_32s(shl_32s(gain, 31 - norm + root.exponent));
}

}  // namespace

VspStatus vspsOpenLoopScale_AMRWB_16s(const Vsp16s* pSrc, Vsp32s len, Vsp16s* pMax, Vsp32s* pScale) {
    if (anyNull(pSrc, pMax, pScale)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    const Vsp16s largest = sat_16s(maxMagnitude(pSrc, len));
    const int headroom = norm_16s(largest > *pMax ? largest : *pMax) - 3;
    *pMax = largest;
    *pScale = headroom < 0 ? headroom : 0;
    return vspStsNoErr;
}

VspStatus vspsOpenLoopPitchSearch_AMRWB_16s(const Vsp16s* pWsp, Vsp32s len, Vsp16s median, Vsp16s weight, Vsp16s* pHist,
                                            Vsp16s* pLag, Vsp16s* pGain, void* pState) {
    if (anyNull(pWsp, pHist, pLag, pGain, pState)) return vspStsNullPtrErr;
    if (len != 64 && len != kMaxSamples) return vspStsSizeErr;
    if (median < kShortest - 1 || median > kLongest) return vspStsRangeErr;
    if (weight != 0 && weight != 1) return vspStsRangeErr;
    const int lag = searchLag(pWsp, len, median, weight == 1);
    Vsp16s filtered[kLongest + kMaxSamples];
    for (int i = 0; i < kLongest; i++) filtered[i] = pHist[i];
    for (int i = 0; i < len; i++) filtered[kLongest + i] = pWsp[i];
    vspsHighPassFilter_AMRWB_16s_I(filtered + kLongest, len, pState);
    *pGain = normalisedCorrelation(filtered + kLongest, len, lag);
    for (int i = 0; i < kLongest; i++) pHist[i] = filtered[len + i];
    *pLag = Vsp16s(lag);
    return vspStsNoErr;
}

VspStatus vspsOpenLoopPitchTrack_AMRWB_16s(Vsp16s lag, Vsp16s gain, Vsp16s* pMem) {
    if (anyNull(pMem)) return vspStsNullPtrErr;
    constexpr int kLags = 5;
    enum { kMedian = kLags, kWeight, kFlag };
    constexpr Vsp16s kVoiced = 19661;
    if (gain > kVoiced) {
        for (int i = kLags - 1; i > 0; i--) pMem[i] = pMem[i - 1];
        pMem[0] = lag;
        pMem[kMedian] = medianOf<kLags>(pMem);
        pMem[kWeight] = kMax16;
    } else {
        pMem[kWeight] = Mul_16s(pMem[kWeight], 29491);
    }
    pMem[kFlag] = pMem[kWeight] >= 26214;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
