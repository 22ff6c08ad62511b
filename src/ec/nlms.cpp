// Full-band NLMS: each sample's pass updates the taps by the error of the sample before and filters with them.
#include "common/basic_ops.h"
#include "core/checks.h"
#include "core/level.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsNLMS_EC_32f(const Vsp32f* pRef, const Vsp32f* pNear, const Vsp32f* pStepSize, Vsp32f* pDst, Vsp32s len,
                          Vsp32f* pTaps, Vsp32s numTaps, Vsp32f* pScaledErr) {
    if (anyNull(pRef, pNear, pStepSize, pDst, pTaps, pScaledErr)) return vspStsNullPtrErr;
    if (len < 1 || numTaps < 1) return vspStsBadArgErr;
    Vsp32f w = *pScaledErr;
    for (Vsp32s n = 0; n < len; n++) {
        Vsp32f y = 0;
        for (Vsp32s k = 0; k < numTaps; k++) {
            pTaps[k] += w * pRef[n - k - 1];
            y += pRef[n - k] * pTaps[k];
        }
        pDst[n] = pNear[n] - y;
        w = pDst[n] * pStepSize[n];
    }
    *pScaledErr = w;
    return vspStsNoErr;
}

VspStatus vspsNLMS_EC_16s(const Vsp16s* pRef, const Vsp16s* pNear, const Vsp32s* pStepSize, Vsp16s* pDst, Vsp32s len,
                          Vsp16s* pTaps, Vsp32s numTaps, Vsp16s* pScaledErr) {
    if (anyNull(pRef, pNear, pStepSize, pDst, pTaps, pScaledErr)) return vspStsNullPtrErr;
    if (len < 1 || numTaps < 1) return vspStsBadArgErr;
    Vsp32s w = *pScaledErr;
    for (Vsp32s n = 0; n < len; n++) {
        Vsp32s y = 0;
        for (Vsp32s k = 0; k < numTaps; k++) {
            pTaps[k] = sat_16s(pTaps[k] + (wrapAdd_32s(wrapMul_32s(pRef[n - k - 1], w), 4096) >> 13));
            y = Add_32s(y, (pTaps[k] * pRef[n - k] + 16384) >> 15);
        }
        pDst[n] = sat_16s(wrapSub_32s(pNear[n], y));
        w = wrapAdd_32s(wrapMul_32s(pDst[n], pStepSize[n]), 1024) >> 11;
    }
    *pScaledErr = sat_16s(w);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
