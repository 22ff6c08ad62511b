#include "pitch/speech_analysis.h"

#include <string.h>

#include "vspsc/common.h"
#include "vspsc/g729.h"

namespace vspv {

static constexpr Vsp32s kQ12 = 12, kQ15 = 15;
static constexpr Vsp16s kAtRest[kOrder] = {};

static void synthesise(const LpcFilter& poles, const Vsp16s* src, Vsp16s* dst, const Vsp16s* past = kAtRest) {
    vspsSynthesisFilter_NR_16s_Sfs(poles, src, dst, kPitchSubframe, kQ12, past);
}

// W(z)/A(z) from rest; in Annex A the zeros of W(z) are the poles of 1/A(z).
static void synthesiseWeighted(const LpcFilter& lpc, const LpcFilter& zeros, const LpcFilter& poles, bool annexA,
                               const Vsp16s* src, Vsp16s* dst) {
    if (annexA) {
        synthesise(poles, src, dst);
        return;
    }
    Vsp16s synthesis[kOrder + kPitchSubframe] = {};
    synthesise(lpc, src, synthesis + kOrder);
    vspsResidualFilter_G729_16s(synthesis + kOrder, zeros, dst, kPitchSubframe);
    synthesise(poles, dst, dst);
}

Vsp32s SpeechAnalysis::stateBytes() {
    Vsp32s bytes = 0;
    vspsHighPassFilterSize_G729(&bytes);
    return bytes;
}

SpeechAnalysis::SpeechAnalysis(bool annexA, void* highPass) : annexA_(annexA) {
    static constexpr Vsp16s kInputFilter[6] = {1899, -3798, 1899, 4096, 7807, -3733};
    vspsHighPassFilterInit_G729(kInputFilter, highPass);
}

void SpeechAnalysis::read(const Vsp16s* samples, Vsp32s count, void* highPass) {
    const auto bytes = static_cast<unsigned long>(count) * sizeof(Vsp16s);
    memmove(speech_, speech_ + count, sizeof speech_ - bytes);
    Vsp16s* const next = speech_ + kWindow - count;
    memcpy(next, samples, bytes);
    vspsHighPassFilter_G729_16s_ISfs(next, count, kQ12, highPass);
}

void SpeechAnalysis::analyse(FrameSignals& frame) {
    static constexpr Vsp16s kImpulse[kPitchSubframe] = {4096};
    LpcFilter lpc[2];
    const Weighting weighting = predict(lpc);
    for (int i = 0; i < 2; i++) {
        const Vsp16s* const speech = speech_ + kWindow - kPitchLookAhead - kPitchFrame + i * kPitchSubframe;
        SubframeSignals& s = frame.subframes[i];
        LpcFilter zeros;
        if (annexA_)
            memcpy(zeros, lpc[i], sizeof zeros);
        else
            vspsMulPowerC_NR_16s_Sfs(lpc[i], weighting.gamma1[i], zeros, kOrder + 1, kQ15);
        vspsMulPowerC_NR_16s_Sfs(lpc[i], weighting.gamma2[i], s.poles, kOrder + 1, kQ15);
        weigh(speech, zeros, s.poles, frame.weighted + i * kPitchSubframe);
        vspsResidualFilter_G729_16s(speech, lpc[i], s.residual, kPitchSubframe);
        synthesiseWeighted(lpc[i], zeros, s.poles, annexA_, kImpulse, s.impulse);
        synthesiseWeighted(lpc[i], zeros, s.poles, annexA_, s.residual, s.target);
    }
}

// The filters of the subframes, and how they weigh.
SpeechAnalysis::Weighting SpeechAnalysis::predict(LpcFilter (&lpc)[2]) {
    Vsp16s windowed[kWindow], reflection[kOrder], error, lsp[kOrder], between[kOrder];
    Vsp32s autoCorr[kOrder + 1], norm;
    vspsAnalysisWindow_G729_16s(speech_, windowed);
    vspsAutoCorr_NormE_16s32s(windowed, kWindow, autoCorr, kOrder + 1, &norm);
    vspsLagWindow_G729_32s_I(autoCorr + 1, kOrder);
    vspsLevinsonDurbin_G729_32s16s(autoCorr, lpc[1], reflection, &error, levinsonMem_);
    (annexA_ ? vspsLPCToLSP_G729A_16s : vspsLPCToLSP_G729_16s)(lpc[1], lsp_, lsp);
    vspsInterpolate_G729_16s(lsp_, lsp, between, kOrder);
    vspsLSPToLPC_G729_16s(between, lpc[0]);
    memcpy(lsp_, lsp, sizeof lsp_);

    Weighting weighting = {{32767, 32767}, {24576, 24576}};  // of Annex A: 1 and 0.75
    if (!annexA_) {
        vspsLSPToLSF_Norm_G729_16s(between, between);
        vspsLSPToLSF_Norm_G729_16s(lsp, lsp);
        vspsWeightingFactors_G729_16s(between, lsp, reflection, factorsMem_, weighting.gamma1, weighting.gamma2);
    }
    return weighting;
}

// The speech through W(z), and in Annex A through the low-pass filter 1/(1 - 0.7/z), whose pole joins the others (A.3.4).
void SpeechAnalysis::weigh(const Vsp16s* speech, const LpcFilter& zeros, const LpcFilter& poles, Vsp16s* weighted) {
    constexpr Vsp32s kLowPass = 22938;  // 0.7 in Q15
    LpcFilter lowPassed;
    memcpy(lowPassed, poles, sizeof lowPassed);
    if (annexA_)
        for (Vsp32s i = 1; i <= kOrder; i++) {
            const Vsp32s value = poles[i] - (poles[i - 1] * kLowPass >> 15);
            lowPassed[i] = Vsp16s(value > 32767 ? 32767 : value < -32768 ? -32768 : value);
        }
    vspsResidualFilter_G729_16s(speech, zeros, weighted, kPitchSubframe);
    synthesise(lowPassed, weighted, weighted, weightedMem_);
    memcpy(weightedMem_, weighted + kPitchSubframe - kOrder, sizeof weightedMem_);
}

}  // namespace vspv
