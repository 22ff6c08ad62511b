// Two signals through a synthesis filter each.
#include "common/synthesis.h"
#include "core/checks.h"
#include "g729/constants.h"
#include "g729/exports.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsSynthesisFilterPair_G729_16s(const Vsp16s* pLPC1, const Vsp16s* pSrc1, Vsp16s* pDst1, const Vsp16s* pMem1,
                                           const Vsp16s* pLPC2, const Vsp16s* pSrc2, Vsp16s* pDst2, const Vsp16s* pMem2) {
    if (anyNull(pLPC1, pSrc1, pDst1, pMem1, pLPC2, pSrc2, pDst2, pMem2)) return vspStsNullPtrErr;
    SynthesisFilter<10, kL_subfr>::runTwo({pLPC1, pSrc1, pDst1, pMem1}, {pLPC2, pSrc2, pDst2, pMem2});
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
