// Decoder of the gains (G.729 3.9, 4.1.5, 4.4.2, 4.4.3 and Annexes D and E).
#include "arithmetic/scaled_log2.h"
#include "core/checks.h"
#include "g729/constants.h"
#include "g729/exports.h"
#include "g729/gain_prediction.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

PredictedGain ownPredictGain(const Vsp16s* code, const Vsp16s* pastEnergy) {
    // 10 log10(2) with the sign turned, Q13, and the mean.
    const Vsp32s level = mac_32s(scaledLog2(Cnvrt_64s32s(2 * energy(code, kL_subfr)), -24660), 32588, 32);
    Vsp32s decibels = shl_32s(level, 10);  // Q24
    for (int i = 0; i < kEnergies; i++) decibels = mac_32s(decibels, pred[i], pastEnergy[i]);
    const Vsp32s octaves = Mul2_16s32s(high_32s(decibels), 5439) >> 8;  // log2(10) / 20 of them
    return {Vsp16s(ownPow2(14, Vsp16s((octaves >> 1) & 0x7FFF))), 14 - (octaves >> 16)};
}

static void remember(Vsp16s energy, Vsp16s* pastEnergy) {
    for (int i = kEnergies - 1; i > 0; i--) pastEnergy[i] = pastEnergy[i - 1];
    pastEnergy[0] = energy;
}

void ownGainsOfEntries(const GainCodebooks& t, int entry1, int entry2, PredictedGain predicted, Vsp16s* pastEnergy,
                       Vsp16s* gain) {
    const Vsp32s factor = (t.gbk1[entry1][1] + t.gbk2[entry2][1]) >> t.codeShift;
    gain[0] = Vsp16s(t.gbk1[entry1][0] + t.gbk2[entry2][0]);
    const Vsp32s code = Mul2_16s32s(Vsp16s(factor >> (1 - t.codeShift)), predicted.mantissa);
    gain[1] = high_32s(shl_32s(code, 4 - t.codeShift - predicted.exponent));
    Vsp16s exponent, fraction;
    ownLog2(factor, &exponent, &fraction);
    const Vsp32s octaves = (exponent - 13) * 0x10000 + fraction * 2;
    remember(Mul_16s(high_32s(shl_32s(octaves, 13)), 24660), pastEnergy);
}

static VspStatus decode(const GainCodebooks& t, int index, const Vsp16s* code, Vsp16s* pastEnergy, Vsp16s* gain) {
    if (index < 0 || index >= t.entries1 * t.entries2) return vspStsCodeRangeErr;
    const int entry1 = t.imap1[index / t.entries2], entry2 = t.imap2[index % t.entries2];
    ownGainsOfEntries(t, entry1, entry2, ownPredictGain(code, pastEnergy), pastEnergy, gain);
    return vspStsNoErr;
}

VspStatus vspsGainDecode_G729_16s(Vsp16s index, const Vsp16s* pCode, Vsp16s* pPastEnergy, Vsp16s* pGain) {
    if (anyNull(pCode, pPastEnergy, pGain)) return vspStsNullPtrErr;
    return decode(gainCodebooks, index, pCode, pPastEnergy, pGain);
}

VspStatus vspsGainDecode_G729D_16s(Vsp16s index, const Vsp16s* pCode, Vsp16s* pPastEnergy, Vsp16s* pGain) {
    if (anyNull(pCode, pPastEnergy, pGain)) return vspStsNullPtrErr;
    return decode(gainCodebooks_6k, index, pCode, pPastEnergy, pGain);
}

// Gain_update_erasure: the average less 4 dB.
static void rememberErased(Vsp16s* pastEnergy) {
    constexpr Vsp16s kLowest = -14336;
    int sum = 0;
    for (int i = 0; i < kEnergies; i++) sum += pastEnergy[i];
    const Vsp16s average = Sub_16s(Vsp16s(sum >> 2), 4096);
    remember(average > kLowest ? average : kLowest, pastEnergy);
}

VspStatus vspsGainDecodeErased_G729_16s(Vsp16s* pPastEnergy, Vsp16s* pGain) {
    if (anyNull(pPastEnergy, pGain)) return vspStsNullPtrErr;
    constexpr Vsp16s kPitch = 29491, kCode = 32111;  // 0.9 and 0.98 in Q15; the former is also the limit, in Q14
    const Vsp16s pitch = Mul_16s(pGain[0], kPitch);
    pGain[0] = pitch > kPitch ? kPitch : pitch;
    pGain[1] = Mul_16s(pGain[1], kCode);
    rememberErased(pPastEnergy);
    return vspStsNoErr;
}

VspStatus vspsGainDecodeErased_G729E_16s(Vsp16s count, Vsp16s stationary, Vsp16s* pMuting, Vsp16s* pPastEnergy,
                                         Vsp16s* pGain) {
    if (anyNull(pMuting, pPastEnergy, pGain)) return vspStsNullPtrErr;
    if (count < 0) return vspStsRangeErr;
    if (stationary != 0 && stationary != 1) return vspStsRangeErr;
    if (count < 2) {
        pGain[0] = stationary == 1 ? 16384 : 15564;
    } else {
        pGain[0] = Mul_16s(pGain[0], *pMuting);
        pGain[1] = Mul_16s(pGain[1], *pMuting);
        if (stationary == 0)
            *pMuting = Mul_16s(*pMuting, 32112);
        else if (count > 10)
            *pMuting = Mul_16s(*pMuting, 32604);
    }
    rememberErased(pPastEnergy);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
