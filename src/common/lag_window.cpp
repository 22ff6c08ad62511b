#include "arithmetic/basic_ops.h"
#include "common/exports.h"
#include "common/tables.h"
#include "core/checks.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsLagWindow_G729_32s_I(Vsp32s* pSrcDst, Vsp32s len) {
    constexpr int kMaxLags = 12;
    if (anyNull(pSrcDst)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (len > kMaxLags) return vspStsRangeErr;
    for (int i = 0; i < len; i++) pSrcDst[i] = Mpy_32(pSrcDst[i], wlag[i]);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
