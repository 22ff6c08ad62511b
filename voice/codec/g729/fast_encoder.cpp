#include "codec/g729/fast_encoder.h"

namespace vspv::g729 {

void FastEncoder::reset() {
    *this = {};
    analysis_.reset();
    silence_.reset();
    copy(kLspReset, lsp_, 10);
    copy(kLspReset, quantisedLsp_, 10);
    resetLsfHistory(lsfHistory_);
    sharpening_ = kLeastSharpening;
    for (Vsp16s& energy : pastEnergy_) energy = kEnergyReset;
    for (Vsp32s& error : excitationError_) error = 0x4000;
}

void FastEncoder::setSilence(bool on) {
    if (on && withSilence_ == 0) silence_.reset();
    withSilence_ = on;
}

FastEncoder::Weighting::Weighting(const Vsp16s* quantised) {
    for (Vsp32s i = 0; i < 2; i++) vspsMulPowerC_NR_16s_Sfs(quantised + 11 * i, 24576, lpc + 11 * i, 11, 15);
}

void FastEncoder::encode(const Vsp16s* samples, Vsp8u* bytes, VspvFrame& told) {
    Vsp16s lsp[10], active = 1;
    analysis_.analyse(samples, withSilence_ != 0);
    vspsLPCToLSP_G729A_16s(analysis_.lpc, lsp_, lsp);
    if (withSilence_ != 0) {
        active = silence_.detect(analysis_, lsp);
        silence_.update(analysis_, active);
    }
    if (active != 0) {
        Frame frame{};
        Vsp16s quantised[10], lpc[22], lag = 0;
        frame.rate = k8k;
        vspsLSPQuant_G729_16s(lsp, lsfHistory_, quantised, frame.lsp);
        interpolatedFilters(quantisedLsp_, quantised, lpc);
        copy(lsp, lsp_, 10);
        copy(quantised, quantisedLsp_, 10);

        const Weighting weighting(lpc);
        Vsp16s* excitation = excitation_ + 154;
        for (Vsp32s i = 0; i < 2; i++)
            residual({lpc + 11 * i, 10}, analysis_.speech() + kSubframe * i, excitation + kSubframe * i);
        Vsp16s responses[2 * kSubframe];
        weightSpeech(weighting, excitation, responses);
        vspsOpenLoopPitchSearch_G729A_16s(weighted_ + 143, &lag);
        for (Vsp32s i = 0; i < 2; i++) encodeSubframe(weighting.of(i), responses + kSubframe * i, i, lag, frame);
        frame.parity = parityOf(frame.subframes[0].delay, k8k);
        pack(frame, bytes);
        told.numBytes = bytesOf(k8k);
    } else {
        encodeNoise(bytes, told);
    }
    if (withSilence_ != 0) silence_.frameDone(active);
    moveDown(weighted_, 143, 80);
    moveDown(excitation_, 154, 80);
}

// G.729 A.3.3.3: the poles are those of A(z / 0.75) times 1 - 0.7 / z. What A(z / 0.75) makes of an impulse costs little
// beside it.
void FastEncoder::weightSpeech(const Weighting& weighting, const Vsp16s* lpResidual, Vsp16s* responses) {
    constexpr Vsp32s kTilt = 22938;  // 0.7 in Q15
    for (Vsp32s i = 0; i < 2; i++) {
        const Vsp16s* lpc = weighting.of(i).lpc;
        Vsp16s tilted[11] = {4096};
        for (Vsp32s j = 1; j <= 10; j++) tilted[j] = saturated(lpc[j] - (lpc[j - 1] * kTilt >> 15));
        Vsp16s* weighted = weighted_ + 143 + kSubframe * i;
        static constexpr Vsp16s kImpulse[kSubframe] = {4096}, kZeros[10] = {};
        vspsSynthesisFilterPair_G729_16s(tilted, lpResidual + kSubframe * i, weighted, weightedMemory_ + kMaxOrder - 10,
                                         lpc, kImpulse, responses + kSubframe * i, kZeros);
        keepNewest(weighted, weightedMemory_);
    }
}

// G.729 A.3.5 to A.3.10
void FastEncoder::encodeSubframe(const LpFilter& weighting, const Vsp16s* impulse, Vsp32s i, Vsp16s openLoopLag,
                                 Frame& frame) {
    const Vsp16s subframe = Vsp16s(i);
    Vsp16s* excitation = excitation_ + 154 + kSubframe * i;
    Vsp16s* window = excitation - 154;

    Vsp16s target[kSubframe];
    synthesis(weighting, excitation, target, targetMemory_);

    SubframeCodes& codes = frame.subframes[i];
    Vsp16s delay[2], vector[kSubframe];
    const Vsp16s searchLag = i == 0 ? openLoopLag : firstLag_;
    vspsAdaptiveCodebookSearch_G729A_16s(searchLag, target, impulse, window, delay, vector, subframe);
    vspsDelayEncode_G729_16s(delay, searchLag, subframe, &codes.delay);
    const Vsp16s lag = delay[0];
    if (i == 0) firstLag_ = lag;

    constexpr Vsp16s kTamedGain = 15564;  // 0.95
    Vsp16s pitchGain, filtered[kSubframe], tame, rest[kSubframe], code[kSubframe], filteredCode[kSubframe], gain[2];
    vspsAdaptiveCodebookGain_G729A_16s(target, weighting.lpc, vector, filtered, &pitchGain);
    vspsTamingTest_G729_16s(delay, excitationError_, &tame);
    if (tame != 0 && pitchGain > kTamedGain) pitchGain = kTamedGain;
    vspsAdaptiveCodebookContribution_G729_16s(pitchGain, filtered, target, rest);
    vspsFixedCodebookSearch_G729A_16s(rest, impulse, lag, sharpening_, code, filteredCode, codes.pulses);
    vspsGainQuant_G729_16s(target, filtered, filteredCode, code, tame, pastEnergy_, gain, &codes.gain);
    sharpening_ = clipped(gain[0], kLeastSharpening, kMostSharpening);

    vspsInterpolateC_NR_G729_16s_Sfs(vector, gain[0], code, gain[1], excitation, kSubframe, 14);
    vspsTamingUpdate_G729_16s(gain[0], lag, excitationError_);
    vspsWeightedErrorUpdate_G729_16s(target, filtered, filteredCode, gain, targetMemory_ + kMaxOrder - 10);
}

void FastEncoder::encodeNoise(Vsp8u* bytes, VspvFrame& told) {
    Vsp16s lpc[22], lpResidual[80], responses[80];
    silence_.encode(analysis_, true, {excitation_ + 154, quantisedLsp_, lsfHistory_, excitationError_, lpc}, bytes, told);
    sharpening_ = kLeastSharpening;
    const Weighting weighting(lpc);
    for (Vsp32s i = 0; i < 2; i++)
        residual({lpc + 11 * i, 10}, analysis_.speech() + kSubframe * i, lpResidual + kSubframe * i);
    weightSpeech(weighting, lpResidual, responses);
    for (Vsp32s i = 0; i < 2; i++) {
        Vsp16s error[kSubframe];
        for (Vsp32s n = 0; n < kSubframe; n++)
            error[n] = saturated(lpResidual[kSubframe * i + n] - excitation_[154 + kSubframe * i + n]);
        synthesis(weighting.of(i), error, error, targetMemory_);
        keepNewest(error, targetMemory_);
    }
}

}  // namespace vspv::g729
