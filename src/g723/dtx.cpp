// Discontinuous transmission in the encoder (`Update_Acf`, `Cod_Cng`; G.723.1 A.3).
#include "core/checks.h"
#include "core/state_size.h"
#include "g723/exports.h"
#include "g723/operators.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kOrder = 10, kLags = kOrder + 1, kSubframes = 4, kFrames = 4, kEnergies = 3;
constexpr Vsp16s kNotSent = 0, kActive = 1, kDescriptor = 2;  // types of frames

// All lists begin with the newest frame.
struct State {
    Vsp16s autocorr[kFrames * kLags], shift[kFrames];  // value * 2^-shift
    Vsp16s lsf[kOrder];                                // of the last descriptor
    Vsp16s reserved[kOrder];
    Vsp16s filterCorr[kLags], filterShift;  // of the filter that was described last
    Vsp16s energy[kEnergies], numEnergies;
    Vsp16s gainIndex, sidGain, gain;
    Vsp16s spare;
};
static_assert(sizeof(State) == 176);

// Adds up n autocorrelations to one (`Sum_Acf`, `Update_Acf`).
Vsp16s sumOf(const Vsp16s* autocorr, const Vsp16s* shifts, int n, Vsp16s* sum) {
    Vsp16s shift = shifts[0];
    for (int i = 1; i < n; i++) shift = shifts[i] < shift ? shifts[i] : shift;
    shift = Add_16s(shift, 14);
    Vsp32s sums[kLags] = {};
    for (int i = 0; i < n; i++) {
        const int by = Sub_16s(shift, shifts[i]);
        for (int j = 0; j < kLags; j++) sums[j] = Add_32s(sums[j], shl_32s(autocorr[kLags * i + j], by));
    }
    const int norm = 16 - norm_32s(sums[0]), down = norm > 0 ? norm : 0;
    for (int j = 0; j < kLags; j++) sum[j] = Vsp16s(sums[j] >> down);
    return Sub_16s(shift, Vsp16s(down));
}

// Of the coefficients of 1 - the filter (`Calc_RC`).
void correlateCoefficients(const Vsp16s* lpc, State& s) {
    const Vsp32s energy = Add_32s(dotSaturating(lpc, lpc, kOrder) >> 1, 0x04000000);
    const int shift = norm_32s(energy) - 2;
    s.filterShift = Vsp16s(shift);
    s.filterCorr[0] = round_32s(shl_32s(energy, shift));
    for (int i = 1; i < kLags; i++) {
        Vsp32s sum = Mul2_16s32s(-8192, lpc[i - 1]);
        for (int j = 0; j < kOrder - i; j++) sum = mac_32s(sum, lpc[j], lpc[j + i]);
        s.filterCorr[i] = round_32s(shl_32s(sum, shift));
    }
}

// Whether the described filter leaves much more of the newest frame than the one made for it does (`LpcDiff`).
bool filterIsAnother(const State& s) {
    Vsp32s sum = 0;
    for (int i = 0; i < kLags; i++) sum = mac_32s(sum, s.filterCorr[i], Vsp16s(s.autocorr[i] >> 2));
    const Vsp32s error = s.energy[0] + mulRound_16s(s.energy[0], 7000);
    return sum > shl_32s(error, s.filterShift + 9);
}

bool mustDescribe(const State& s, Vsp32s pastType, Vsp16s gainIndex) {
    constexpr Vsp16s kGainSteps = 3;
    return pastType == kActive || filterIsAnother(s) || Abs_16s(Sub_16s(gainIndex, s.gainIndex)) > kGainSteps;
}

// The mean filter of the frames before, or the newest frame's if that is another.
void describe(State& s, const Vsp16s* newest, const Vsp16s* prevLsf, Vsp16s gainIndex, Vsp16s* mean, Vsp16s* index) {
    Vsp16s autocorr[kLags], error, reflection, lsf[kOrder];
    sumOf(s.autocorr + kLags, s.shift + 1, kFrames - 1, autocorr);
    vspsLevinsonDurbin_G723_16s(autocorr, mean, &error, &reflection);
    correlateCoefficients(mean, s);
    const Vsp16s* lpc = mean;
    if (filterIsAnother(s)) {
        lpc = newest;
        correlateCoefficients(newest, s);
    }
    vspsLPCToLSF_G723_16s(lpc, prevLsf, lsf);
    vspsLSFQuant_G723_16s(lsf, prevLsf, index);
    vspsLSFDecode_G723_16s(index, prevLsf, 0, s.lsf);
    index[3] = s.gainIndex = gainIndex;
    vspsSIDGainDecode_G723_16s(gainIndex, &s.sidGain);
}

}  // namespace

VspStatus vspsDTXGetStateSize_G723_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsDTXInit_G723_16s(void* pState) {
    constexpr Vsp16s kNothing = 40;  // shift of what has not been yet
    if (anyNull(pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    s = {};
    for (Vsp16s& shift : s.shift) shift = kNothing;
    return vspStsNoErr;
}

VspStatus vspsDTXUpdate_G723_16s(const Vsp16s* pAutoCorr, const Vsp16s* pShift, void* pState) {
    if (anyNull(pAutoCorr, pShift, pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    for (int i = kFrames * kLags - 1; i >= kLags; i--) s.autocorr[i] = s.autocorr[i - kLags];
    for (int i = kFrames - 1; i > 0; i--) s.shift[i] = s.shift[i - 1];
    s.shift[0] = sumOf(pAutoCorr, pShift, kSubframes, s.autocorr);
    return vspStsNoErr;
}

VspStatus vspsDTXEncode_G723_16s(const Vsp16s* pPrevLSF, Vsp32s pastType, Vsp16s* pType, Vsp16s* pIndex, Vsp16s* pLSF,
                                 Vsp16s* pGain, Vsp16s* pLPC, void* pState) {
    if (anyNull(pPrevLSF, pType, pIndex, pLSF, pGain, pLPC, pState)) return vspStsNullPtrErr;
    if (pastType < kNotSent || pastType > kDescriptor) return vspStsRangeErr;
    State& s = *static_cast<State*>(pState);
    Vsp16s newest[kOrder], reflection, gainIndex;
    for (int i = kEnergies - 1; i > 0; i--) s.energy[i] = s.energy[i - 1];
    vspsLevinsonDurbin_G723_16s(s.autocorr, newest, &s.energy[0], &reflection);
    const int known = s.numEnergies < 0 ? 0 : s.numEnergies;
    s.numEnergies = Vsp16s(pastType == kActive ? 1 : known < kEnergies ? known + 1 : kEnergies);
    vspsSIDGainQuant_G723_16s(s.energy, s.shift, s.numEnergies, &gainIndex);

    *pType = mustDescribe(s, pastType, gainIndex) ? kDescriptor : kNotSent;
    if (*pType == kDescriptor) describe(s, newest, pPrevLSF, gainIndex, pLPC, pIndex);
    vspsCNGGain_G723_16s(s.sidGain, pastType, &s.gain);
    *pGain = s.gain;
    for (int i = 0; i < kOrder; i++) pLSF[i] = s.lsf[i];
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
