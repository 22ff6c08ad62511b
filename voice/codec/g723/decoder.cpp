#include "codec/g723/decoder.h"

#include "codec/g723/memory.h"
#include "vspsc/common.h"

namespace vspv::g723 {

void Decoder::reset() {
    *this = {};
    postFilter_ = 1;
    pastType_ = kActive;
    copy(kMeanLsf, lsf_, kOrder);
    copy(kMeanLsf, noiseLsf_, kOrder);
    outputGain_ = 4096;
    noiseSeed_ = kNoiseSeed;
}

void Decoder::decode(const Frame& frame, Vsp16s* samples) {
    Vsp16s lsf[kOrder], lpc[kSubframes * kOrder], normalised[kPast + kFrame], filtered[kFrame];
    erasures_ = 0;
    vspsLSFDecode_G723_16s(frame.lsf, lsf_, 0, lsf);
    interpolateFilters(lsf_, lsf, lpc);
    copy(lsf_, noiseLsf_, kOrder);
    vspsErasureGain_G723_16s(frame.subframes[2].fixed[0], frame.subframes[3].fixed[0], 0, &erasureGain_);
    makeExcitation(frame);

    Vsp32s scale = 3;
    vspsAutoScale_16s(excitation_, normalised, kPast + kFrame, &scale);
    energyScale_ = Vsp16s(scale);
    vspsErasureClassify_G723_16s(normalised, frame.lag[1], &erasureDelay_, &energy_);
    if (postFilter_ != 0) postFilterPitch(normalised, frame, filtered);
    synthesise(lpc, postFilter_ != 0 ? filtered : excitation_ + kPast, samples);
    moveDown(excitation_, kPast, kFrame);
    noiseSeed_ = kNoiseSeed;
    pastType_ = kActive;
}

void Decoder::makeExcitation(const Frame& frame) {
    for (Vsp32s i = 0; i < kSubframes; i++) {
        const Subframe& s = frame.subframes[i];
        const Vsp16s lag = frame.lag[i / 2];
        Vsp16s* past = excitation_ + kSubframe * i;
        Vsp16s code[kSubframe], vector[kSubframe];
        if (frame.rate == k6k3)
            vspsFixedCodebookDecode_MLQ_G723_16s(s.fixed, s.position, lag, i, code);
        else
            vspsFixedCodebookDecode_ACELP_G723_16s(s.fixed, s.position, Vsp16s(lag - 1 + s.offset), s.adaptive, code);
        vspsDecodeAdaptiveVector_G723_16s(past, Vsp16s(lag - kSubframe), s.offset, s.adaptive, frame.rate, vector);
        vspsExcitation_G723_16s(vector, code, past + kPast);
    }
}

void Decoder::postFilterPitch(const Vsp16s* normalised, const Frame& frame, Vsp16s* filtered) const {
    for (Vsp32s i = 0; i < kSubframes; i++) {
        Vsp16s delay, gain, scale;
        vspsPitchPostFilterSearch_G723_16s(normalised, frame.lag[i / 2], i, frame.rate, &delay, &gain, &scale);
        vspsPitchPostFilter_G723_16s(excitation_, delay, gain, scale, i, filtered + kSubframe * i);
    }
}

void Decoder::synthesise(const Vsp16s* lpc, const Vsp16s* excitation, Vsp16s* samples) {
    for (Vsp32s i = 0; i < kSubframes; i++, lpc += kOrder, excitation += kSubframe, samples += kSubframe) {
        vspsSynthesisFilter_G723_16s(lpc, excitation, samples, kSubframe, synthesisMemory_);
        if (postFilter_ != 0) {
            Vsp32s energy;
            vspsFormantPostFilter_G723_16s_I(lpc, samples, postZeros_, postPoles_, &tilt_, &energy);
            vspsGainControl_G723_16s_I(energy, samples, &outputGain_);
        } else {
            vspsMulC_NR_16s_ISfs(2, samples, kSubframe, 0);
        }
    }
}

void Decoder::decodeNoise(const Vsp16s* index, Vsp16s* samples) {
    Vsp16s lpc[kSubframes * kOrder], excitation[kFrame], lag[2], offset[kSubframes], adaptive[kSubframes];
    if (index != nullptr) {
        vspsSIDGainDecode_G723_16s(index[3], &descriptorGain_);
        vspsLSFDecode_G723_16s(index, lsf_, 0, noiseLsf_);
    } else if (pastType_ == kActive) {
        Vsp16s gainIndex;
        vspsSIDGainQuant_G723_16s(&energy_, &energyScale_, 0, &gainIndex);
        vspsSIDGainDecode_G723_16s(gainIndex, &descriptorGain_);
    }
    vspsCNGGain_G723_16s(descriptorGain_, pastType_, &noiseGain_);
    vspsRandomNoiseExcitation_G723_16s(noiseGain_, &noiseSeed_, excitation_, excitation, lag, offset, adaptive);
    interpolateFilters(lsf_, noiseLsf_, lpc);
    synthesise(lpc, excitation, samples);
    pastType_ = index != nullptr ? kSilence : kUntransmitted;
}

void Decoder::conceal(Vsp16s* samples) {
    constexpr Vsp32s kMostErasures = 3;
    if (pastType_ != kActive) return decodeNoise(nullptr, samples);
    static constexpr Vsp16s kNoIndex[3] = {};
    Vsp16s lsf[kOrder], lpc[kSubframes * kOrder], excitation[kFrame];
    erasures_ = erasures_ < kMostErasures ? erasures_ + 1 : kMostErasures;
    vspsLSFDecode_G723_16s(kNoIndex, lsf_, 1, lsf);
    interpolateFilters(lsf_, lsf, lpc);
    vspsErasureGain_G723_16s(0, 0, 1, &erasureGain_);
    vspsErasureConceal_G723_16s(erasureDelay_, erasureGain_, erasures_, excitation_, &erasureSeed_, excitation);
    synthesise(lpc, excitation, samples);
    noiseSeed_ = kNoiseSeed;
}

}  // namespace vspv::g723
