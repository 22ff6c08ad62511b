// The adaptive-codebook vector (`Pred_lt_3or6`).
#include "common/adaptive_vector.h"

#include "core/checks.h"
#include "gsmamr/exports.h"
#include "gsmamr/pitch_range.h"
#include "gsmamr/pitch_tables.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsDecodeAdaptiveVector_GSMAMR_16s_I(const Vsp16s* pDelay, Vsp32s mode, Vsp16s* pSrcDst) {
    if (anyNull(pDelay, pSrcDst)) return vspStsNullPtrErr;
    if (!isSpeechMode(mode)) return vspStsRangeErr;
    const int lag = pDelay[0], outermost = mode == kMode122 ? 3 : 1;
    if (lag < kFirstLag || lag > kLastLag || pDelay[1] < -outermost || pDelay[1] > outermost) return vspStsRangeErr;
    const int sixths = mode == kMode122 ? pDelay[1] : 2 * pDelay[1];
    const int later = sixths > 0 ? kSixths - sixths : -sixths;
    ownInterpolateExcitation(inter_6_taps.taps[later], pSrcDst, lag + (sixths > 0));
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
