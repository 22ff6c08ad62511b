#include "g729/adaptive_vector.h"

#include "common/lengths.h"
#include "core/checks.h"
#include "g729/exports.h"
#include "g729/tables.h"

namespace vsp::VSP_LEVEL {

void ownPred_lt_3(Vsp16s* excitation, int lag, int fraction) {
    const int f = fraction > 0 ? 3 - fraction : -fraction;
    ownInterpolateExcitation(inter_3l_taps.taps[f], excitation, lag + (fraction > 0));
}

static bool isLegal(const Vsp16s* pDelay) {
    return pDelay[0] >= 18 && pDelay[0] <= 144 && pDelay[1] >= -1 && pDelay[1] <= 1;
}

VspStatus vspsDecodeAdaptiveVector_G729_16s(const Vsp16s* pDelay, Vsp16s* pSrcDst, Vsp16s* pDst) {
    if (anyNull(pDelay, pSrcDst, pDst)) return vspStsNullPtrErr;
    if (!isLegal(pDelay)) return vspStsCodeRangeErr;
    Vsp16s* const current = pSrcDst + kExcitationHistory;
    ownPred_lt_3(current, pDelay[0], pDelay[1]);
    for (int n = 0; n < kL_subfr; n++) pDst[n] = current[n];
    return vspStsNoErr;
}

VspStatus vspsDecodeAdaptiveVector_G729_16s_I(const Vsp16s* pDelay, Vsp16s* pSrcDst) {
    if (anyNull(pDelay, pSrcDst)) return vspStsNullPtrErr;
    if (!isLegal(pDelay)) return vspStsCodeRangeErr;
    ownPred_lt_3(pSrcDst + kExcitationHistory, pDelay[0], pDelay[1]);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
