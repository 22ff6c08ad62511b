// The adaptive codebook's vector, what it contributes to the target, and the excitation (G.723.1 2.14, 2.18 and 3.4).
#include "core/checks.h"
#include "g723/convolution.h"
#include "g723/exports.h"
#include "g723/pitch_gains.h"
#include "g723/residual.h"
#include "vector/magnitude.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

static constexpr int kLen = 60;

// `Decod_Acbk`, `Get_Rez`
VspStatus vspsDecodeAdaptiveVector_G723_16s(const Vsp16s* pPastExc, Vsp16s delay, Vsp16s offset, Vsp16s index, Vsp32s rate,
                                            Vsp16s* pDst) {
    constexpr int kTaps = 5, kShortestLag = 18, kLongestLag = 145;
    if (anyNull(pPastExc, pDst)) return vspStsNullPtrErr;
    if (!g723::isRate(rate)) return vspStsRangeErr;
    if (delay < kShortestLag - kLen || delay > kLongestLag - kLen) return vspStsCodeRangeErr;
    if (offset < 0 || offset > 3) return vspStsCodeRangeErr;
    const int lag = delay + kLen;
    if (index < 0 || index >= g723::codebookSize(rate, lag)) return vspStsCodeRangeErr;
    Vsp16s residual[kResidual], gains[kTaps];
    repeatExcitation(pPastExc, lag - 1 + offset, residual);
    Vsp32s magnitudes = 0;
    for (int i = 0; i < kTaps; i++) {
        gains[i] = g723::usesShortCodebook(rate, lag) ? g723::pitchGains85.factors[i / 2][index][i % 2]
                                                      : g723::pitchGains170.factors[i / 2][index][i % 2];
        magnitudes += gains[i] < 0 ? -gains[i] : gains[i];
    }
    if (Vsp64s(magnitudes) * maxMagnitude(residual, kResidual) < 1 << 29) {
        Vsp32s sums[kLen];
        correlate(gains, kTaps, residual, sums, kLen);
        for (int n = 0; n < kLen; n++) pDst[n] = sat_16s((sums[n] + 0x2000) >> 14);
        return vspStsNoErr;
    }
    for (int n = 0; n < kLen; n++) {
        Vsp32s sum = 0;
        for (int i = 0; i < kTaps; i++) sum = mac_32s(sum, residual[n + i], gains[i]);
        pDst[n] = round_32s(Mul2_32s(sum));
    }
    return vspStsNoErr;
}

// The last loop of `Find_Acbk`.
VspStatus vspsAdaptiveCodebookContribution_G723_16s_I(const Vsp16s* pAdaptive, const Vsp16s* pImpulse, Vsp16s* pSrcDst) {
    if (anyNull(pAdaptive, pImpulse, pSrcDst)) return vspStsNullPtrErr;
    const PaddedResponse h(pImpulse);
    // So that the doubled sums stay below 2^30, half of what fits.
    if (doubledSumsFit(4 * h.squares, energy(pAdaptive, kLen))) {
        Vsp32s sums[kLen];
        h.convolve(pAdaptive, sums);
        for (int n = 0; n < kLen; n++) {
            const Vsp32s difference = pSrcDst[n] * 32768 - 2 * sums[n];
            pSrcDst[n] = sat_16s(((difference >> 1) + 0x2000) >> 14);
        }
        return vspStsNoErr;
    }
    for (int n = 0; n < kLen; n++) {
        Vsp32s difference = pSrcDst[n] * 32768;
        for (int j = 0; j <= n; j++) difference = msu_32s(difference, pAdaptive[j], pImpulse[n - j]);
        pSrcDst[n] = round_32s(Mul2_32s(difference));
    }
    return vspStsNoErr;
}

VspStatus vspsExcitation_G723_16s(const Vsp16s* pAdaptive, const Vsp16s* pCode, Vsp16s* pDst) {
    if (anyNull(pAdaptive, pCode, pDst)) return vspStsNullPtrErr;
    map(
        kLen, [](auto code, auto adaptive) { return addSat(addSat(code, code), adaptive); }, pDst, pCode, pAdaptive);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
