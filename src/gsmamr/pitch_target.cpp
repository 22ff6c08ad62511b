// What the codebook searches of a subframe work on (3GPP TS 26.090 5.4 and 5.5, subframePreProc).
#include "common/residual_filter.h"
#include "common/synthesis.h"
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

    // Both pass the same two filters: the response, and the error that the filter memories alone would give.
    using Synthesis = SynthesisFilter<kOrder, kSubframe>;
    const Vsp16s zeros[kOrder] = {};
    Vsp16s response[kSubframe], error[kOrder + kSubframe];
    for (int i = 0; i < kSubframe; i++) response[i] = i <= kOrder ? filters.numerator[i] : Vsp16s(0);
    ownResidual(pSrc, pQuantLPC, kOrder, pResidual, kSubframe, kScaleFactor);
    for (int i = 0; i < kOrder; i++) error[i] = pMemErr[i];
    for (int i = 0; i < kSubframe; i++) error[kOrder + i] = pResidual[i];
    Synthesis::runTwo({pQuantLPC, response, response, zeros}, {pQuantLPC, error + kOrder, error + kOrder, pMemErr});
    ownResidual(error + kOrder, filters.numerator, kOrder, pTarget, kSubframe, kScaleFactor);
    Synthesis::runTwo({filters.denominator, response, response, zeros}, {filters.denominator, pTarget, pTarget, pMemW0});
    for (int i = 0; i < kSubframe; i++) pImpulse[i] = response[i];
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
