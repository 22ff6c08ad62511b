#include "codec/g729/encoder.h"

namespace vspv::g729 {

void Encoder::reset(const Variant& variant) {
    *this = {};
    analysis_.reset();
    silence_.reset();
    copy(kLspReset, lsp_, 10);
    copy(kLspReset, quantisedLsp_, 10);
    resetLsfHistory(lsfHistory_);
    weightingMemory_[2] = 1;
    sharpening_ = kLeastSharpening;
    for (Vsp16s& energy : pastEnergy_) energy = kEnergyReset;
    for (Vsp32s& error : excitationError_) error = 0x4000;
    if (!variant.backward) return;
    backward_.reset();
    previousFilter_[0] = 4096;
    modeMemory_[1] = 4506;
    modeMemory_[2] = 10000;
    for (Vsp16s& lag : lags_) lag = 20;
    for (Vsp16s& gain : gains_) gain = 11469;
    vspsMusicDetectInit_G729E_16s(music_);
}

void Encoder::setSilence(bool on) {
    if (on && withSilence_ == 0) silence_.reset();
    withSilence_ = on;
}

LpFilter Encoder::Filters::synthesisOf(Vsp32s i) const {
    return mode != 0 ? LpFilter{backward + (kMaxOrder + 1) * i, kMaxOrder} : LpFilter{quantised + 11 * i, 10};
}

LpFilter Encoder::Filters::weightingOf(Vsp32s i) const {
    return dominant ? synthesisOf(i) : LpFilter{unquantised + 11 * i, 10};
}

void Encoder::encode(const Variant& variant, Rate rate, const Vsp16s* samples, Vsp8u* bytes, VspvFrame& told) {
    Vsp16s lsp[10];
    analysis_.analyse(samples, withSilence_ != 0);
    vspsLPCToLSP_G729_16s(analysis_.lpc, lsp_, lsp);
    const Vsp16s active = withSilence_ != 0 ? detect(variant, rate, lsp) : Vsp16s(1);

    Frame frame{};
    frame.rate = rate;
    Filters filters;
    findFilters(variant, rate, active != 0, lsp, frame, filters);
    weightSpeech(filters);
    copy(lsp, lsp_, 10);
    if (active != 0) {
        Vsp16s lag = 0;
        vspsOpenLoopPitchSearch_G729_16s(weighted_ + 143, &lag);
        if (variant.combined) noteOpenLoopLag(lag);
        for (Vsp32s i = 0; i < 2; i++) encodeSubframe(filters, i, lag, frame);
        frame.parity = parityOf(frame.subframes[0].delay, rate);
        pack(frame, bytes);
        told.numBytes = bytesOf(rate);
        const LpFilter last = filters.synthesisOf(1);
        clear(previousFilter_, kMaxOrder + 1);
        copy(last.lpc, previousFilter_, last.order + 1);
        previousMode_ = filters.mode;
    } else {
        encodeNoise(variant, filters, bytes, told);
    }
    if (withSilence_ != 0) silence_.frameDone(active);
    if (variant.backward) backward_.synthesised(synthesised_);
    moveDown(weighted_, 143, 80);
    moveDown(excitation_, 154, 80);
}

Vsp16s Encoder::detect(const Variant& variant, Rate rate, const Vsp16s* lsp) {
    Vsp16s active = silence_.detect(analysis_, lsp);
    if (variant.combined) {
        const Vsp16s first = active;
        vspsMusicDetect_G729E_16s(rate, analysis_.windowed[0], analysis_.exponent, analysis_.reflection, lags_, gains_,
                                  previousMode_, silence_.wasActive(), &active, music_);
        if (active != first) silence_.correct(active);
    }
    silence_.update(analysis_, active);
    return active;
}

void Encoder::findFilters(const Variant& variant, Rate rate, bool active, const Vsp16s* lsp, Frame& frame, Filters& f) {
    const bool withBackward = rate == k11k8 && active;
    if (withBackward) backward_.analyse(f.backward + kMaxOrder + 1);

    Vsp16s lsf[2][10], mean[10];
    vspsLSPToLSF_Norm_G729_16s(lsp, lsf[1]);
    vspsInterpolate_G729_16s(lsp_, lsp, mean, 10);
    const Vsp16s* firstLsp = previousMode_ == 0 ? mean : lsp;
    vspsLSPToLPC_G729_16s(firstLsp, f.unquantised);
    copy(analysis_.lpc, f.unquantised + 11, 11);
    vspsLSPToLSF_Norm_G729_16s(firstLsp, lsf[0]);

    Vsp16s lsfHistory[40], quantisedLsp[10];
    if (active) {
        copy(lsfHistory_, lsfHistory, 40);
        vspsLSPQuant_G729_16s(lsp, lsfHistory, quantisedLsp, frame.lsp);
        interpolatedFilters(quantisedLsp_, quantisedLsp, f.quantised);
        if (previousMode_ != 0) copy(f.quantised + 11, f.quantised, 11);
    }
    f.mode = 0;
    if (withBackward)
        vspsLPCModeDecide_G729E_16s(analysis_.speech(), f.quantised, f.backward, lsp, lsp_, previousFilter_, previousMode_,
                                    modeMemory_, &f.mode);
    else if (variant.backward)
        vspsLPCModeUpdate_G729E_16s(modeMemory_);
    f.longMemories = variant.backward;
    f.dominant = variant.backward && modeMemory_[0] != 0;
    frame.mode = frame.modeAgain = f.mode;
    if (f.mode == 0)
        vspsWeightingFactors_G729_16s(lsf[0], lsf[1], analysis_.reflection, weightingMemory_, f.gamma1, f.gamma2);
    else
        vspsWeightingFactors_G729E_16s(f.dominant, f.gamma1, f.gamma2);
    if (active && f.mode == 0) {
        copy(lsfHistory, lsfHistory_, 40);
        copy(quantisedLsp, quantisedLsp_, 10);
    }
}

void Encoder::weightSpeech(const Filters& f) {
    for (Vsp32s i = 0; i < 2; i++) {
        const WeightedLpFilter zeros(f.weightingOf(i), f.gamma1[i]), poles(f.weightingOf(i), f.gamma2[i]);
        Vsp16s* weighted = weighted_ + 143 + kSubframe * i;
        residual(zeros, analysis_.speech() + kSubframe * i, weighted);
        synthesis(poles, weighted, weighted, weightedMemory_);
        keepNewest(weighted, weightedMemory_);
    }
}

// G.729 3.5 to 3.10
void Encoder::encodeSubframe(const Filters& f, Vsp32s i, Vsp16s openLoopLag, Frame& frame) {
    const Vsp16s subframe = Vsp16s(i);
    const Vsp16s* speech = analysis_.speech() + kSubframe * i;
    Vsp16s* excitation = excitation_ + 154 + kSubframe * i;
    Vsp16s* window = excitation - 154;
    const LpFilter quantised = f.synthesisOf(i), weighting = f.weightingOf(i);
    const WeightedLpFilter zeros(weighting, f.gamma1[i]), poles(weighting, f.gamma2[i]);
    static constexpr Vsp16s kZeros[kMaxOrder] = {};

    Vsp16s impulse[kSubframe] = {};
    copy(zeros.lpc, impulse, zeros.order + 1);
    synthesis(quantised, impulse, impulse, kZeros);
    synthesis(poles, impulse, impulse, kZeros);

    Vsp16s error[kMaxOrder + kSubframe], target[kSubframe], lpResidual[kSubframe];
    residual(quantised, speech, excitation);
    copy(excitation, lpResidual, kSubframe);
    copy(errorMemory_, error, kMaxOrder);
    synthesis(quantised, excitation, error + kMaxOrder, errorMemory_);
    residual(zeros, error + kMaxOrder, target);
    synthesis(poles, target, target, targetMemory_);

    Vsp16s delay[2], vector[kSubframe];
    const Vsp16s searchLag = i == 0 ? openLoopLag : firstLag_;
    SubframeCodes& codes = frame.subframes[i];
    if (frame.rate == k6k4) {
        vspsAdaptiveCodebookSearch_G729D_16s(searchLag, target, impulse, window, subframe, delay);
        vspsDecodeAdaptiveVector_G729_16s(delay, window, vector);
        vspsDelayEncode_G729D_16s(delay, searchLag, subframe, &codes.delay);
    } else {
        vspsAdaptiveCodebookSearch_G729_16s(searchLag, target, impulse, window, delay, vector, subframe);
        vspsDelayEncode_G729_16s(delay, searchLag, subframe, &codes.delay);
    }
    const Vsp16s lag = delay[0];
    if (i == 0) firstLag_ = lag;

    constexpr Vsp16s kTamedGain = 15564;  // 0.95
    Vsp16s pitchGain, filtered[kSubframe], tame;
    vspsAdaptiveCodebookGain_G729_16s(target, impulse, vector, filtered, &pitchGain);
    vspsTamingTest_G729_16s(delay, excitationError_, &tame);
    if (tame != 0 && pitchGain > kTamedGain) pitchGain = kTamedGain;
    Vsp16s rest[kSubframe], code[kSubframe], filteredCode[kSubframe];
    vspsAdaptiveCodebookContribution_G729_16s(pitchGain, filtered, target, rest);
    if (frame.rate == k6k4)
        vspsFixedCodebookSearch_G729D_16s(rest, impulse, lag, sharpening_, code, filteredCode, codes.pulses);
    else if (frame.rate == k8k)
        vspsFixedCodebookSearch_G729_16s(rest, impulse, lag, sharpening_, subframe, &searchAllowance_, code, filteredCode,
                                         codes.pulses);
    else {
        vspsAdaptiveCodebookContribution_G729_16s(pitchGain, vector, lpResidual, lpResidual);
        vspsFixedCodebookSearch_G729E_16s(f.mode, rest, lpResidual, impulse, lag, sharpening_, code, filteredCode,
                                          codes.pulses);
    }

    Vsp16s gain[2];
    const auto quantiseGains = frame.rate == k6k4 ? vspsGainQuant_G729D_16s : vspsGainQuant_G729_16s;
    quantiseGains(target, filtered, filteredCode, code, tame, pastEnergy_, gain, &codes.gain);
    sharpening_ = clipped(gain[0], kLeastSharpening, kMostSharpening);
    noteGain(gain[0]);

    Vsp16s* synthesised = synthesised_ + kSubframe * i;
    vspsInterpolateC_NR_G729_16s_Sfs(vector, gain[0], code, gain[1], excitation, kSubframe, 14);
    vspsTamingUpdate_G729_16s(gain[0], lag, excitationError_);
    synthesis(quantised, excitation, synthesised, synthesisMemory_);
    keepNewest(synthesised, synthesisMemory_);
    for (Vsp32s n = 0; n < kMaxOrder; n++)
        errorMemory_[n] = saturated(speech[kSubframe - kMaxOrder + n] - synthesised[kSubframe - kMaxOrder + n]);

    // The function makes the last 10 of 40 samples: of signals behind 20 zeros, three times for 30.
    Vsp16s moved[3][20 + kSubframe] = {};
    copy(target, moved[0] + 20, kSubframe);
    copy(filtered, moved[1] + 20, kSubframe);
    copy(filteredCode, moved[2] + 20, kSubframe);
    for (Vsp32s n = f.longMemories ? 0 : 20; n <= 20; n += 10)
        vspsWeightedErrorUpdate_G729_16s(moved[0] + n, moved[1] + n, moved[2] + n, gain, targetMemory_ + n);
}

// The filters' memories as if the noise had been the frame's excitation.
void Encoder::encodeNoise(const Variant& variant, const Filters& f, Vsp8u* bytes, VspvFrame& told) {
    Vsp16s lpc[22];
    silence_.encode(analysis_, false, {excitation_ + 154, quantisedLsp_, lsfHistory_, excitationError_, lpc}, bytes, told);
    sharpening_ = kLeastSharpening;
    for (Vsp32s i = 0; i < 2; i++) {
        const LpFilter filter{lpc + 11 * i, 10};
        const WeightedLpFilter zeros(f.weightingOf(i), f.gamma1[i]), poles(f.weightingOf(i), f.gamma2[i]);
        Vsp16s *synthesised = synthesised_ + kSubframe * i, error[kMaxOrder + kSubframe], target[kSubframe];
        const Vsp16s* speech = analysis_.speech() + kSubframe * i;
        synthesis(filter, excitation_ + 154 + kSubframe * i, synthesised, synthesisMemory_);
        keepNewest(synthesised, synthesisMemory_);
        copy(errorMemory_, error, kMaxOrder);
        for (Vsp32s n = 0; n < kSubframe; n++) {
            const Vsp32s difference = speech[n] - synthesised[n];
            error[kMaxOrder + n] = variant.combined ? Vsp16s(difference) : saturated(difference);
        }
        residual(zeros, error + kMaxOrder, target);
        synthesis(poles, target, target, targetMemory_);
        keepNewest(target, targetMemory_);
        keepNewest(error + kMaxOrder, errorMemory_);
        noteGain(8192);
    }
    clear(previousFilter_, kMaxOrder + 1);
    copy(lpc + 11, previousFilter_, 11);
    previousMode_ = 0;
}

// What the detector of music takes for the pitch: a multiple of the pitch so far counts as that.
void Encoder::noteOpenLoopLag(Vsp16s lag) {
    const auto distance = [&](Vsp32s of) { return lag > of ? lag - of : of - lag; };
    moveDown(lags_, 4, 1);
    const Vsp32s mean = (lags_[0] + lags_[1] + lags_[2] + lags_[3] + 2) >> 2;
    constexpr Vsp32s kThird = 10923;  // Q15
    lags_[4] = distance(2 * mean) < 4 ? Vsp16s(lag >> 1) : distance(3 * mean) < 6 ? Vsp16s(lag * kThird >> 15) : lag;
}

void Encoder::noteGain(Vsp16s gain) {
    moveDown(gains_, 4, 1);
    gains_[4] = gain;
}

}  // namespace vspv::g729
