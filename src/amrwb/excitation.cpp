// The total excitation of a subframe and what follows from it: the voicing, the memory of the weighting filter.
#include "amrwb/exports.h"
#include "amrwb/lengths.h"
#include "amrwb/normalised.h"
#include "core/checks.h"
#include "vector/magnitude.h"

namespace vsp::VSP_LEVEL {

namespace {

Vsp16s excitationSaturating(Vsp16s code, Vsp16s gainCode, Vsp16s exc, Vsp16s gainPitch) {
    return round_32s(shl_32s(mac_32s(shl_32s(Mul2_16s32s(code, gainCode), 5), exc, gainPitch), 1));
}

bool isExponent(Vsp32s scale) { return scale >= -15 && scale <= 15; }

}  // namespace

VspStatus vspsVoicingFactor_AMRWB_16s(const Vsp16s* pExc, Vsp32s scale, Vsp16s gainPitch, const Vsp16s* pCode,
                                      Vsp16s gainCode, Vsp16s* pFactor) {
    if (anyNull(pExc, pCode, pFactor)) return vspStsNullPtrErr;
    if (!isExponent(scale)) return vspStsRangeErr;

    const Normalised adaptive = ownNormalisedEnergy(pExc, kWideSubframe);
    const Vsp32s square = Mul2_16s32s(gainPitch, gainPitch);
    const int norm = norm_32s(square);
    Vsp16s energy1 = Mul_16s(high_32s(adaptive.value), high_32s(square << norm));
    const int exponent1 = adaptive.exponent - 2 * scale - norm - 10;

    const Normalised fixed = ownNormalisedEnergy(pCode, kWideSubframe);
    const int normOfGain = norm_16s(gainCode);
    const Vsp16s gain = Vsp16s(gainCode * (1 << normOfGain));
    Vsp16s energy2 = Mul_16s(high_32s(fixed.value), Mul_16s(gain, gain));
    const int exponent2 = fixed.exponent - 2 * normOfGain;

    const int more = exponent1 - exponent2;
    energy1 = shr_16s(energy1, more >= 0 ? 1 : 1 - more);
    energy2 = shr_16s(energy2, more >= 0 ? more + 1 : 1);
    const Vsp16s difference = Sub_16s(energy1, energy2), sum = Add_16s(Add_16s(energy1, energy2), 1);
    *pFactor = difference >= 0 ? Div_16s(difference, sum) : Vsp16s(-Div_16s(Negate_16s(difference), sum));
    return vspStsNoErr;
}

VspStatus vspsExcitation_AMRWB_16s_I(const Vsp16s* pCode, Vsp16s gainPitch, Vsp16s gainCode, Vsp16s* pExc) {
    if (anyNull(pCode, pExc)) return vspStsNullPtrErr;
    // Sums in a quarter of their scale that cannot saturate before they are rounded.
    constexpr int kMaxExact = (1 << 25) - (1 << 9);
    const int magnitude = gainCode < 0 ? -gainCode : gainCode;
    if (maxMagnitude(pCode, kWideSubframe) * magnitude > kMaxExact || gainPitch == kMin16) {
        for (int i = 0; i < kWideSubframe; i++) pExc[i] = excitationSaturating(pCode[i], gainCode, pExc[i], gainPitch);
        return vspStsNoErr;
    }
    for (int i = 0; i < kWideSubframe; i++)
        pExc[i] = sat_16s((32 * gainCode * pCode[i] + pExc[i] * gainPitch + 0x2000) >> 14);
    return vspStsNoErr;
}

VspStatus vspsWeightedErrorUpdate_AMRWB_16s(const Vsp16s* pTarget, const Vsp16s* pY1, const Vsp16s* pY2, Vsp16s gainPitch,
                                            Vsp16s gainCode, Vsp32s shift, Vsp16s* pMem) {
    if (anyNull(pTarget, pY1, pY2, pMem)) return vspStsNullPtrErr;
    if (!isExponent(shift)) return vspStsRangeErr;
    constexpr int kLast = kWideSubframe - 1;
    Vsp32s sum = Sub_32s(0, shl_32s(Mul2_16s32s(gainCode, pY2[kLast]), 5 + shift));
    sum = msu_32s(mac_32s(sum, pTarget[kLast], 16384), pY1[kLast], gainPitch);
    *pMem = round_32s(shl_32s(sum, 1 - shift));
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
