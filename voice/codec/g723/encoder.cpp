#include "codec/g723/encoder.h"

#include "codec/g723/memory.h"
#include "samples.h"
#include "vspsc/common.h"
#include "vspsc/g723.h"

namespace vspv::g723 {

void Encoder::reset() {
    *this = {};
    highPass_ = 1;
    copy(kMeanLsf, lsf_, kOrder);
    for (Vsp32s& error : excitationError_) error = 4;
    openLoopLags_[0] = openLoopLags_[1] = 1;
    openLoopLags_[2] = openLoopLags_[3] = kSubframe;
    seed_ = kNoiseSeed;
    pastType_ = kActive;
    vspsVADInit_G723_16s(detector_);
    vspsDTXInit_G723_16s(noise_);
}

// What detector and noise know of earlier frames is out of date when they begin.
void Encoder::setSilence(bool on) {
    if (on && withSilence_ == 0) {
        vspsVADInit_G723_16s(detector_);
        vspsDTXInit_G723_16s(noise_);
    }
    withSilence_ = on;
}

void Encoder::encode(Rate rate, const Vsp16s* samples, Vsp8u* bytes, VspvFrame& told) {
    takeSamples(samples);
    Filters filters;
    analyse(filters);
    Vsp16s lsf[kOrder], normalised[kPast + kFrame];
    vspsLPCToLSF_G723_16s(filters.plain + 3 * kOrder, lsf_, lsf);
    const bool active = withSilence_ == 0 || isSpeech();
    weightSpeech(filters);
    moveDown(speech_, kKept, kFrame);
    findOpenLoopLags(normalised);
    if (active) {
        Frame frame{};
        frame.rate = rate;
        encodeSpeech(lsf, normalised, filters, frame);
        pack(frame, bytes);
        told.numBytes = bytesOf(rate);
        pastType_ = kActive;
        seed_ = kNoiseSeed;
    } else {
        encodeNoise(filters, bytes, told);
    }
    moveDown(weighted_, kPast, kFrame);
}

void Encoder::takeSamples(const Vsp16s* samples) {
    Vsp16s* now = speech_ + kKept;
    if (highPass_ != 0) {
        copy(samples, now, kFrame);
        vspsHighPassFilter_G723_16s_I(now, kFrame, inputFilter_);
    } else {
        for (Vsp32s i = 0; i < kFrame; i++) now[i] = Vsp16s(samples[i] >> 1);
    }
}

void Encoder::analyse(Filters& filters) {
    Vsp16s autocorr[kSubframes * (kOrder + 1)], shift[kSubframes], error, reflection[kSubframes];
    for (Vsp32s i = 0; i < kSubframes; i++) {
        Vsp16s *r = autocorr + (kOrder + 1) * i, *lpc = filters.plain + kOrder * i;
        vspsAutoCorr_G723_16s(speech_ + kSubframe * i, r, shift + i);
        vspsLevinsonDurbin_G723_16s(r, lpc, &error, reflection + i);
        vspsWeightLPC_G723_16s(lpc, filters.weighting + 2 * kOrder * i);
    }
    vspsSineDetect_G723_16s(reflection, &sine_);
    if (withSilence_ != 0) vspsDTXUpdate_G723_16s(autocorr, shift, noise_);
}

bool Encoder::isSpeech() {
    Vsp16s speech = 0;
    vspsVAD_G723_16s(speech_ + kKept, openLoopLags_, sine_, &speech, detector_);
    return speech != 0;
}

void Encoder::weightSpeech(const Filters& filters) {
    constexpr Vsp32s kCoefficientBits = 13;
    for (Vsp32s i = 0; i < kSubframes; i++) {
        const Vsp16s* coefficients = filters.weighting + 2 * kOrder * i;
        Vsp32s zeros[kSubframe];
        vspsFIR16s_G723_16s32s(coefficients, speech_ + kSubframe * (i + 1), zeros, kSubframe, weightingZeros_);
        vspsIIR16s_G723_32s16s_Sfs(coefficients + kOrder, zeros, weighted_ + kPast + kSubframe * i, kSubframe,
                                   kCoefficientBits, weightingPoles_);
    }
}

void Encoder::findOpenLoopLags(Vsp16s* normalised) {
    Vsp32s scale = 3;
    vspsAutoScale_16s(weighted_, normalised, kPast + kFrame, &scale);
    moveDown(openLoopLags_, 2, 2);
    for (Vsp32s i = 0; i < 2; i++)
        vspsOpenLoopPitchSearch_G723_16s(normalised + kPast + 2 * kSubframe * i, openLoopLags_ + 2 + i);
}

void Encoder::encodeSpeech(const Vsp16s* lsf, const Vsp16s* normalised, Filters& filters, Frame& frame) {
    constexpr Vsp16s kSearchBudget = 120;
    Vsp16s decoded[kOrder], target[kFrame];
    Harmonic harmonic[kSubframes];
    for (Vsp32s i = 0; i < kSubframes; i++) {
        const Vsp32s at = kPast + kSubframe * i;
        Harmonic& h = harmonic[i];
        vspsHarmonicSearch_G723_16s(normalised + at, openLoopLags_[2 + i / 2], &h.delay, &h.gain);
        vspsHarmonicFilter_G723_16s(weighted_ + at, h.delay, h.gain, target + kSubframe * i);
    }
    vspsLSFQuant_G723_16s(lsf, lsf_, frame.lsf);
    vspsLSFDecode_G723_16s(frame.lsf, lsf_, 0, decoded);
    interpolateFilters(lsf_, decoded, filters.quantised);
    searchBudget_ = kSearchBudget;
    for (Vsp32s i = 0; i < kSubframes; i++) encodeSubframe(i, filters, harmonic[i], target + kSubframe * i, frame);
    moveDown(excitation_, kPast, kFrame);
}

void Encoder::encodeSubframe(Vsp32s i, const Filters& filters, const Harmonic& harmonic, Vsp16s* target, Frame& frame) {
    constexpr Vsp16s kShortest = 19, kLongest = 140;  // of the first lag of a pair
    const Vsp16s *lpc = filters.quantised + kOrder * i, *weighting = filters.weighting + 2 * kOrder * i;
    Vsp16s* past = excitation_ + kSubframe * i;
    Vsp16s* excitation = past + kPast;
    Subframe& codes = frame.subframes[i];
    Vsp16s& lag = frame.lag[i / 2];

    Vsp16s impulse[kSubframe];
    vspsImpulseResponse_G723_16s(lpc, weighting, harmonic.delay, harmonic.gain, impulse);
    vspsSubtractRinging_G723_16s_I(lpc, weighting, ringing_, ringingZeros_, ringingPoles_, harmonic.delay, harmonic.gain,
                                   target);

    Vsp16s correlation[80], taming, vector[kSubframe], code[kSubframe];
    if (i % 2 == 0) {
        const Vsp16s openLoop = openLoopLags_[2 + i / 2];
        lag = openLoop < kShortest ? kShortest : openLoop > kLongest ? kLongest : openLoop;
    }
    vspsAdaptiveCodebookCorr_G723_16s(target, impulse, past, lag, i, correlation);
    vspsTamingTest_G723_16s(excitationError_, lag, i, sine_, &taming);
    vspsGainQuant_G723_16s(correlation, lag, i, taming, frame.rate, &codes.offset, &codes.adaptive);
    if (i % 2 == 0) {
        lag = Vsp16s(lag - 1 + codes.offset);
        codes.offset = 1;
    }
    vspsDecodeAdaptiveVector_G723_16s(past, Vsp16s(lag - kSubframe), codes.offset, codes.adaptive, frame.rate, vector);
    vspsAdaptiveCodebookContribution_G723_16s_I(vector, impulse, target);
    if (frame.rate == k6k3)
        vspsFixedCodebookSearch_MLQ_G723_16s(target, impulse, lag, i, code, &codes.position, codes.fixed);
    else
        vspsFixedCodebookSearch_ACELP_G723_16s(target, impulse, Vsp16s(lag - 1 + codes.offset), codes.adaptive,
                                               &searchBudget_, code, &codes.position, codes.fixed);
    vspsExcitation_G723_16s(vector, code, excitation);

    Vsp16s synthesised[kSubframe];
    copy(excitation, synthesised, kSubframe);
    vspsTamingUpdate_G723_16s(lag, codes.offset, codes.adaptive, frame.rate, excitationError_);
    vspsUpdateRinging_G723_16s_I(lpc, weighting, synthesised, ringing_, ringingZeros_, ringingPoles_);
}

void Encoder::encodeNoise(Filters& filters, Vsp8u* bytes, VspvFrame& told) {
    Vsp16s type = kUntransmitted, index[4], lsf[kOrder], gain, mean[kOrder];
    vspsDTXEncode_G723_16s(lsf_, pastType_, &type, index, lsf, &gain, mean, noise_);
    told.type = vspvFrameNoData;
    told.numBytes = 0;
    if (type == kSilence) {
        vspsVADUpdate_G723_16s(mean, detector_);
        packSilence(index, bytes);
        told.type = pastType_ == kActive ? vspvFrameSIDFirst : vspvFrameSIDUpdate;
        told.numBytes = kSilenceBytes;
    }

    Vsp16s excitation[kFrame], lag[2], offset[kSubframes], adaptive[kSubframes];
    vspsRandomNoiseExcitation_G723_16s(gain, &seed_, excitation_, excitation, lag, offset, adaptive);
    interpolateFilters(lsf_, lsf, filters.quantised);
    for (Vsp32s i = 0; i < kSubframes; i++) {
        vspsTamingUpdate_G723_16s(lag[i / 2], offset[i], adaptive[i], k5k3, excitationError_);
        vspsUpdateRinging_G723_16s_I(filters.quantised + kOrder * i, filters.weighting + 2 * kOrder * i,
                                     excitation + kSubframe * i, ringing_, ringingZeros_, ringingPoles_);
    }
    pastType_ = type;
}

}  // namespace vspv::g723
