#include "codec/amrwb/decoder.h"

namespace vspv::amrwb {

namespace {

constexpr Vsp32s k660 = 5, k885 = 9, k2385 = 21;  // codes of rates
constexpr Vsp32s kSpeechState = 0, kMutedState = 2;
constexpr Vsp32s kMostBadFrames = 6;
constexpr Vsp16s kIsfReset[16] = {1024, 2048,  3072,  4096,  5120,  6144,  7168,  8192,
                                  9216, 10240, 11264, 12288, 13312, 14336, 15360, 3840};
constexpr Vsp16s kNoiseWeight = 19661, kWideNoiseWeight = 29491, kSharpening = 27853;  // Q15: 0.6, 0.9, 0.85
constexpr Vsp16s kNewShares[4] = {14746, 26214, 31457, 32767};                         // Q15, of a spectrum, by subframe

// Of the algebraic codebook.
Vsp32s numIndices(Vsp32s code) { return code == k660 ? 1 : code < 18 ? 4 : 8; }

}  // namespace

void Decoder::reset() {
    *this = {};
    home_ = firstFrame_ = true;
    exponent_ = 8;
    seed_ = 21845;
    for (Vsp32s i = 0; i < 3; i++) copy(kIsfReset, isfHistory_ + 16 * i, 16);
    copy(kIsfReset, isf_, 16);
    copy(kIspReset, isp_, 16);
    for (Vsp16s& x : headroom_) x = 8;
    for (Vsp32s i = 0; i < 4; i++) gains_[i] = -14336;
    highBand_.reset();
    vspsAdaptiveCodebookDecodeInit_AMRWB_16s(adaptive_);
    vspsCNGInit_AMRWB_16s(noise_);
}

// At home a homing frame is answered by that of the encoder; away from home it leads there.
void Decoder::decode(Received type, Vsp32s mode, const Vsp16s* parameters, Vsp16s* samples) {
    const bool wasHome = home_, speech = type <= kBad && parameters != nullptr;
    if (speech) mode_ = mode;
    const bool homing = speech && isHoming(mode, parameters, wasHome);
    if (homing && wasHome)
        for (Vsp32s i = 0; i < kFrame; i++) samples[i] = 8;
    else
        decodeFrame(type, parameters, samples);
    if (homing) {
        reset();
        mode_ = mode;
    }
    home_ = homing;
}

void Decoder::decodeFrame(Received type, const Vsp16s* parameters, Vsp16s* samples) {
    static constexpr Vsp16s kNone[kMaxParameters] = {};
    if (parameters == nullptr) parameters = kNone;
    const Vsp32s code = kRateCodes[mode_], lastState = noiseState_;
    const Vsp16s bad = type == kDegraded || type == kBad ? 1 : type == kLost || type == kNoData ? 2 : 0;
    Vsp16s state = 0, isf[16];
    vspsCNGHandler_AMRWB_16s(type, &state, noise_);
    if (state != kSpeechState)
        vspsCNGDecode_AMRWB_16s(type >= kSilenceFirst ? parameters : kNone, state, isf, excitation_ + kPast, noise_);

    badFrames_ = bad == 0 ? badFrames_ >> 1 : badFrames_ < kMostBadFrames ? badFrames_ + 1 : kMostBadFrames;
    if (lastState != kSpeechState) {
        badFrames_ = kMostBadFrames - 1;
        previousBad_ = lastState == kMutedState;
    }
    Vsp16s speech = 0;
    if (state == kSpeechState) {
        Speech s;
        s.code = code;
        s.bad = bad;
        speech = bad == 2 ? Vsp16s(0) : parameters[0];
        s.next = parameters + 1;
        if (bad == 0)
            framesWithoutSpeech_ = speech != 0                    ? Vsp16s(0)
                                   : framesWithoutSpeech_ < 32767 ? Vsp16s(framesWithoutSpeech_ + 1)
                                                                  : Vsp16s(32767);
        decodeSpeech(s, samples);
    } else {
        decodeNoise(code, bad, isf, samples);
    }
    vspsCNGSetState_AMRWB_16s(state, speech, bad != 0, noise_);
    noiseState_ = state;
    previousBad_ = bad != 0;
    for (Vsp32s i = 0; i < kFrame; i++) samples[i] = Vsp16s(samples[i] & ~3);
}

// What comes next is decoded without the speech before.
void Decoder::decodeNoise(Vsp32s code, Vsp16s bad, Vsp16s* isf, Vsp16s* samples) {
    Vsp16s isp[16], lpc[17];
    vspsISFToISP_AMRWB_16s(isf, 16, isp);
    vspsISPToLPC_AMRWB_16s(isp, 16, 1, lpc);
    for (Vsp32s i = 0; i < 4; i++)
        synthesise(lpc, excitation_ + kPast + kSubframe * i, 0, nullptr, Vsp16s(code == k2385 && bad == 0 ? 1 : -1),
                   code == k2385, samples + kSubframe16 * i);
    clear(excitation_, kPast + kCore + 1);
    clear(isfResidual_, 16);
    clear(dispersion_, 8);
    vspsAdaptiveCodebookDecodeReset_AMRWB_16s(adaptive_);
    firstFrame_ = true;
    noiseThreshold_ = 0;
    tilt_ = 0;
    exponent_ = 8;
    for (Vsp16s& x : headroom_) x = 8;
    copy(isf, isf_, 16);
}

void Decoder::decodeSpeech(Speech& s, Vsp16s* samples) {
    findFilters(s);
    for (Vsp32s i = 0; i < 4; i++) decodeSubframe(s, i, samples + kSubframe16 * i);
    Vsp16s unscaled[kCore];
    scale(excitation_ + kPast, -exponent_, unscaled, kCore);
    vspsCNGUpdate_AMRWB_16s(s.isf, unscaled, noise_);
    moveDown(excitation_, kPast, kCore);
}

// 3GPP TS 26.190 6.1, TS 26.191 6.2
void Decoder::findFilters(Speech& s) {
    Vsp16s isp[16];
    if (s.bad == 0)
        vspsISFDecode_AMRWB_16s(s.next, s.code, isfResidual_, isfHistory_, s.isf);
    else
        vspsISFDecodeErased_AMRWB_16s(isf_, isfHistory_, isfResidual_, s.isf);
    s.next += s.code == k660 ? 5 : 7;
    vspsISFToISP_AMRWB_16s(s.isf, 16, isp);
    vspsInterpolateISP_AMRWB_16s(firstFrame_ ? isp : isp_, isp, s.lpc);
    firstFrame_ = false;
    copy(isp, isp_, 16);
    vspsISFStability_AMRWB_16s(s.isf, isf_, &s.stability);
    copy(isf_, s.previousIsf, 16);
    copy(s.isf, isf_, 16);
}

void Decoder::decodeCode(Speech& s, Vsp16s lag, Vsp16s* code) {
    Vsp16s none = 0;
    if (s.bad == 2)
        vspsAlgebraicCodebookRandom_AMRWB_16s(&seed_, code);
    else
        vspsAlgebraicCodebookDecode_AMRWB_16s(s.next, s.code, code);
    s.next += numIndices(s.code);
    vspsPreemphasize_AMRWB_16s_ISfs(tilt_, code, kSubframe, 0, &none);
    vspsPitchSharpen_AMRWB_16s_I(lag, kSharpening, code, kSubframe);
}

// 3GPP TS 26.190 6.1 to 6.3
void Decoder::decodeSubframe(Speech& s, Vsp32s i, Vsp16s* samples) {
    Vsp16s* e = excitation_ + kPast + kSubframe * i;
    Vsp16s delay[2], code[kSubframe], vector[kSubframe], scaled[kSubframe], enhanced[kSubframe], enhancedCode[kSubframe];
    const Vsp16s index = *s.next++, filter = s.code > k885 ? *s.next++ : Vsp16s(0);
    vspsAdaptiveCodebookDecode_AMRWB_16s(index, filter, Vsp16s(i), s.code, s.bad, gains_ + 17, e, delay, adaptive_);
    decodeCode(s, Vsp16s(delay[0] + (delay[1] > 2)), code);

    Vsp16s pitchGain = 0, codeGain = 0, exponent = 0, voicing = 0;
    Vsp32s exactGain = 0;
    vspsGainDecode_AMRWB_16s(*s.next++, code, s.code, s.bad, previousBad_, Vsp16s(badFrames_), framesWithoutSpeech_, gains_,
                             &pitchGain, &exactGain);
    vspsExcitationScale_AMRWB_16s(exactGain, headroom_, &exponent, &codeGain);
    scale(e - kPast, exponent - exponent_, kPast + kSubframe);
    exponent_ = exponent;
    copy(e, vector, kSubframe);
    scale(vector, -3, scaled, kSubframe);
    vspsVoicingFactor_AMRWB_16s(scaled, -3, pitchGain, code, codeGain, &voicing);
    tilt_ = Vsp16s((voicing >> 2) + 8192);
    vspsExcitation_AMRWB_16s_I(code, pitchGain, codeGain, e);
    vspsExcitationHeadroom_AMRWB_16s(e, exponent_, headroom_);

    vspsPhaseDispersion_AMRWB_16s_I(pitchGain, Vsp16s(exactGain >> 16), s.code, code, dispersion_);
    vspsNoiseEnhance_AMRWB_32s_I(voicing, s.stability, &noiseThreshold_, &exactGain);
    vspsPitchEnhance_AMRWB_16s(code, voicing, enhancedCode);
    copy(vector, enhanced, kSubframe);
    vspsExcitation_AMRWB_16s_I(enhancedCode, pitchGain, roundedGain(exactGain, exponent_), enhanced);
    if (s.code <= k885) vspsPitchPostProcess_AMRWB_16s_I(vector, pitchGain, enhanced);

    Vsp16s highIsf[16];
    if (s.code == k660)
        vspsInterpolateC_NR_G729_16s_Sfs(s.previousIsf, Vsp16s(32767 - kNewShares[i]), s.isf, kNewShares[i], highIsf, 16,
                                         15);
    else
        clear(noiseSynthesis_, 4);
    const bool sentGain = s.code == k2385;
    const Vsp16s highGain = sentGain ? *s.next++ : Vsp16s(-1);
    synthesise(s.lpc + 17 * i, enhanced, exponent_, s.code == k660 ? highIsf : nullptr, s.bad == 0 ? highGain : Vsp16s(-1),
               sentGain, samples);
}

void Decoder::synthesise(const Vsp16s* lpc, const Vsp16s* excitation, Vsp32s exponent, const Vsp16s* highIsf,
                         Vsp16s highGain, bool lowPass, Vsp16s* samples) {
    Vsp16s synthesised[kSubframe], noise[kSubframe16], filtered[kSubframe16], filter[21];
    highBand_.synthesise(lpc, excitation, exponent, synthesised);
    vspsUpsample_AMRWB_16s(synthesised, kSubframe, upsampling_, samples);
    const Vsp16s gain = highBand_.makeNoise(excitation, exponent, synthesised, framesWithoutSpeech_, noise);
    vspsHighBandScale_AMRWB_16s_I(gain, highGain, noise);
    if (highIsf != nullptr) {
        Vsp16s isp[20], wide[21];
        vspsISFExtrapolate_AMRWB_16s(highIsf, isp);
        vspsISPToLPC_AMRWB_16s(isp, 20, 0, wide);
        vspsMulPowerC_NR_16s_Sfs(wide, kWideNoiseWeight, filter, 21, 15);
        vspsSynthesisFilter_AMRWB_16s(filter, 20, noise, filtered, kSubframe16, noiseSynthesis_);
        copy(filtered + kSubframe16 - 20, noiseSynthesis_, 20);
    } else {
        vspsMulPowerC_NR_16s_Sfs(lpc, kNoiseWeight, filter, 17, 15);
        vspsSynthesisFilter_AMRWB_16s(filter, 16, noise, filtered, kSubframe16, noiseSynthesis_ + 4);
        copy(filtered + kSubframe16 - 16, noiseSynthesis_ + 4, 16);
    }
    vspsBandPassFilter_AMRWB_16s_I(filtered, kSubframe16, noiseBand_);
    if (lowPass) vspsLowPassFilter_AMRWB_16s_I(filtered, kSubframe16, lowPass_);
    vspsInterpolateC_NR_G729_16s_Sfs(samples, 1, filtered, 1, samples, kSubframe16, 0);
}

}  // namespace vspv::amrwb
