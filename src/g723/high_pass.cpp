// The high-pass filter before the encoder (G.723.1 2.3, `Rem_Dc`).
#include "core/checks.h"
#include "g723/exports.h"
#include "g723/operators.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsHighPassFilter_G723_16s_I(Vsp16s* pSrcDst, Vsp32s len, Vsp32s* pMem) {
    constexpr Vsp16s kFeedback = 0x7F00;  // 127 / 128
    if (anyNull(pSrcDst, pMem)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    Vsp16s last = Vsp16s(pMem[0]);
    Vsp32s sum = pMem[1];
    for (Vsp32s n = 0; n < len; n++) {
        const Vsp32s difference = Cnvrt_64s32s((Vsp64s(pSrcDst[n]) - last) * 0x8000);
        last = pSrcDst[n];
        sum = Add_32s(difference, g723::mul_32s16s_Q15(sum, kFeedback));
        pSrcDst[n] = round_32s(sum);
    }
    pMem[0] = last;
    pMem[1] = sum;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
