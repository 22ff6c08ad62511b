// Pitch sharpening (`Pit_shrp`).
#include "amrwb/exports.h"
#include "arithmetic/basic_ops.h"
#include "core/checks.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsPitchSharpen_AMRWB_16s_I(Vsp16s lag, Vsp16s sharp, Vsp16s* pSrcDst, Vsp32s len) {
    if (anyNull(pSrcDst)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (lag < 1) return vspStsRangeErr;
    Vsp32s i = lag;
    // The product of -1 and -1 is the only one that mulRoundWrap lacks.
    constexpr int W = S16_128::width;
    if (lag >= W && sharp != kMin16)
        for (; i <= len - W; i += W) {
            Vsp16s* const at = pSrcDst + i;
            addSat(S16_128::load(at), mulRoundWrap(S16_128::load(at - lag), S16_128::splat(sharp))).store(at);
        }
    for (; i < len; i++) pSrcDst[i] = sat_16s(pSrcDst[i] + ((pSrcDst[i - lag] * sharp + 0x4000) >> 15));
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
