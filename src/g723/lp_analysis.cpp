// LP analysis of a subframe (G.723.1 2.4, `Comp_Lpc`).
#include "common/autocorrelation.h"
#include "common/exports.h"
#include "core/checks.h"
#include "g723/exports.h"
#include "g723/lp_tables.h"
#include "g723/operators.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kOrder = 10, kWindow = 180;

}  // namespace

VspStatus vspsAutoCorr_G723_16s(const Vsp16s* pSrc, Vsp16s* pDst, Vsp16s* pShift) {
    constexpr int kSilence = 40;
    if (anyNull(pSrc, pDst, pShift)) return vspStsNullPtrErr;
    PaddedSignal<kWindow, kOrder + 1> signal(kWindow);
    Vsp32s scale = 3;
    vspsAutoScale_16s(pSrc, signal.samples, kWindow, &scale);
    map(
        kWindow, [](auto x, auto w) { return mulRound(x, w); }, signal.samples, signal.samples, g723::analysisWindow);
    Vsp32s sums[wholeLagGroups(kOrder + 1)];
    correlateLags(signal.samples, kWindow, sums, kOrder + 1);  // samples of 13 bits under the window: the sums fit
    const Vsp32s energy = sums[0] + (sums[0] >> 10);
    if (energy == 0) {
        for (int i = 0; i <= kOrder; i++) pDst[i] = 0;
        *pShift = kSilence;
        return vspStsNoErr;
    }
    const int norm = norm_32s(energy);
    pDst[0] = round_32s(energy << norm);
    for (int i = 1; i <= kOrder; i++)
        pDst[i] = round_32s(g723::mul_32s16s_Q15(sums[i] * (1 << norm), g723::lagWindow[i - 1]));
    *pShift = Vsp16s(norm + 2 * scale);
    return vspStsNoErr;
}

// `Durbin`
VspStatus vspsLevinsonDurbin_G723_16s(const Vsp16s* pAutoCorr, Vsp16s* pLPC, Vsp16s* pErr, Vsp16s* pRC2) {
    if (anyNull(pAutoCorr, pLPC, pErr, pRC2)) return vspStsNullPtrErr;
    Vsp16s lpc[kOrder] = {}, err = pAutoCorr[0], rc2 = kMax16;
    for (int i = 0; i < kOrder; i++) {
        Vsp32s sum = pAutoCorr[i + 1] * 16384;
        for (int j = 0; j < i; j++) sum = msu_32s(sum, lpc[j], pAutoCorr[i - j]);
        sum = Mul4_32s(sum);
        if (Abs_32s(sum) >= err * 65536) {
            rc2 = kMax16;
            break;
        }
        const Vsp16s magnitude = g723::divLong(Abs_32s(sum), err), k = sum >= 0 ? Vsp16s(-magnitude) : magnitude;
        if (i == 1) rc2 = k;
        err = round_32s(Add_32s(g723::mul_32s16s_Q15(sum, k), err * 65536));
        Vsp16s before[kOrder];
        for (int j = 0; j < i; j++) before[j] = lpc[j];
        for (int j = 0; j < i; j++) lpc[j] = round_32s(mac_32s(before[j] * 65536, k, before[i - 1 - j]));
        lpc[i] = round_32s(-k * 16384);
    }
    for (int i = 0; i < kOrder; i++) pLPC[i] = lpc[i];
    *pErr = err;
    *pRC2 = rc2;
    return vspStsNoErr;
}

VspStatus vspsSineDetect_G723_16s(const Vsp16s* pRC2, Vsp16s* pState) {
    constexpr Vsp16s kSteep = 0x799A;
    constexpr int kHistory = 15;
    if (anyNull(pRC2, pState)) return vspStsNullPtrErr;
    Vsp32u history = Vsp16u(*pState);
    for (int i = 0; i < 4; i++) history = history << 1 | (pRC2[i] > kSteep ? 1 : 0);
    history &= (1 << kHistory) - 1;
    const bool sine = __builtin_popcount(history) >= kHistory - 1;
    *pState = Vsp16s(history | Vsp32u(sine) << kHistory);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
