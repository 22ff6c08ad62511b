// The limit of the pitch gain where the synthesis filter resonates (`Gp_clip`).
#include "amrwb/exports.h"
#include "amrwb/modes.h"
#include "arithmetic/standard_ops.h"
#include "core/checks.h"

namespace vsp::VSP_LEVEL {

namespace {

// The mean of the smallest distance of two ISF and of the pitch gain.
enum { kDistance, kGain };
constexpr Vsp16s kLeastGain = 9830, kThreshold = 14746;  // 0.6 and 0.9, Q14

}  // namespace

VspStatus vspsPitchGainClip_AMRWB_16s(Vsp32s mode, const Vsp16s* pMem, Vsp16s* pClip) {
    if (anyNull(pMem, pClip)) return vspStsNullPtrErr;
    if (!isWideMode(mode)) return vspStsRangeErr;
    if (isLowWideMode(mode)) {
        const Vsp16s distance = Vsp16s(Mul2_16s32s(pMem[kDistance], 42));
        *pClip = pMem[kGain] > Add_16s(kThreshold, Mul_16s(1638, distance));
    } else {
        constexpr Vsp16s kResonant = 154;  // 60 Hz
        *pClip = pMem[kDistance] < kResonant && pMem[kGain] > kThreshold;
    }
    return vspStsNoErr;
}

VspStatus vspsPitchGainClipISF_AMRWB_16s(const Vsp16s* pIsf, Vsp32s mode, Vsp16s* pMem) {
    if (anyNull(pIsf, pMem)) return vspStsNullPtrErr;
    if (!isWideMode(mode) && mode != kModeDtx) return vspStsRangeErr;
    Vsp16s least = Sub_16s(pIsf[1], pIsf[0]);
    for (int i = 2; i < 15; i++) {
        const Vsp16s distance = Sub_16s(pIsf[i], pIsf[i - 1]);
        least = distance < least ? distance : least;
    }
    const Vsp16s most = isLowWideMode(mode) ? 384 : 307;  // 150 or 120 Hz
    const Vsp16s mean = high_32s(mac_32s(Mul2_16s32s(26214, pMem[kDistance]), 6554, least));
    pMem[kDistance] = mean < most ? mean : most;
    return vspStsNoErr;
}

VspStatus vspsPitchGainClipGain_AMRWB_16s(Vsp16s gain, Vsp32s mode, Vsp16s* pMem) {
    if (anyNull(pMem)) return vspStsNullPtrErr;
    if (!isWideMode(mode)) return vspStsRangeErr;
    const bool low = isLowWideMode(mode);
    const Vsp16s mean = high_32s(mac_32s(Mul2_16s32s(low ? 32113 : 29491, pMem[kGain]), low ? 655 : 3277, gain));
    pMem[kGain] = mean > kLeastGain ? mean : kLeastGain;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
