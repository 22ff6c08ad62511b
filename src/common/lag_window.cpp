#include "common/basic_ops.h"
#include "core/checks.h"
#include "core/level.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsLagWindow_G729_32s_I(Vsp32s* pSrcDst, Vsp32s len) {
    constexpr int kMaxLags = 12;
    if (anyNull(pSrcDst)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (len > kMaxLags) return vspStsRangeErr;
    for (int i = 0; i < len; i++) {  // G.729 Mpy_32, operands split at bit 16
        const Vsp32s hi1 = pSrcDst[i] >> 16, lo1 = (pSrcDst[i] >> 1) & 0x7FFF;
        const Vsp32s hi2 = wlag[i] >> 16, lo2 = (wlag[i] >> 1) & 0x7FFF;
        const Vsp32s product = hi1 * hi2 + ((hi1 * lo2) >> 15) + ((lo1 * hi2) >> 15);
        pSrcDst[i] = wrapAdd_32s(product, product);
    }
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
