#include "codec/amrwb/encoder.h"

namespace vspv::amrwb {

namespace {

constexpr Vsp32s k660 = 5, k885 = 9, k2385 = 21;             // codes of rates
constexpr Vsp16s kNoiseWeight = 19661, kSharpening = 27853;  // Q15: 0.6, 0.85
constexpr Vsp16s kClippingReset[2] = {307, 9830};

// Of the algebraic codebook.
Vsp32s numIndices(Vsp32s code) { return code == k660 ? 1 : code < 18 ? 4 : 8; }

}  // namespace

void Encoder::reset() {
    const bool dtx = dtx_;
    *this = {};
    dtx_ = dtx;
    analysis_.reset();
    firstFrame_ = lastWasSpeech_ = true;
    descriptorCountdown_ = 3;
    copy(kIspReset, quantisedIsp_, 16);
    for (Vsp32s i = 0; i < 15; i++) isf_[i] = Vsp16s(1024 * (i + 1));
    isf_[15] = 3840;
    copy(kClippingReset, clipping_, 2);
    for (Vsp16s& gain : gains_) gain = -14336;
    noiseShare_ = 32767;
    highBand_.reset();
    vspsDTXInit_AMRWB_16s(noise_);
}

void Encoder::setDTX(bool on) { dtx_ = on; }

void Encoder::encode(Vsp32s mode, const Vsp16s* samples, Vsp8u* bytes, VspvFrame& told) {
    const Vsp32s code = kRateCodes[mode];
    Vsp16s cleared[kFrame];
    const bool homing = Analysis::clearLowBits(samples, cleared);
    Frame frame;
    frame.code = code;
    frame.samples = cleared;
    analysis_.take(cleared, frame);
    rescale(frame.change);

    const bool speech = analysis_.isSpeech(frame);
    framesWithoutSpeech_ = speech ? 0 : framesWithoutSpeech_ < 32767 ? framesWithoutSpeech_ + 1 : 32767;
    Vsp32s used = code;
    frame.hangover = 7;
    if (dtx_) vspsDTXHandler_AMRWB_16s(speech, &used, &frame.hangover, noise_);
    const bool silent = used == kSilenceCode;

    Vsp16s silence[kSilenceParameters] = {};
    Parameters parameters;
    analysis_.predict(frame);
    vspsPitchGainClipISF_AMRWB_16s(frame.isf, used, clipping_);
    analysis_.search(used == k660, frame);
    if (silent) {
        encodeNoise(frame, silence);
    } else {
        parameters.add(speech);
        quantise(frame, parameters);
        if (!speech) vspsDTXBuffer_AMRWB_16s(isf_, excitation(0), frame.exponent, code, noise_);
        for (Vsp32s i = 0; i < 4; i++) encodeSubframe(frame, i, parameters);
        moveDown(excitation_, kPast, kCore);
    }
    analysis_.finish();

    told.type = typeOf(silent);
    if (told.type == vspvFrameSpeech) {
        pack(mode, parameters.values(), bytes);
    } else if (told.type != vspvFrameNoData) {
        static constexpr Vsp16s kNone[kSilenceParameters] = {};
        const bool update = told.type == vspvFrameSIDUpdate;
        packSilence(update ? silence : kNone, update, mode, bytes);
    }
    told.numBytes = told.type == vspvFrameSpeech ? bytesOf(mode) : told.type == vspvFrameNoData ? 0 : kSilenceBytes;
    if (homing) reset();
}

// What is kept of earlier frames, by a power of two.
void Encoder::rescale(Vsp32s change) {
    scale(excitation_, change, kPast);
    scale(synthesis_, change, 16);
    scale(&weightedError_, change, 1);
}

// The residual of the whole frame becomes its first excitation.
void Encoder::quantise(Frame& frame, Parameters& parameters) {
    Vsp16s quantised[16], isp[16], index[7];
    vspsISFQuant_AMRWB_16s(frame.isf, frame.code, isfResidual_, quantised, index);
    parameters.add(index, frame.code == k660 ? 5 : 7);
    vspsISFStability_AMRWB_16s(quantised, isf_, &frame.stability);
    copy(quantised, isf_, 16);
    vspsISFToISP_AMRWB_16s(quantised, 16, isp);
    vspsInterpolateISP_AMRWB_16s(firstFrame_ ? isp : quantisedIsp_, isp, frame.quantised);
    firstFrame_ = false;
    copy(isp, quantisedIsp_, 16);
    for (Vsp32s k = 0; k < 4; k++)
        vspsResidualFilter_AMRWB_16s_Sfs(frame.quantised + 17 * k, analysis_.speech(k), excitation(k), kSubframe, 11);
}

// A frame of noise forgets the speech before it; the high band goes on.
void Encoder::encodeNoise(const Frame& frame, Vsp16s* silence) {
    Vsp16s isp[16], lpc[17], unused;

    vspsResidualFilter_AMRWB_16s_Sfs(frame.plain + 17 * 3, analysis_.speech(0), excitation(0), kCore, 11);
    vspsDTXBuffer_AMRWB_16s(frame.isf, excitation(0), frame.exponent, frame.code, noise_);
    vspsDTXEncode_AMRWB_16s(isf_, excitation(0), silence, noise_);
    vspsISFToISP_AMRWB_16s(isf_, 16, isp);
    vspsISPToLPC_AMRWB_16s(isp, 16, 0, lpc);
    for (Vsp32s i = 0; i < 4; i++) encodeHighBand(frame, i, lpc, excitation(i), 0, &unused);
    clear(excitation_, kPast + kCore + 1);
    clear(synthesis_, 16);
    clear(isfResidual_, 16);
    weightedError_ = tilt_ = 0;
    noiseThreshold_ = 0;
    firstFrame_ = true;
    copy(kClippingReset, clipping_, 2);
}

// 3GPP TS 26.190 5.5. The residual is what the target would be as an excitation, in the second half that of the speech.
void Encoder::findTarget(const Frame& frame, Vsp32s i, Subframe& s) {
    const Vsp16s *weighted = frame.weighted + 17 * i, *quantised = frame.quantised + 17 * i;
    static constexpr Vsp16s kNothing[16] = {};
    Vsp16s error[16 + kSubframe], half[16 + kSubframe / 2], none = 0;
    vspsInterpolateC_NR_G729_16s_Sfs(analysis_.speech(i) - 16, 1, synthesis_, -1, error, 16, 0);
    vspsSynthesisFilter_AMRWB_16s(quantised, 16, excitation(i), error + 16, kSubframe, error);
    vspsResidualFilter_AMRWB_16s_Sfs(weighted, error + 16, s.target, kSubframe, 11);
    vspsDeemphasize_AMRWB_16s_ISfs(kTilt, s.target, kSubframe, 1, &weightedError_);

    clear(half, 16);
    copy(s.target, half + 16, kSubframe / 2);
    vspsPreemphasize_AMRWB_16s_ISfs(kTilt, half + 16, kSubframe / 2, -1, &none);
    vspsSynthesisFilter_AMRWB_16s(weighted, 16, half + 16, half + 16, kSubframe / 2, kNothing);
    vspsResidualFilter_AMRWB_16s_Sfs(quantised, half + 16, s.residual, kSubframe / 2, 11);
    copy(excitation(i) + kSubframe / 2, s.residual + kSubframe / 2, kSubframe / 2);
    vspsImpulseResponse_AMRWB_16s(weighted, quantised, s.impulse);
}

// 3GPP TS 26.190 5.6 to 5.10
void Encoder::encodeSubframe(const Frame& frame, Vsp32s i, Parameters& parameters) {
    const Vsp32s code = frame.code, shift = frame.weightedShift;
    const bool relative = i % 2 == 1 || (i == 2 && code == k660);
    const auto limited = [](Vsp32s lag) { return Vsp16s(lag < 34 ? 34 : lag > 216 ? 216 : lag); };
    Vsp16s* e = excitation(i);
    const Vsp16s afterwards = e[kSubframe];  // what follows is overwritten by the vector
    Subframe s;
    findTarget(frame, i, s);
    Vsp16s sharpened[kSubframe], scaled[kSubframe], rest[kSubframe], delay[2], coeff[4], indices[8];
    Vsp16s index = 0, clip = 0, select = 0, none = 0, voicing = 0;
    scale(s.impulse, -2, sharpened, kSubframe);
    scale(s.target, shift, kSubframe);
    scale(s.impulse, 1 + shift, kSubframe);

    if (!relative) lagMin_ = limited(frame.lags[i / 2] - 8);
    vspsAdaptiveCodebookSearch_AMRWB_16s(s.target, s.impulse, e, lagMin_, relative, code, delay);
    vspsDelayEncode_AMRWB_16s(delay, lagMin_, relative, code, &index);
    if (!relative) lagMin_ = limited(delay[0] - 8);
    parameters.add(index);
    vspsPitchGainClip_AMRWB_16s(code, clipping_, &clip);
    vspsDecodeAdaptiveVector_AMRWB_16s_I(delay, e);
    vspsAdaptiveCodebookGain_AMRWB_16s(s.target, s.impulse, code, clip, e, s.filteredVector, rest, coeff, &s.pitchGain,
                                       &select);
    if (code > k885) parameters.add(select);
    vspsAdaptiveCodebookContribution_AMRWB_16s(s.pitchGain, e, s.residual, s.residual);
    scale(s.residual, shift, kSubframe);

    const Vsp16s lag = Vsp16s(delay[0] + (delay[1] > 2));
    vspsPreemphasize_AMRWB_16s_ISfs(tilt_, sharpened, kSubframe, 0, &none);
    vspsPitchSharpen_AMRWB_16s_I(lag, kSharpening, sharpened, kSubframe);
    vspsAlgebraicCodebookSearch_AMRWB_16s(rest, s.residual, sharpened, code, s.code, s.filteredCode, indices);
    parameters.add(indices, numIndices(code));
    none = 0;
    vspsPreemphasize_AMRWB_16s_ISfs(tilt_, s.code, kSubframe, 0, &none);
    vspsPitchSharpen_AMRWB_16s_I(lag, kSharpening, s.code, kSubframe);

    vspsGainQuant_AMRWB_16s(s.target, s.filteredVector, s.filteredCode, s.code, coeff, frame.exponent + shift, code, clip,
                            gains_, &s.pitchGain, &s.exactCodeGain, &index);
    parameters.add(index);
    vspsPitchGainClipGain_AMRWB_16s(s.pitchGain, code, clipping_);
    s.codeGain = roundedGain(s.exactCodeGain, frame.exponent);
    scale(e, shift, scaled, kSubframe);
    vspsVoicingFactor_AMRWB_16s(scaled, shift, s.pitchGain, s.code, s.codeGain, &voicing);
    tilt_ = Vsp16s((voicing >> 2) + 8192);
    vspsWeightedErrorUpdate_AMRWB_16s(s.target, s.filteredVector, s.filteredCode, s.pitchGain, s.codeGain, shift,
                                      &weightedError_);
    Vsp16s enhanced[kSubframe], synthesised[kSubframe];
    if (code == k2385) copy(e, enhanced, kSubframe);
    vspsExcitation_AMRWB_16s_I(s.code, s.pitchGain, s.codeGain, e);
    vspsSynthesisFilter_AMRWB_16s(frame.quantised + 17 * i, 16, e, synthesised, kSubframe, synthesis_);
    copy(synthesised + kSubframe - 16, synthesis_, 16);
    if (code == k2385) {
        Vsp16s enhancedCode[kSubframe];
        vspsNoiseEnhance_AMRWB_32s_I(voicing, frame.stability, &noiseThreshold_, &s.exactCodeGain);
        vspsPitchEnhance_AMRWB_16s(s.code, voicing, enhancedCode);
        vspsExcitation_AMRWB_16s_I(enhancedCode, s.pitchGain, roundedGain(s.exactCodeGain, frame.exponent), enhanced);
        encodeHighBand(frame, i, frame.quantised + 17 * i, enhanced, frame.exponent, &index);
        parameters.add(index);
    }
    e[kSubframe] = afterwards;
}

void Encoder::encodeHighBand(const Frame& frame, Vsp32s i, const Vsp16s* lpc, const Vsp16s* excitation, Vsp32s exponent,
                             Vsp16s* index) {
    Vsp16s synthesised[kSubframe], noise[kSubframe16], filtered[kSubframe16], band[kSubframe16], weighted[17];
    highBand_.synthesise(lpc, excitation, exponent, synthesised);
    const Vsp16s gain = highBand_.makeNoise(excitation, exponent, synthesised, framesWithoutSpeech_, noise);
    vspsMulPowerC_NR_16s_Sfs(lpc, kNoiseWeight, weighted, 17, 15);
    vspsSynthesisFilter_AMRWB_16s(weighted, 16, noise, filtered, kSubframe16, noiseSynthesis_);
    copy(filtered + kSubframe16 - 16, noiseSynthesis_, 16);
    vspsBandPassFilter_AMRWB_16s_I(filtered, kSubframe16, noiseBand_);
    copy(frame.samples + kSubframe16 * i, band, kSubframe16);
    vspsBandPassFilter_AMRWB_16s_I(band, kSubframe16, speechBand_);
    vspsHighBandGainQuant_AMRWB_16s(band, filtered, gain, frame.hangover, &noiseShare_, index);
}

// 3GPP TS 26.193 5.1: the third frame of noise after the first one is an update, then every eighth.
Vsp32s Encoder::typeOf(bool noise) {
    if (!noise) {
        lastWasSpeech_ = true;
        descriptorCountdown_ = 8;
        return vspvFrameSpeech;
    }
    descriptorCountdown_--;
    if (lastWasSpeech_) {
        lastWasSpeech_ = false;
        descriptorCountdown_ = 3;
        return vspvFrameSIDFirst;
    }
    if (descriptorCountdown_ > 0) return vspvFrameNoData;
    descriptorCountdown_ = 8;
    return vspvFrameSIDUpdate;
}

}  // namespace vspv::amrwb
