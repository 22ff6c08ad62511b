// Enhancement of the decoded excitation: noise and pitch enhancer, and the long-term post-processing of the low rates
// (3GPP TS 26.190, 6.1).
#include "amrwb/exports.h"
#include "amrwb/lengths.h"
#include "amrwb/normalised.h"
#include "arithmetic/split_32.h"
#include "core/checks.h"

namespace vsp::VSP_LEVEL {

namespace {

// The factor that gives the samples of one energy another, Q13 (`agc2`).
Vsp16s amplitudeRatio(Vsp32s wanted, Vsp32s present) {
    if (wanted == 0) return 0;
    const int presentNorm = norm_32s(present) - 1, wantedNorm = norm_32s(wanted);
    const Vsp16s quotient = Div_16s(round_32s(shl_32s(present, presentNorm)), round_32s(shl_32s(wanted, wantedNorm)));
    const Vsp32s ratio = shr_32s(quotient * 128, presentNorm - wantedNorm);
    return round_32s(shl_32s(ownInverseSqrt_32s(ratio), 9));
}

Vsp32s energyOfQuarters(const Vsp16s* x) {
    const auto quarter = [](auto a) { return shr(a, 2); };
    return Cnvrt_64s32s(2 * dot(x, x, kWideSubframe, quarter, quarter));
}

// Half of what L_sub makes of doubled values; its largest value is odd, but that bit is rounded away.
VSP_INLINE Vsp32s subtractHalves(Vsp32s a, Vsp32s b) {
    constexpr Vsp32s kLargest = 0x3FFFFFFF, kSmallest = -0x40000000;
    const Vsp32s difference = a - b;
    return difference > kLargest ? kLargest : difference < kSmallest ? kSmallest : difference;
}

}  // namespace

VspStatus vspsNoiseEnhance_AMRWB_32s_I(Vsp16s voicing, Vsp16s stability, Vsp32s* pThreshold, Vsp32s* pGain) {
    constexpr Vsp16s kRise = 6226, kFall = 27536;  // 1.5 dB either way, less 1 upwards
    if (anyNull(pThreshold, pGain)) return vspStsNullPtrErr;
    const Vsp16s smoothing = Mul_16s(stability, Sub_16s(16384, Vsp16s(voicing >> 1)));
    const Vsp32s gain = *pGain, limit = *pThreshold;
    Vsp32s near;
    if (gain < limit) {
        const Vsp32s raised = Add_32s(gain, mulSplit_32s16s(gain, kRise));
        near = raised < limit ? raised : limit;
    } else {
        const Vsp32s lowered = mulSplit_32s16s(gain, kFall);
        near = lowered > limit ? lowered : limit;
    }
    *pThreshold = near;
    *pGain = Add_32s(mulSplit_32s16s(gain, Sub_16s(kMax16, smoothing)), mulSplit_32s16s(near, smoothing));
    return vspStsNoErr;
}

VspStatus vspsPitchEnhance_AMRWB_16s(const Vsp16s* pCode, Vsp16s voicing, Vsp16s* pDst) {
    if (anyNull(pCode, pDst)) return vspStsNullPtrErr;
    const Vsp32s factor = (voicing >> 3) + 4096;
    Vsp16s code[kWideSubframe + 2];  // with a zero at either end
    code[0] = code[kWideSubframe + 1] = 0;
    __builtin_memcpy(code + 1, pCode, kWideSubframe * sizeof *code);
    for (int i = 0; i < kWideSubframe; i++) {
        const Vsp32s sum = subtractHalves(subtractHalves(code[i + 1] * 32768, code[i + 2] * factor), code[i] * factor);
        const Vsp32s rounded = (sum + 0x4000) >> 15;
        pDst[i] = Vsp16s(rounded < kMax16 ? rounded : kMax16);
    }
    return vspStsNoErr;
}

VspStatus vspsPitchPostProcess_AMRWB_16s_I(const Vsp16s* pVector, Vsp16s gainPitch, Vsp16s* pExc) {
    constexpr Vsp16s kHalf = 16384;
    if (anyNull(pVector, pExc)) return vspStsNullPtrErr;
    const Vsp16s gain = shl_16s(gainPitch, 1);
    if (gain <= kHalf) return vspStsNoErr;

    Vsp16s sum[kWideSubframe];
    for (int i = 0; i < kWideSubframe; i++) {
        const Vsp32s product = (((pVector[i] + 4) >> 3) * gain >> 15) * gainPitch;
        sum[i] = sat_16s(((product + 0x8000) >> 16) + pExc[i]);
    }
    const Vsp32s present = energyOfQuarters(sum);
    if (present == 0) {
        __builtin_memcpy(pExc, sum, sizeof sum);
        return vspStsNoErr;
    }
    const Vsp16s ratio = amplitudeRatio(energyOfQuarters(pExc), present);
    for (int i = 0; i < kWideSubframe; i++) pExc[i] = sat_16s((sum[i] * ratio) >> 13);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
