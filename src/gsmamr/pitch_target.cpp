// What the codebook searches of a subframe work on (3GPP TS 26.090 5.4 and 5.5, subframePreProc).
#include "common/exports.h"
#include "common/residual_filter.h"
#include "core/checks.h"
#include "gsmamr/exports.h"
#include "gsmamr/modes.h"
#include "gsmamr/weighting.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsPitchTarget_GSMAMR_16s(const Vsp16s* pSrc, const Vsp16s* pLPC, const Vsp16s* pQuantLPC, const Vsp16s* pMemErr,
                                     const Vsp16s* pMemW0, Vsp32s mode, Vsp16s* pImpulse, Vsp16s* pTarget,
                                     Vsp16s* pResidual) {
    constexpr int kOrder = 10, kSubframe = 40, kScaleFactor = 12;
    if (anyNull(pSrc, pLPC, pQuantLPC, pMemErr, pMemW0, pImpulse, pTarget, pResidual)) return vspStsNullPtrErr;
    if (!isSpeechMode(mode)) return vspStsRangeErr;
    const WeightingFilters filters(pLPC, mode);

    const Vsp16s zeros[kOrder] = {};
    for (int i = 0; i < kSubframe; i++) pImpulse[i] = i <= kOrder ? filters.numerator[i] : Vsp16s(0);
    vspsSynthesisFilter_NR_16s_ISfs(pQuantLPC, pImpulse, kSubframe, kScaleFactor, zeros);
    vspsSynthesisFilter_NR_16s_ISfs(filters.denominator, pImpulse, kSubframe, kScaleFactor, zeros);

    ownResidual(pSrc, pQuantLPC, kOrder, pResidual, kSubframe, kScaleFactor);
    Vsp16s error[kOrder + kSubframe];  // of what the filter memories alone would give
    for (int i = 0; i < kOrder; i++) error[i] = pMemErr[i];
    vspsSynthesisFilter_NR_16s_Sfs(pQuantLPC, pResidual, error + kOrder, kSubframe, kScaleFactor, pMemErr);
    ownResidual(error + kOrder, filters.numerator, kOrder, pTarget, kSubframe, kScaleFactor);
    vspsSynthesisFilter_NR_16s_ISfs(filters.denominator, pTarget, kSubframe, kScaleFactor, pMemW0);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
