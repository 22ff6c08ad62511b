// Emphasises the pitch in the excitation (3GPP TS 26.090, 6.1).
#include "common/post_filter.h"
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
    const S16_128 factor = S16_128::splat(shl_16s(sharp, 1)), gains = S16_128::splat(gain);
    for (int i = 0; i < kL_subfr; i += S16_128::width) {
        const S16_128 vector = mulShift15Sat(S16_128::load(pVector + i), factor);
        const S16_128 pitch = mode == kMode122 ? product<16, true>(vector, gains) : product<15, true>(vector, gains);
        addSat(pitch, S16_128::load(pExc + i)).store(pDst + i);
    }
    const Vsp32s present = ownSubframeEnergy(pDst);
    if (present == 0) return vspStsNoErr;
    const S16_128 ratio = S16_128::splat(ownAmplitudeRatio(ownSubframeEnergy(pExc), present));
    for (int i = 0; i < kL_subfr; i += S16_128::width) product<12, false>(S16_128::load(pDst + i), ratio).store(pDst + i);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
