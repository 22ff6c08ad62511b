// Emphasises the pitch in the excitation (3GPP TS 26.090, 6.1).
#include "core/checks.h"
#include "gsmamr/exports.h"
#include "gsmamr/gain_control.h"
#include "gsmamr/mode_checks.h"

namespace vsp::VSP_LEVEL {

VspStatus vspsExcitationEmphasis_GSMAMR_16s(const Vsp16s* pVector, const Vsp16s* pExc, Vsp32s mode, Vsp16s sharp,
                                            Vsp16s gain, Vsp16s* pDst) {
    constexpr Vsp16s kHalf = 8192;
    if (anyNull(pVector, pExc, pDst)) return vspStsNullPtrErr;
    if (!isSpeechMode(mode)) return vspStsRangeErr;
    if (sharp <= kHalf) {
        for (int i = 0; i < kL_subfr; i++) pDst[i] = pExc[i];
        return vspStsNoErr;
    }
    const Vsp16s factor = shl_16s(sharp, 1);
    for (int i = 0; i < kL_subfr; i++) {
        const Vsp32s product = Mul2_16s32s(Mul_16s(pVector[i], factor), gain);
        pDst[i] = Add_16s(round_32s(mode == kMode122 ? product >> 1 : product), pExc[i]);
    }
    const Vsp32s present = ownSubframeEnergy(pDst);
    if (present == 0) return vspStsNoErr;
    const Vsp16s ratio = ownAmplitudeRatio(ownSubframeEnergy(pExc), present);
    for (int i = 0; i < kL_subfr; i++) pDst[i] = high_32s(shl_32s(Mul2_16s32s(pDst[i], ratio), 3));
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
