// Echo estimate by a full-band FIR filter, subtracted from the near-end signal.
#include "common/basic_ops.h"
#include "core/checks.h"
#include "core/level.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsFIR_EC_32f(const Vsp32f* pRef, const Vsp32f* pNear, Vsp32f* pDst, Vsp32s len, const Vsp32f* pTaps,
                         Vsp32s numTaps) {
    if (anyNull(pRef, pNear, pDst, pTaps)) return vspStsNullPtrErr;
    if (len < 1 || numTaps < 1) return vspStsBadArgErr;
    for (Vsp32s n = 0; n < len; n++) {
        Vsp32f y = 0;
        for (Vsp32s k = 0; k < numTaps; k++) y += pRef[n - k] * pTaps[k];
        pDst[n] = pNear[n] - y;
    }
    return vspStsNoErr;
}

VspStatus vspsFIR_EC_16s(const Vsp16s* pRef, const Vsp16s* pNear, Vsp16s* pDst, Vsp32s len, const Vsp16s* pTaps,
                         Vsp32s numTaps) {
    if (anyNull(pRef, pNear, pDst, pTaps)) return vspStsNullPtrErr;
    if (len < 1 || numTaps < 1) return vspStsBadArgErr;
    for (Vsp32s n = 0; n < len; n++) {
        Vsp32s y = 0;
        for (Vsp32s k = 0; k < numTaps; k++) y = Add_32s(y, (pRef[n - k] * pTaps[k] + 16384) >> 15);
        pDst[n] = sat_16s(wrapSub_32s(pNear[n], y));
    }
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
