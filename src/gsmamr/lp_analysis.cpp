// LP analysis (3GPP TS 26.090 5.2.1 and 5.2.2) and weighting of the speech (5.3).
#include "common/autocorrelation.h"
#include "common/exports.h"
#include "common/levinson.h"
#include "common/residual_filter.h"
#include "common/tables.h"
#include "core/checks.h"
#include "gsmamr/exports.h"
#include "gsmamr/lp_tables.h"
#include "gsmamr/modes.h"
#include "gsmamr/weighting.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

static constexpr int kOrder = 10, kWindow = 240;

VspStatus vspsAutoCorr_GSMAMR_16s32s(const Vsp16s* pSrc, Vsp32s window, Vsp32s* pDst, Vsp32s* pNorm) {
    if (anyNull(pSrc, pDst, pNorm)) return vspStsNullPtrErr;
    if (window < 0 || window > 2) return vspStsRangeErr;
    PaddedSignal<kWindow, kOrder + 1> signal(kWindow);
    map(
        kWindow, [](auto x, auto w) { return mulRound(x, w); }, signal.samples, pSrc,
        window == 0   ? hammingCosine
        : window == 1 ? window_160_80
                      : window_232_8);
    normalisedAutoCorr(signal, pDst, kOrder + 1, pNorm);
    return vspStsNoErr;
}

VspStatus vspsLevinsonDurbin_GSMAMR_32s16s(const Vsp32s* pAutoCorr, Vsp16s* pMem, Vsp16s* pLPC, Vsp16s* pRC) {
    constexpr int kReflections = 4;
    if (anyNull(pAutoCorr, pMem, pLPC, pRC)) return vspStsNullPtrErr;
    Levinson<kOrder> recursion;
    recursion.run(pAutoCorr);
    if (recursion.stable) {
        recursion.round(pLPC);
        for (int i = 0; i <= kOrder; i++) pMem[i] = pLPC[i];
    } else {
        for (int i = 0; i <= kOrder; i++) pLPC[i] = pMem[i];
    }
    for (int i = 0; i < kReflections; i++) pRC[i] = recursion.stable ? round_32s(recursion.reflection[i]) : Vsp16s(0);
    return vspStsNoErr;
}

VspStatus vspsWeightedSpeech_GSMAMR_16s(const Vsp16s* pSrc, const Vsp16s* pLPC, Vsp32s mode, Vsp16s* pMem, Vsp16s* pDst) {
    constexpr int kSubframe = 40, kSubframes = 4;
    if (anyNull(pSrc, pLPC, pMem, pDst)) return vspStsNullPtrErr;
    if (!isSpeechMode(mode)) return vspStsRangeErr;
    for (int i = 0; i < kSubframes; i++) {
        const WeightingFilters filters(pLPC + i * (kOrder + 1), mode);
        Vsp16s residual[kSubframe];
        ownResidual(pSrc + i * kSubframe, filters.numerator, kOrder, residual, kSubframe, 12);
        Vsp16s* const dst = pDst + i * kSubframe;
        vspsSynthesisFilter_NR_16s_Sfs(filters.denominator, residual, dst, kSubframe, 12, pMem);
        for (int j = 0; j < kOrder; j++) pMem[j] = dst[kSubframe - kOrder + j];
    }
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
