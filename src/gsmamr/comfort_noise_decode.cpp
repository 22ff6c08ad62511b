// Comfort noise in the decoder (`rx_dtx_handler`, `dtx_dec`, `dtx_dec_activity_update`; 3GPP TS 26.093, 26.092).
#include "arithmetic/split_32.h"
#include "common/exports.h"
#include "common/lengths.h"
#include "core/checks.h"
#include "core/state_size.h"
#include "gsmamr/comfort_noise.h"
#include "gsmamr/exports.h"
#include "gsmamr/lsf_quant.h"
#include "gsmamr/noise_bits.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kFrame = 160;
constexpr FrameType kOnset = kLost;

// Level of the noise by bit rate: what the coding of noise loses.
Vsp16s levelAdjustment(Vsp32s mode) {
    switch (mode) {
        case kMode475: return -1023;
        case kMode515: return -878;
        case kMode590: return -732;
        case kMode670: return -586;
        case kMode740: return -440;
        case kMode795: return -294;
        case kMode102: return -148;
        default: return 0;
    }
}

struct State {
    Vsp16s sinceSid, inversePeriod;
    Vsp32s noise;  // shift register
    Vsp16s level, oldLevel;
    Vsp16s lsp[kLsfOrder], oldLsp[kLsfOrder];
    Vsp16s lsfHistory[kDtxHistory][kLsfOrder], variation[kDtxHistory][kLsfOrder], levelHistory[kDtxHistory];
    Vsp16s newestLsf, newestLevel;
    Vsp16s meanPredictionGain, adjustment;
    Vsp16s hangover, elapsed;
    Vsp16s sid, validData, hangoverAdded, dataUpdated;
};
static_assert(sizeof(State) == 408);

void copy(const Vsp16s* from, Vsp16s* to) {
    for (int i = 0; i < kLsfOrder; i++) to[i] = from[i];
}

// --- A first silence descriptor after hangover: the noise is what the speech decoder made of it
// ----------------------------

void measureVariation(State& s) {
    static constexpr Vsp16s kWeights[kLsfOrder] = {20000, 20000, 20000, 20000, 20000, 18000, 16384, 8192, 0, 0};
    constexpr Vsp16s kKnee = 655, kLargest = 1310;
    for (int i = 0; i < kLsfOrder; i++) {
        Vsp32s sum = 0;
        for (int n = 0; n < kDtxHistory; n++) sum += s.lsfHistory[n][i];
        const Vsp16s mean = Vsp16s(sum >> 3);
        for (int n = 0; n < kDtxHistory; n++) {
            const Vsp16s variation = Mul_16s(Sub_16s(s.lsfHistory[n][i], mean), kWeights[i]);
            int size = Abs_16s(variation);
            if (size > kKnee) size = kKnee + ((size - kKnee) >> 2);
            if (size > kLargest) size = kLargest;
            s.variation[n][i] = Vsp16s(variation < 0 ? -size : size);
        }
    }
}

void takeHistory(State& s, Vsp32s mode) {
    s.adjustment = levelAdjustment(mode);
    copy(s.lsfHistory[s.newestLsf & (kDtxHistory - 1)], s.lsfHistory[nextInHistory(s.newestLsf)]);
    s.levelHistory[nextInHistory(s.newestLevel)] = s.levelHistory[s.newestLevel & (kDtxHistory - 1)];

    s.level = 0;
    for (int n = 0; n < kDtxHistory; n++) s.level = Add_16s(s.level, Vsp16s(s.levelHistory[n] >> 3));
    s.level = Sub_16s(s.level, s.adjustment);
    Vsp16s lsf[kLsfOrder];
    meanOfHistory(s.lsfHistory, lsf);
    vspsLSFToLSP_GSMAMR_16s(lsf, s.lsp);
    measureVariation(s);
}

// --- A silence descriptor ----------------------------------------------------------------------------------------------

void takeParameters(State& s, const Vsp16s* index, bool afterSpeech) {
    s.inversePeriod = inversePeriodOfUpdates(s.sinceSid);
    s.sinceSid = 0;
    Vsp16s unusedResidual[kLsfOrder], unusedLsf[kLsfOrder];
    vspsLSFDecode_GSMAMR_16s(index, kModeSID, unusedResidual, unusedLsf, s.lsp);
    s.level = index[4] == 0 ? kMin16 : Vsp16s((index[4] << 9) - 5120);
    if (s.dataUpdated == 0 || afterSpeech) {
        copy(s.lsp, s.oldLsp);
        s.oldLevel = s.level;
    }
}

// --- Synthesis ---------------------------------------------------------------------------------------------------------

struct Interpolated {
    Vsp16s lsp[kLsfOrder];
    Vsp32s level;
};

Interpolated interpolate(const State& s) {
    const auto between = NoiseInterpolation::after(Add_16s(1, s.sinceSid), s.inversePeriod);
    Interpolated noise;
    noise.level = between.level(s.level, s.oldLevel);
    between.vector(s.lsp, s.oldLsp, kLsfOrder, noise.lsp);
    return noise;
}

// Reflection coefficients from the filter, backwards (`A_Refl`), all zero if one of them leaves the range.
void reflections(const Vsp16s* lpc, Vsp16s* refl) {
    const auto giveUp = [refl] {
        for (int i = 0; i < kLsfOrder; i++) refl[i] = 0;
    };
    Vsp16s a[kLsfOrder], b[kLsfOrder];
    copy(lpc + 1, a);
    for (int i = kLsfOrder - 1; i >= 0; i--) {
        if (Abs_16s(a[i]) >= 4096) return giveUp();
        refl[i] = Vsp16s(a[i] * 8);
        const Vsp32s rest = Sub_32s(kMax32, Mul2_16s32s(refl[i], refl[i]));
        const int norm = norm_32s(rest), shift = 15 - norm;
        const Vsp16s inverse = Div_16s(16384, round_32s(shl_32s(rest, norm)));
        for (int j = 0; j < i; j++) {
            const Vsp32s product = Mul2_16s32s(inverse, round_32s(msu_32s(a[j] * 65536, refl[i], a[i - j - 1])));
            const Vsp32s lastOut = shift > 0 ? (product >> (shift - 1)) & 1 : 0;
            const Vsp32s quotient = Add_32s(shr_32s(product, shift), lastOut);
            if (Abs_32s(quotient) > kMax16) return giveUp();
            b[j] = Vsp16s(quotient);
        }
        for (int j = 0; j < i; j++) a[j] = b[j];
    }
}

// What the synthesis filter amplifies, Q11 of log2.
Vsp16s predictionGain(const Vsp16s* lpc) {
    Vsp16s refl[kLsfOrder], error = kMax16, exponent, fraction;
    reflections(lpc, refl);
    for (const Vsp16s k : refl) error = Mul_16s(error, Sub_16s(kMax16, Mul_16s(k, k)));
    ownLog2(error, &exponent, &fraction);
    const Vsp16s logarithm = Add_16s(shl_16s(Sub_16s(exponent, 15), 12), Vsp16s(fraction >> 3));
    return Vsp16s(Sub_16s(0, logarithm) >> 1);
}

void noiseCode(Vsp32s* reg, Vsp16s level, Vsp16s* excitation) {
    for (int i = 0; i < kL_subfr; i++) excitation[i] = 0;
    for (int k = 0; k < 10; k++) {
        const int position = 10 * ownNoiseBits(reg, 2) + k;
        excitation[position] = Mul_16s(level, ownNoiseBits(reg, 1) != 0 ? 4096 : -4096);
    }
}

void synthesise(State& s, Vsp16s* memSyn, Vsp16s* lsf, Vsp16s* dst, Vsp16s* lpc) {
    const Interpolated noise = interpolate(s);
    const Vsp16s excess = Sub_16s(s.meanPredictionGain, 2457), factor = Sub_16s(4096, Mul_16s(excess, 9830));
    const Vsp16s variability = shl_16s(factor > 4096 ? Vsp16s(4096) : factor < 0 ? Vsp16s(0) : factor, 3);
    const Vsp16s* const variation = s.variation[ownNoiseBits(&s.noise, 3)];

    Vsp16s varied[kLsfOrder], lsp[kLsfOrder], filter[kLsfOrder + 1];
    vspsLSPToLSF_GSMAMR_16s(noise.lsp, lsf);
    for (int i = 0; i < kLsfOrder; i++) varied[i] = Add_16s(lsf[i], Mul_16s(variability, variation[i]));
    reorderLsf(lsf);
    reorderLsf(varied);
    vspsLSFToLSP_GSMAMR_16s(lsf, lsp);
    vspsLSPToLPC_GSMAMR_16s(lsp, lpc);
    for (int i = kLsfOrder + 1; i < 4 * (kLsfOrder + 1); i++) lpc[i] = lpc[i - (kLsfOrder + 1)];
    vspsLSFToLSP_GSMAMR_16s(varied, lsp);
    vspsLSPToLPC_GSMAMR_16s(lsp, filter);

    const Vsp16s gain = predictionGain(lpc);
    s.meanPredictionGain = Add_16s(Mul_16s(29491, s.meanPredictionGain), Mul_16s(3277, gain));
    Vsp32s logarithm = Add_32s(noise.level >> 10, 4 * 65536);
    logarithm = Add_32s(Sub_32s(logarithm, gain * 16), s.adjustment * 32);
    const Vsp16s exponent = high_32s(logarithm), fraction = Vsp16s((logarithm - exponent * 65536) >> 1);
    const Vsp16s level = Vsp16s(ownPow2(exponent, fraction));
    for (int n = 0; n < kFrame; n += kL_subfr) {
        Vsp16s excitation[kL_subfr];
        noiseCode(&s.noise, level, excitation);
        vspsSynthesisFilter_NR_16s_Sfs(filter, excitation, dst + n, kL_subfr, 12, memSyn);
        copy(dst + n + kL_subfr - kLsfOrder, memSyn);
    }
}

bool fits(const Vsp16s* index) {
    static constexpr Vsp8u kBits[5] = {3, 8, 9, 9, 6};
    for (int i = 0; i < 5; i++)
        if (index[i] < 0 || index[i] >> kBits[i] != 0) return false;
    return true;
}

}  // namespace

VspStatus vspsCNGGetStateSize_GSMAMR_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsCNGInit_GSMAMR_16s(void* pState) {
    constexpr Vsp16s kLevel = 3500;
    if (anyNull(pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    s = {};
    s.inversePeriod = 8192;
    s.noise = 0x70816958;
    s.level = s.oldLevel = kLevel;
    resetLsp(s.lsp);
    resetLsp(s.oldLsp);
    for (int n = 0; n < kDtxHistory; n++) {
        copy(svq5_mean, s.lsfHistory[n]);
        s.levelHistory[n] = kLevel;
    }
    s.hangover = kDtxHangover;
    s.elapsed = kMax16;
    return vspStsNoErr;
}

VspStatus vspsCNGHandler_GSMAMR_16s(Vsp32s frameType, Vsp32s prevState, Vsp32s* pNewState, void* pState) {
    if (anyNull(pNewState, pState)) return vspStsNullPtrErr;
    if (frameType < kGood || frameType > kNoData || prevState < kSpeech || prevState > kMuted) return vspStsRangeErr;
    State& s = *static_cast<State*>(pState);
    *pNewState = ownSynthesis(s, frameType, prevState, [frameType](Synthesis newState) {
        return frameType == kOnset || (frameType == kNoData && newState != kSpeech);
    });
    return vspStsNoErr;
}

VspStatus vspsCNGDecode_GSMAMR_16s(const Vsp16s* pIndex, Vsp32s mode, Vsp32s prevState, Vsp32s newState, Vsp16s* pMemSyn,
                                   Vsp16s* pPred, Vsp16s* pLSF, Vsp16s* pDst, Vsp16s* pLPC, void* pState) {
    if (anyNull(pIndex, pMemSyn, pPred, pLSF, pDst, pLPC, pState)) return vspStsNullPtrErr;
    if (!isMode(mode) || prevState < kSpeech || prevState > kMuted) return vspStsRangeErr;
    if (newState != kDtx && newState != kMuted) return vspStsRangeErr;
    State& s = *static_cast<State*>(pState);
    const bool sid = s.sid != 0, valid = sid && s.validData != 0;
    if (valid && !fits(pIndex)) return vspStsRangeErr;

    if (sid && s.hangoverAdded != 0) takeHistory(s, mode);
    if (sid) {
        copy(s.lsp, s.oldLsp);
        s.oldLevel = s.level;
        if (valid) takeParameters(s, pIndex, prevState == kSpeech);
        setPredictor(pPred, Vsp16s(s.level >> 1));
    }
    const Vsp16s adjustment = Mul_16s(shl_16s(levelAdjustment(mode), 5), 3277);
    s.adjustment = Add_16s(Mul_16s(s.adjustment, 29491), Vsp16s(adjustment >> 5));
    synthesise(s, pMemSyn, pLSF, pDst, pLPC);

    if (newState == kMuted) {
        constexpr Vsp16s kFade = 256;
        s.inversePeriod = inversePeriodOfMuting(s.sinceSid);
        s.sinceSid = 0;
        copy(s.lsp, s.oldLsp);
        s.oldLevel = s.level;
        s.level = Sub_16s(s.level, kFade);
    }
    if (valid || (sid && s.hangoverAdded != 0)) {
        s.sinceSid = 0;
        s.dataUpdated = 1;
    }
    return vspStsNoErr;
}

VspStatus vspsCNGUpdate_GSMAMR_16s(const Vsp16s* pLSF, const Vsp16s* pSrc, void* pState) {
    if (anyNull(pLSF, pSrc, pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    s.newestLsf = nextInHistory(s.newestLsf);
    copy(pLSF, s.lsfHistory[s.newestLsf]);
    s.newestLevel = nextInHistory(s.newestLevel);
    s.levelHistory[s.newestLevel] = frameLogEnergy(pSrc);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
