// LP synthesis filter of order 10.
#include "common/exports.h"
#include "common/synthesis.h"
#include "core/checks.h"

namespace vsp::VSP_LEVEL {

static VspStatus synthesise(const Vsp16s* pLPC, const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len, Vsp32s scaleFactor,
                            const Vsp16s* pMem) {
    if (len < 1) return vspStsSizeErr;
    if (scaleFactor < 0 || scaleFactor > 15) return vspStsScaleRangeErr;
    return SynthesisFilter<10>::run(pLPC, pSrc, pDst, len, scaleFactor, pMem) ? vspStsOverflow : vspStsNoErr;
}

VspStatus vspsSynthesisFilter_NR_16s_Sfs(const Vsp16s* pLPC, const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len,
                                         Vsp32s scaleFactor, const Vsp16s* pMem) {
    if (anyNull(pLPC, pSrc, pDst, pMem)) return vspStsNullPtrErr;
    return synthesise(pLPC, pSrc, pDst, len, scaleFactor, pMem);
}

VspStatus vspsSynthesisFilter_NR_16s_ISfs(const Vsp16s* pLPC, Vsp16s* pSrcDst, Vsp32s len, Vsp32s scaleFactor,
                                          const Vsp16s* pMem) {
    if (anyNull(pLPC, pSrcDst, pMem)) return vspStsNullPtrErr;
    return synthesise(pLPC, pSrcDst, pSrcDst, len, scaleFactor, pMem);
}

}  // namespace vsp::VSP_LEVEL
