#include "codec/g729/decoder.h"

namespace vspv::g729 {

namespace {

constexpr Vsp16s kForwardInterpolation = 4506;
constexpr Vsp16s kGammaAtLowRates[3] = {22938, 18022, 16384}, kMostGamma[3] = {22938, 21300, 8192};

}  // namespace

void Decoder::reset(const Variant& variant) {
    *this = {};
    copy(kLspReset, lsp_, 10);
    copy(kLsfReset, lsf_, 10);
    resetLsfHistory(lsfHistory_);
    sharpening_ = kLeastSharpening;
    for (Vsp16s& energy : pastEnergy_) energy = kEnergyReset;
    oldDelay_[0] = 60;
    seed_ = 21845;
    voicing_ = 60;
    rate_ = variant.backward || !variant.dispersion ? k8k : k6k4;
    frameType_ = 1;
    noiseSeed_ = kNoiseSeed;
    energyShift_ = 1;
    vspsCNGInit_G729B_16s(noise_);
    vspsHighPassFilterInit_G729(kOutputFilter, output_);
    if (variant.dispersion) vspsPhaseDispersionInit_G729D_16s(dispersion_);
    if (variant.fast)
        vspsPostFilterInit_G729A_16s(postFilter_.fast);
    else if (variant.backward)
        vspsPostFilterInit_G729E_16s(postFilter_.backward);
    else
        vspsPostFilterInit_G729_16s(postFilter_.main);
    if (!variant.backward) return;
    backward_.reset();
    previousFilter_[0] = erasedFilter_[0] = 4096;
    previousVoicing_ = 60;
    interpolation_ = kForwardInterpolation;
    track_[0] = 30;
    muting_ = 32767;
    copy(kMostGamma, postFilterGamma_, 3);
}

void Decoder::decode(const Variant& variant, const Frame& frame, Vsp16s* samples) {
    if (frame.mode != frame.modeAgain)
        conceal(variant, variant.combined ? rate_ : frame.rate, samples);
    else
        speech(variant, frame.rate, &frame, samples);
}

void Decoder::decodeNoise(const Variant& variant, const Vsp16s* index, Vsp16s* samples) {
    noise(variant, index, false, samples);
}

void Decoder::conceal(const Variant& variant, Rate rate, Vsp16s* samples) {
    if (frameType_ == 1)
        speech(variant, rate, nullptr, samples);
    else
        noise(variant, nullptr, true, samples);
}

void Decoder::speech(const Variant& variant, Rate rate, const Frame* frame, Vsp16s* samples) {
    Speech s{};
    s.rate = rate;
    s.erased = frame == nullptr;
    s.frame = frame;
    s.mode = rate != k11k8 ? Vsp16s(0) : s.erased ? previousMode_ : frame->mode;
    s.voicing = rate == k11k8 && wasErased_ != 0 ? previousVoicing_ : voicing_;
    previousVoicing_ = s.voicing;
    if (!s.erased) {
        muting_ = 32767;
        erasedSubframes_ = 0;
    }
    noiseSeed_ = kNoiseSeed;
    findFilters(variant, s);
    for (Vsp32s i = 0; i < 2; i++) decodeSubframe(variant, s, i);
    const LpFilter filters[] = {s.filter(0), s.filter(1)};
    if (!variant.fast) s.lags[1] = s.lags[0];
    endFrame(variant, filters, s.lags, 1, rate, s.mode, s.erased, samples);
}

void Decoder::findFilters(const Variant& variant, Speech& s) {
    if (s.rate == k11k8) {
        Vsp16s* filter = s.lpc + kMaxOrder + 1;
        backward_.analyse(filter);
        if (s.mode != 0 && filterFade_ != 0)
            vspsInterpolateC_G729_16s_Sfs(filter, Vsp16s(4096 - filterFade_), erasedFilter_, filterFade_, filter,
                                          kMaxOrder + 1, 12);
        if (s.erased && wasErased_ == 0 && rate_ == k11k8) copy(filter, erasedFilter_, kMaxOrder + 1);
    }
    if (s.mode != 0) {
        vspsInterpolateLPC_G729E_16s(previousFilter_, s.lpc, &interpolation_);
        copy(s.lpc + kMaxOrder + 1, previousFilter_, kMaxOrder + 1);
        return;
    }
    Vsp16s lsp[10];
    if (s.erased) {
        vspsLSFDecodeErased_G729_16s(predictorMode_, lsf_, lsfHistory_);
    } else {
        vspsLSFDecode_G729_16s(s.frame->lsp, lsfHistory_, lsf_);
        predictorMode_ = Vsp16s(s.frame->lsp[0] >> 7 & 1);
    }
    vspsLSFToLSP_G729_16s(lsf_, lsp);
    interpolatedFilters(lsp_, lsp, s.lpc);
    if (previousMode_ != 0) copy(s.lpc + 11, s.lpc, 11);
    copy(lsp, lsp_, 10);
    if (!variant.backward) return;
    interpolation_ = kForwardInterpolation;
    clear(previousFilter_, kMaxOrder + 1);
    copy(s.lpc + 11, previousFilter_, 11);
}

void Decoder::delayOf(const Variant& variant, const Speech& s, Vsp32s i, Vsp16s* delay) {
    constexpr Vsp16s kLongestLag = 143;
    const bool parityFails =
        !s.erased && i == 0 && s.rate != k6k4 && parityOf(s.frame->subframes[0].delay, s.rate) != s.frame->parity;
    if (!s.erased && !parityFails) {
        const auto decodeDelay = s.rate == k6k4 ? vspsDelayDecode_G729D_16s : vspsDelayDecode_G729_16s;
        decodeDelay(s.frame->subframes[i].delay, s.lags[0], Vsp16s(i), delay);
        copy(delay, oldDelay_, 2);
    } else {
        copy(oldDelay_, delay, 2);
        if (s.rate != k11k8) {
            delay[1] = 0;
            if (oldDelay_[0] < kLongestLag) oldDelay_[0]++;
        }
    }
    if (!variant.backward) return;
    Vsp16s tracked[2] = {oldDelay_[0], oldDelay_[1]};
    vspsPitchTrack_G729E_16s(tracked, track_);
    if (s.rate == k11k8) copy(tracked, oldDelay_, 2);
}

void Decoder::decodeGains(const Speech& s, Vsp32s i, const Vsp16s* code) {
    constexpr Vsp32s kStationary = 30;
    if (!s.erased) {
        const auto decodeGain = s.rate == k6k4 ? vspsGainDecode_G729D_16s : vspsGainDecode_G729_16s;
        decodeGain(s.frame->subframes[i].gain, code, pastEnergy_, gain_);
    } else if (s.rate == k11k8) {
        vspsGainDecodeErased_G729E_16s(Vsp16s(erasedSubframes_), backwardSubframes_ >= kStationary, &muting_, pastEnergy_,
                                       gain_);
    } else {
        vspsGainDecodeErased_G729_16s(pastEnergy_, gain_);
    }
    if (s.erased && erasedSubframes_ < 32767) erasedSubframes_++;
}

// G.729 4.1.3 to 4.1.6, and 4.4 for what is erased
void Decoder::decodeSubframe(const Variant& variant, Speech& s, Vsp32s i) {
    Vsp16s* excitation = excitation_ + 154 + kSubframe * i;
    Vsp16s delay[2], index[5], code[kSubframe], vector[kSubframe];
    delayOf(variant, s, i, delay);
    const Vsp16s lag = s.lags[i] = delay[0];
    vspsDecodeAdaptiveVector_G729_16s(delay, excitation - 154, vector);

    if (!s.erased)
        copy(s.frame->subframes[i].pulses, index, 5);
    else if (s.rate == k6k4)
        vspsFixedCodebookRandom_G729D_16s(&seed_, index);
    else if (s.rate == k8k)
        vspsFixedCodebookRandom_G729_16s(&seed_, index);
    else
        vspsFixedCodebookRandom_G729E_16s(&seed_, index);
    if (s.rate == k6k4)
        vspsFixedCodebookDecode_G729D_16s(index, lag, sharpening_, code);
    else if (s.rate == k8k)
        vspsFixedCodebookDecode_G729_16s(index, lag, sharpening_, code);
    else
        vspsFixedCodebookDecode_G729E_16s(s.mode, index, lag, sharpening_, code);

    backwardSubframes_ = s.mode == 0 ? 0 : backwardSubframes_ < 32767 ? backwardSubframes_ + 1 : backwardSubframes_;
    decodeGains(s, i, code);
    sharpening_ = clipped(gain_[0], kLeastSharpening, kMostSharpening);
    Vsp16s gain[2] = {gain_[0], gain_[1]};
    if (s.erased && !variant.fast) gain[s.voicing == 0 ? 0 : 1] = 0;
    vspsInterpolateC_NR_G729_16s_Sfs(vector, gain[0], code, gain[1], excitation, kSubframe, 14);

    if (i == 0 || !variant.fast) scaledSynthesis(s.filter(i), i);
    if (!variant.dispersion) return;
    if (s.rate != k6k4) {
        vspsPhaseDispersionUpdate_G729D_16s(gain_, dispersion_);
        return;
    }
    Vsp16s dispersed[kSubframe];
    vspsPhaseDispersion_G729D_16s(excitation, gain_, code, dispersed, dispersion_);
    Vsp16s* synthesised = synthesised_ + kMaxOrder + kSubframe * i;
    synthesis(s.filter(i), dispersed, synthesised, synthesised - kMaxOrder);
}

// Where the filter saturates, the whole excitation loses two bits and is filtered once more.
void Decoder::scaledSynthesis(const LpFilter& filter, Vsp32s i) {
    const Vsp16s* excitation = excitation_ + 154 + kSubframe * i;
    Vsp16s* synthesised = synthesised_ + kMaxOrder + kSubframe * i;
    if (!synthesis(filter, excitation, synthesised, synthesised - kMaxOrder)) return;
    for (Vsp16s& x : excitation_) x = Vsp16s(x >> 2);
    synthesis(filter, excitation, synthesised, synthesised - kMaxOrder);
}

// Comfort noise, G.729 B.4.4
void Decoder::noise(const Variant& variant, const Vsp16s* index, bool erased, Vsp16s* samples) {
    static constexpr Vsp16s kNoIndex[4] = {};
    const Vsp16s type = index == nullptr ? 0 : 2;
    Vsp16s lpc[22], gain[4];
    if (variant.dispersion)
        vspsCNGDecode_G729D_16s(type, type == 0 ? kNoIndex : index, frameType_, energy_, energyShift_, excitation_ + 154,
                                lsp_, lsfHistory_, &noiseSeed_, lpc, gain, noise_);
    else
        vspsCNGDecode_G729B_16s(type, type == 0 ? kNoIndex : index, frameType_, energy_, energyShift_, excitation_ + 154,
                                lsp_, lsfHistory_, &noiseSeed_, lpc, noise_);
    for (Vsp32s i = 0; i < 2; i++) {
        if (variant.dispersion) vspsPhaseDispersionUpdate_G729D_16s(gain + 2 * i, dispersion_);
        if (i == 0 || !variant.fast) scaledSynthesis({lpc + 11 * i, 10}, i);
    }
    sharpening_ = kLeastSharpening;
    backwardSubframes_ = 0;
    track_[1] = 0;
    interpolation_ = kForwardInterpolation;
    clear(previousFilter_, kMaxOrder + 1);
    copy(lpc + 11, previousFilter_, 11);
    const LpFilter filters[] = {{lpc, 10}, {lpc + 11, 10}};
    const Vsp16s lags[] = {oldDelay_[0], oldDelay_[0]};
    endFrame(variant, filters, lags, type, k8k, 0, erased, samples);
}

// The synthesis of the second subframe that is left in Annex A, post-filter and output filter. The LP filters lie behind
// each other.
void Decoder::endFastFrame(const LpFilter* filters, const Vsp16s* lags, Vsp16s frameType, Vsp16s* samples) {
    Vsp16s* speech = synthesised_ + kMaxOrder;
    if (vspsSynthesisPostFilter_G729A_16s(excitation_ + 154 + kSubframe, filters[0].lpc, lags, frameType, speech, samples,
                                          postFilter_.fast, output_) == vspStsNoErr)
        return;
    scaledSynthesis(filters[1], 1);
    for (Vsp32s i = 0; i < 2; i++)
        vspsPostFilter_G729A_16s(speech + kSubframe * i, filters[i].lpc, lags[i], frameType, samples + kSubframe * i,
                                 postFilter_.fast);
    vspsHighPassFilter_G729_16s_ISfs(samples, 80, kOutputScale, output_);
}

// Post-filter, output filter, and what the next frame needs.
void Decoder::endFrame(const Variant& variant, const LpFilter* filters, const Vsp16s* lags, Vsp16s frameType, Rate rate,
                       Vsp16s mode, bool erased, Vsp16s* samples) {
    if (variant.fast) endFastFrame(filters, lags, frameType, samples);
    if (!erased && variant.silence) vspsCNGEnergy_G729B_16s(excitation_ + 154, &energy_, &energyShift_);
    const Vsp16s* speech = synthesised_ + kMaxOrder;
    if (variant.backward) {
        vspsLPCModeTrack_G729E_16s(speech, mode, dominance_);
        const bool dominant = dominance_[0] != 0;
        filterFade_ = erased      ? Vsp16s(4096)
                      : mode == 0 ? Vsp16s(0)
                                  : clipped(Vsp16s(filterFade_ - (dominant ? 410 : 2048)), 0, 4096);
        constexpr Vsp16s kStep[3] = {1147, 1065, 410};
        const bool less = mode != 0 && dominant;
        for (Vsp32s k = 0; k < 3; k++)
            postFilterGamma_[k] =
                rate != k11k8 ? kGammaAtLowRates[k]
                              : clipped(Vsp16s(postFilterGamma_[k] + (less ? -kStep[k] : kStep[k])), 0, kMostGamma[k]);
        backward_.synthesised(speech);
    }
    Vsp16s voicing = 0;
    if (!variant.fast) {
        for (Vsp32s i = 0; i < 2; i++) {
            Vsp16s found = 0;
            const Vsp16s* in = speech + kSubframe * i;
            Vsp16s* out = samples + kSubframe * i;
            const LpFilter& f = filters[i];
            if (variant.backward)
                vspsPostFilter_G729E_16s(in, f.lpc, f.order, lags[i], frameType, postFilterGamma_, rate == k11k8 ? 32 : 20,
                                         out, &found, postFilter_.backward);
            else
                vspsPostFilter_G729_16s(in, f.lpc, lags[i], frameType, out, &found, postFilter_.main);
            if (found != 0) voicing = found;
        }
        vspsHighPassFilter_G729_16s_ISfs(samples, 80, kOutputScale, output_);
    }

    voicing_ = voicing;
    frameType_ = frameType;
    previousMode_ = mode;
    wasErased_ = erased;
    if (frameType == 1) rate_ = rate;
    moveDown(excitation_, 154, 80);
    moveDown(synthesised_, kMaxOrder, 80);
}

}  // namespace vspv::g729
