// The memories of the weighted error at the end of a subframe.
#include "arithmetic/standard_ops.h"
#include "common/lengths.h"
#include "core/checks.h"
#include "gsmamr/exports.h"
#include "gsmamr/mode_checks.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsWeightedErrorUpdate_GSMAMR_16s(const Vsp16s* pSpeech, const Vsp16s* pSynth, const Vsp16s* pTarget,
                                             const Vsp16s* pY1, const Vsp16s* pY2, const Vsp16s* pGain, Vsp32s mode,
                                             Vsp16s* pMemErr, Vsp16s* pMemW0) {
    constexpr int kOrder = 10;
    if (anyNull(pSpeech, pSynth, pTarget, pY1, pY2, pGain, pMemErr, pMemW0)) return vspStsNullPtrErr;
    if (!isSpeechMode(mode)) return vspStsRangeErr;
    const Vsp16s gainPitch = pGain[0], gainCode = pGain[1];
    const int codeShift = mode == kMode122 ? 4 : 2;
    for (int i = 0; i < kOrder; i++) {
        const int n = kL_subfr - kOrder + i;
        const Vsp16s adaptive = high_32s(Mul2_32s(Mul2_16s32s(pY1[n], gainPitch)));
        const Vsp16s code = high_32s(shl_32s(Mul2_16s32s(pY2[n], gainCode), codeShift));
        pMemErr[i] = Sub_16s(pSpeech[n], pSynth[n]);
        pMemW0[i] = Sub_16s(pTarget[n], Add_16s(adaptive, code));
    }
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
