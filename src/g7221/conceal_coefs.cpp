// Coefficients of frames in error (`error_handling`).
#include "core/checks.h"
#include "g7221/exports.h"
#include "g7221/layout.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsConcealCoefs_G722_16s_I(Vsp32s flag, Vsp32s regions, Vsp16s* pCoef, Vsp16s* pOld, Vsp16s* pMagShift,
                                      Vsp16s* pOldMagShift) {
    if (anyNull(pCoef, pOld, pMagShift, pOldMagShift)) return vspStsNullPtrErr;
    if (!hasRegions(regions)) return vspStsSizeErr;
    const int coded = kRegion * regions, len = coded / 7 * 8;
    for (int i = 0; i < coded; i++) {
        const Vsp16s x = pCoef[i];
        pCoef[i] = flag == 0 ? x : pOld[i];
        pOld[i] = Vsp16s(flag == 0 ? x : 0);
    }
    for (int i = coded; i < len; i++) pCoef[i] = 0;
    const Vsp16s shift = *pMagShift;
    *pMagShift = flag == 0 ? shift : *pOldMagShift;
    *pOldMagShift = Vsp16s(flag == 0 ? shift : 0);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
