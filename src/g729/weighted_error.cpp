// Memory of the weighting filter after a subframe (G.729 3.10).
#include "arithmetic/standard_ops.h"
#include "core/checks.h"
#include "g729/constants.h"
#include "g729/exports.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsWeightedErrorUpdate_G729_16s(const Vsp16s* pTarget, const Vsp16s* pFilteredAdaptive,
                                           const Vsp16s* pFilteredFixed, const Vsp16s* pGain, Vsp16s* pMem) {
    if (anyNull(pTarget, pFilteredAdaptive, pFilteredFixed, pGain, pMem)) return vspStsNullPtrErr;
    constexpr int kMemory = 10;
    const Vsp16s gainPitch = pGain[0], gainCode = pGain[1];
    for (int i = 0; i < kMemory; i++) {
        const int n = kL_subfr - kMemory + i;
        const Vsp16s adaptive = high_32s(Mul2_32s(Mul2_16s32s(pFilteredAdaptive[n], gainPitch)));
        const Vsp16s fixed = high_32s(Mul4_32s(Mul2_16s32s(pFilteredFixed[n], gainCode)));
        pMem[i] = Sub_16s(pTarget[n], Add_16s(adaptive, fixed));
    }
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
