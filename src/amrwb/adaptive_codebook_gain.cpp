// The gain of the adaptive codebook, the choice of its filter and the removal of its contribution from the target (3GPP TS
// 26.190, 5.7).
#include "amrwb/adaptive_vector.h"
#include "amrwb/exports.h"
#include "amrwb/filtered_excitation.h"
#include "amrwb/modes.h"
#include "amrwb/normalised.h"
#include "core/checks.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr Vsp16s kMaxGain = 19661, kClippedGain = 15565;  // 1.2 and 0.95 in Q14

// dst = target - gain * y (`Updt_tar`)
VSP_INLINE void subtract(Vsp16s gain, const Vsp16s* y, const Vsp16s* target, Vsp16s* dst) {
    for (int i = 0; i < kWideSubframe; i++) dst[i] = sat_16s((target[i] * 16384 - y[i] * gain) >> 14);
}

// What a vector of the codebook gives.
struct Contribution {
    Vsp16s y[kWideSubframe], target[kWideSubframe];  // filtered, and what is left of the target
    Normalised energy, correlation;
    Vsp16s gain;

    Contribution(const Vsp16s* vector, const Vsp16s* h, const Vsp16s* fullTarget, bool clip) {
        ownFilterExcitation(vector, h, y);
        energy = ownNormalisedEnergy(y, kWideSubframe);
        correlation = ownNormalisedDot(fullTarget, y, kWideSubframe);
        gain = 0;
        if (correlation.value >= 0) {
            const Vsp16s quotient = Div_16s(Vsp16s(high_32s(correlation.value) >> 1), high_32s(energy.value));
            gain = shl_16s(quotient, correlation.exponent - energy.exponent);
        }
        const Vsp16s most = clip ? kClippedGain : kMaxGain;
        gain = gain < most ? gain : most;
        subtract(gain, y, fullTarget, target);
    }
};

// Whether the sum of the squares of a is no larger than that of b; the former saturates first.
bool noMoreEnergy(const Vsp16s* a, const Vsp16s* b) {
    return Cnvrt_64s32s(2 * energy(a, kWideSubframe)) <= 2 * energy(b, kWideSubframe);
}

}  // namespace

VspStatus vspsAdaptiveCodebookGain_AMRWB_16s(const Vsp16s* pTarget, const Vsp16s* pImpulse, Vsp32s mode, Vsp16s clip,
                                             Vsp16s* pExc, Vsp16s* pY, Vsp16s* pTarget2, Vsp16s* pCoeff, Vsp16s* pGain,
                                             Vsp16s* pSelect) {
    if (anyNull(pTarget, pImpulse, pExc, pY, pTarget2, pCoeff, pGain, pSelect)) return vspStsNullPtrErr;
    if (!isWideMode(mode)) return vspStsRangeErr;
    if (clip != 0 && clip != 1) return vspStsRangeErr;

    const auto take = [&](const Contribution& chosen) {
        for (int i = 0; i < kWideSubframe; i++) {
            pY[i] = chosen.y[i];
            pTarget2[i] = chosen.target[i];
        }
        pCoeff[0] = high_32s(chosen.energy.value);
        pCoeff[1] = Vsp16s(chosen.energy.exponent);
        pCoeff[2] = high_32s(chosen.correlation.value);
        pCoeff[3] = Vsp16s(chosen.correlation.exponent);
        *pGain = chosen.gain;
    };
    Vsp16s smooth[kWideSubframe];
    lowPass(pExc, smooth);
    const Contribution ofSmooth(smooth, pImpulse, pTarget, clip == 1);
    *pSelect = 0;
    if (!isLowWideMode(mode)) {
        const Contribution ofExc(pExc, pImpulse, pTarget, clip == 1);
        if (noMoreEnergy(ofExc.target, ofSmooth.target)) {
            *pSelect = 1;
            take(ofExc);
            return vspStsNoErr;
        }
    }
    for (int i = 0; i < kWideSubframe; i++) pExc[i] = smooth[i];
    take(ofSmooth);
    return vspStsNoErr;
}

VspStatus vspsAdaptiveCodebookContribution_AMRWB_16s(Vsp16s gain, const Vsp16s* pY, const Vsp16s* pTarget, Vsp16s* pDst) {
    if (anyNull(pY, pTarget, pDst)) return vspStsNullPtrErr;
    subtract(gain, pY, pTarget, pDst);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
