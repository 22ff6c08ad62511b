// Smooths the code gain where the spectrum is steady (`Cb_gain_average`; 3GPP TS 26.090, 6.1).
#include "arithmetic/standard_ops.h"
#include "common/history.h"
#include "core/checks.h"
#include "gsmamr/exports.h"
#include "gsmamr/frame_flags.h"
#include "gsmamr/mode_checks.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kOrder = 10;
constexpr int kGains = 7, kHangVar = 7, kHangCount = 8;  // words of the memory
constexpr Vsp16s kUnsteady = 5325;                       // 0.65 in Q13
constexpr Vsp16s kAllNew = 8192;                         // 1 in Q13

// Sum of |mean - lsf| / mean, Q13.
Vsp16s lsfDistance(const Vsp16s* lsf, const Vsp16s* mean) {
    Vsp16s sum = 0;
    for (int i = 0; i < kOrder; i++) {
        const Vsp16s difference = Abs_16s(Sub_16s(mean[i], lsf[i]));
        const int shift1 = norm_16s(difference) - 1, shift2 = norm_16s(mean[i]);
        const Vsp16s ratio = Div_16s(shl_16s(difference, shift1), shl_16s(mean[i], shift2));
        sum = Add_16s(sum, shr_16s(ratio, 2 + shift1 - shift2));
    }
    return sum;
}

// The average of the newest gains, each times weight = 1 / count in Q15.
Vsp16s meanOf(const Vsp16s* gains, int count, Vsp16s weight) {
    Vsp32s sum = 0;
    for (int i = kGains - count; i < kGains; i++) sum = mac_32s(sum, weight, gains[i]);
    return round_32s(sum);
}

}  // namespace

VspStatus vspsCodeGainSmooth_GSMAMR_16s(const Vsp16s* pLSF, const Vsp16s* pLSFMean, const Vsp16s* pFlags, Vsp32s mode,
                                        Vsp16s gain, Vsp16s* pMem, Vsp16s* pMixed) {
    if (anyNull(pLSF, pLSFMean, pFlags, pMem, pMixed)) return vspStsNullPtrErr;
    if (!isSpeechMode(mode)) return vspStsRangeErr;
    const FrameFlags flags(pFlags);
    pushBack<kGains>(pMem, gain);
    const Vsp16s distance = lsfDistance(pLSF, pLSFMean);
    pMem[kHangVar] = distance > kUnsteady ? Add_16s(pMem[kHangVar], 1) : Vsp16s(0);
    if (pMem[kHangVar] > 10) pMem[kHangCount] = 0;

    *pMixed = gain;
    if (mode <= kMode670 || mode == kMode102) {
        const bool careful = flags.doubtful() && flags.voicedHangover > 1 && flags.inNoise && isLowRate(mode);
        const int excess = distance - (careful ? 4506 : 3277);
        const bool unsteady = excess > 2048 || pMem[kHangCount] < 40 || distance > kUnsteady;
        const Vsp16s mix = unsteady ? kAllNew : excess > 0 ? Vsp16s(excess << 2) : Vsp16s(0);
        const bool longMean = flags.badNow() && flags.inNoise && isLowRate(mode);
        const Vsp16s mean = longMean ? meanOf(pMem, 7, 4681) : meanOf(pMem, 5, 6554);
        const Vsp32s sum = msu_32s(mac_32s(Mul2_16s32s(mix, gain), kAllNew, mean), mix, mean);
        *pMixed = round_32s(Mul4_32s(sum));
    }
    pMem[kHangCount] = Add_16s(pMem[kHangCount], 1);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
