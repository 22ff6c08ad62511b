#include "common/inv_sqrt.h"

#include "common/exports.h"
#include "core/checks.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsInvSqrt_32s_I(Vsp32s* pSrcDst, Vsp32s len) {
    if (anyNull(pSrcDst)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    for (int i = 0; i < len; i++) pSrcDst[i] = ownInvSqrt(pSrcDst[i]);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
