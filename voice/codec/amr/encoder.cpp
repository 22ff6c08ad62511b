#include "codec/amr/encoder.h"

#include "codec/amr/excitation.h"
#include "vspsc/common.h"

namespace vspv::amr {

namespace {

constexpr Vsp32s k475 = 0, k795 = 8, k102 = 11, k122 = 12;  // codes of rates
constexpr Vsp16s kLspReset[10] = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};
constexpr Vsp16s kPredictorReset[8] = {-14336, -14336, -14336, -14336, -2381, -2381, -2381, -2381};
constexpr Vsp16s kMostSharpening = 13017;  // Q14

// Of the algebraic codebook.
Vsp32s numIndices(Vsp32s code) { return code == k122 ? 10 : code == k102 ? 7 : 2; }

}  // namespace

void Encoder::reset() {
    const Vsp32s detector = detector_;
    *this = {};
    detector_ = detector;
    vspsHighPassFilterInit_GSMAMR_16s(0, input_);
    vspsDTXInit_GSMAMR_16s(noise_);
    vad1_ = VSP_GSMAMR_VAD1_STATE_INIT;
    vad2_ = VSP_GSMAMR_VAD2_STATE_INIT;
    recursion_[0] = 4096;
    copy(kLspReset, lsp_, 10);
    copy(kLspReset, quantisedLsp_, 10);
    for (Vsp32s i = 0; i < 5; i++) openLoop_[i] = 40;
    openLoop_[7] = 40;
    openLoopForDetector_[1] = 13106;
    copy(kPredictorReset, predictor_, 8);
    copy(kPredictorReset, gainMemory_, 8);
    descriptorMemory_[0] = 3;
}

void Encoder::setDetector(Vsp32s option) {
    if (option == detector_) return;
    detector_ = option;
    vad1_ = VSP_GSMAMR_VAD1_STATE_INIT;
    vad2_ = VSP_GSMAMR_VAD2_STATE_INIT;
    clear(openLoopForDetector_, 5);
    openLoopForDetector_[1] = 13106;
}

void Encoder::encode(Vsp32s mode, const Vsp16s* samples, Vsp8u* bytes, VspvFrame& told) {
    const Vsp32s code = kRateCodes[mode];
    bool homing = true;
    for (Vsp32s i = 0; i < kFrame; i++) {
        speech_[kFrame + i] = Vsp16s(samples[i] & ~7);
        homing = homing && speech_[kFrame + i] == 8;
    }
    vspsHighPassFilter_GSMAMR_16s_I(speech_ + kFrame, kFrame, input_);

    Vsp32s used = code, newDescriptor = 0;
    if (detector_ != 0) vspsDTXHandler_GSMAMR_16s(isSpeech(), &used, &newDescriptor, noise_);
    const bool silent = used == kSilenceCode;

    Vsp16s lsp[20], silence[kSilenceParameters], lags[2];
    Vsp32s resonance = 0;
    Filters filters;
    Parameters parameters;
    analyse(code, lsp, filters);
    const Vsp16s* newLsp = code == k122 ? lsp + 10 : lsp;
    if (!silent) quantise(code, lsp, filters, parameters);
    copy(newLsp, lsp_, 10);
    vspsDTXBuffer_GSMAMR_16s(newLsp, speech_ + kFrame, noise_);
    if (silent) {
        vspsDTXEncode_GSMAMR_16s(newDescriptor, predictor_, silence, noise_);
        forgetSpeech();
    } else {
        vspsResonanceDetect_GSMAMR_16s(newLsp, &resonances_, &resonance);
    }
    vspsWeightedSpeech_GSMAMR_16s(speech(0), filters.plain, code, weightedMemory_, weighted_ + kPastWeighted);
    vspsOpenLoopPitchSearch_GSMAMR_16s(weighted_ + kPastWeighted, code, detector_, openLoop_, openLoopForDetector_,
                                       &vad1_.pitchFlags, lags);
    if (!silent) encodeSubframes(code, filters, resonance, lags, parameters);

    moveDown(speech_, kFrame, kFrame);
    moveDown(weighted_, kPastWeighted, kFrame);
    moveDown(excitation_, kPast, kFrame);
    vspsSIDSync_GSMAMR_16s(used, descriptorMemory_, &told.type);
    if (told.type == vspvFrameSpeech)
        pack(mode, parameters.values(), bytes);
    else if (told.type != vspvFrameNoData)
        packSilence(silence, told.type == vspvFrameSIDUpdate, mode, bytes);
    told.numBytes = told.type == vspvFrameSpeech ? bytesOf(mode) : told.type == vspvFrameNoData ? 0 : kSilenceBytes;
    if (homing) reset();
}

bool Encoder::isSpeech() {
    Vsp16s speech = 0;
    if (detector_ == 1)
        vspsVAD1_GSMAMR_16s(speech_ + kFrame - 40, &vad1_, &speech, openLoopForDetector_[1], openLoopForDetector_[0]);
    else
        vspsVAD2_GSMAMR_16s(speech_ + kFrame, &vad2_, &speech, openLoopForDetector_[4]);
    return speech != 0;
}

// 3GPP TS 26.090 5.2: at 12.2 kbit/s two analyses, and the middle LSP vector before the new one.
void Encoder::analyse(Vsp32s code, Vsp16s* lsp, Filters& filters) {
    const auto predict = [&](Vsp32s window, Vsp16s* lpc) {
        Vsp32s autocorr[11], norm;
        Vsp16s reflection[4];
        vspsAutoCorr_GSMAMR_16s32s(speech_ + (code == k122 ? 40 : 80), window, autocorr, &norm);
        vspsLagWindow_G729_32s_I(autocorr + 1, 10);
        vspsLevinsonDurbin_GSMAMR_32s16s(autocorr, recursion_, lpc, reflection);
    };
    Vsp16s interpolated[40];
    Vsp16s* a = filters.plain;
    if (code == k122) {
        predict(1, a + 11);
        predict(2, a + 33);
        vspsLPCToLSP_GSMAMR_16s(a + 11, lsp_, lsp);
        vspsLPCToLSP_GSMAMR_16s(a + 33, lsp, lsp + 10);
        vspsInterpolateLSP_GSMAMR_16s(lsp_, lsp, lsp + 10, code, interpolated);
        vspsLSPToLPC_GSMAMR_16s(interpolated, a);
        vspsLSPToLPC_GSMAMR_16s(interpolated + 20, a + 22);
    } else {
        predict(0, a + 33);
        vspsLPCToLSP_GSMAMR_16s(a + 33, lsp_, lsp);
        vspsInterpolateLSP_GSMAMR_16s(lsp_, nullptr, lsp, code, interpolated);
        for (Vsp32s i = 0; i < 3; i++) vspsLSPToLPC_GSMAMR_16s(interpolated + 10 * i, a + 11 * i);
    }
}

void Encoder::quantise(Vsp32s code, const Vsp16s* lsp, Filters& filters, Parameters& parameters) {
    Vsp16s quantised[20], index[5], interpolated[40];
    vspsLSPQuant_GSMAMR_16s(lsp, code, lsfResidual_, quantised, index);
    parameters.add(index, code == k122 ? 5 : 3);
    const Vsp16s* last = code == k122 ? quantised + 10 : quantised;
    vspsInterpolateLSP_GSMAMR_16s(quantisedLsp_, code == k122 ? quantised : nullptr, last, code, interpolated);
    for (Vsp32s i = 0; i < 4; i++) vspsLSPToLPC_GSMAMR_16s(interpolated + 10 * i, filters.quantised + 11 * i);
    copy(last, quantisedLsp_, 10);
}

// What a frame without speech leaves of the speech before it.
void Encoder::forgetSpeech() {
    clear(excitation_, kPast + kFrame);
    clear(memories_.target, 10);
    clear(memories_.error, 10);
    clear(lsfResidual_, 10);
    previousLag_ = sharpening_ = 0;
    copy(lsp_, quantisedLsp_, 10);
}

void Encoder::findTarget(Vsp32s code, Vsp32s i, const Filters& filters, const Memories& memories, Subframe& s) {
    vspsPitchTarget_GSMAMR_16s(speech(i), filters.plain + 11 * i, filters.quantised + 11 * i, memories.error,
                               memories.target, code, s.impulse, s.target, s.residual);
    copy(s.residual, excitation(i), kSubframe);
}

void Encoder::makeVector(Vsp32s code, Vsp32s i, Subframe& s) {
    vspsDecodeAdaptiveVector_GSMAMR_16s_I(s.delay, code, excitation(i));
    vspsConvPartial_16s_Sfs(excitation(i), s.impulse, s.filteredVector, kSubframe, 12);
}

// 3GPP TS 26.090 5.6 to 5.8. At 4.75 kbit/s the gains of two subframes are one index, in the place of the first one's.
void Encoder::search(Vsp32s code, Vsp32s i, const Filters& filters, Vsp32s resonance, Vsp16s openLoopLag,
                     const Memories& memories, Subframe& s, Vsp16s* gain, Vsp16s* gainBefore, Parameters& parameters,
                     Vsp16s** gainPlace) {
    Vsp16s index[10], coeff[4], limit, residual[kSubframe], rest[kSubframe];
    findTarget(code, i, filters, memories, s);
    vspsAdaptiveCodebookSearch_GSMAMR_16s(s.target, s.impulse, excitation(i), code, i, openLoopLag, &previousLag_, s.delay,
                                          index);
    parameters.add(index[0]);
    makeVector(code, i, s);
    vspsAdaptiveCodebookGain_GSMAMR_16s(s.target, s.filteredVector, code, gain, coeff);
    vspsPitchGainLimit_GSMAMR_16s(pitchGains_, code, resonance, gain, &limit);
    if (code == k122) {
        vspsPitchGainQuant_GSMAMR_16s(limit, gain, index);
        parameters.add(index[0]);
    }
    vspsAdaptiveCodebookContribution_GSMAMR_16s(gain[0], s.filteredVector, s.target, rest);
    vspsAdaptiveCodebookContribution_GSMAMR_16s(gain[0], excitation(i), s.residual, residual);
    if (i == 0 && openLoop_[5] > 0) openLoop_[1] = s.delay[0];
    if (i == 3 && openLoop_[6] > 0) openLoop_[0] = s.delay[0];

    vspsAlgebraicCodebookSearch_GSMAMR_16s(rest, residual, s.impulse, code, i, s.delay[0],
                                           code == k122 ? gain[0] : sharpening_, s.code, s.filteredCode, index);
    parameters.add(index, numIndices(code));
    const bool first = code == k475 && i % 2 == 0, second = code == k475 && !first;
    vspsGainQuant_GSMAMR_16s(s.residual, excitation(i), s.code, s.target, rest, s.filteredVector, s.filteredCode, coeff,
                             code, i, limit, predictor_, gainMemory_, gain, gainBefore, index);
    if (first)
        *gainPlace = parameters.reserve();
    else if (second)
        **gainPlace = index[0];
    else
        parameters.add(index, code == k795 ? 2 : 1);
    moveDown(pitchGains_, 6, 1);
    pitchGains_[6] = Vsp16s(gain[0] >> 3);
}

void Encoder::update(Vsp32s code, Vsp32s i, const Filters& filters, const Subframe& s, const Vsp16s* gain, Memories& m) {
    Vsp16s synthesised[kSubframe];
    Vsp16s* e = excitation(i);
    totalExcitation(code, e, gain, s.code, e);
    vspsSynthesisFilter_NR_16s_Sfs(filters.quantised + 11 * i, e, synthesised, kSubframe, 12, m.synthesis);
    copy(synthesised + kSubframe - 10, m.synthesis, 10);
    vspsWeightedErrorUpdate_GSMAMR_16s(speech(i), synthesised, s.target, s.filteredVector, s.filteredCode, gain, code,
                                       m.error, m.target);
}

void Encoder::encodeSubframes(Vsp32s code, const Filters& filters, Vsp32s resonance, const Vsp16s* lags,
                              Parameters& parameters) {
    Vsp16s gain[2] = {}, gainBefore[2] = {}, *gainPlace = nullptr;
    Subframe s, before;
    for (Vsp32s i = 0; i < 4; i++) {
        if (code != k475) {
            search(code, i, filters, resonance, lags[i / 2], memories_, s, gain, nullptr, parameters, nullptr);
            update(code, i, filters, s, gain, memories_);
        } else {
            // Both subframes with the first one's gains unquantised, then once more with what the index says of both.
            Memories trial = memories_;
            search(code, i, filters, resonance, lags[i / 2], trial, before, gain, gainBefore, parameters, &gainPlace);
            update(code, i, filters, before, gain, trial);
            i++;
            search(code, i, filters, resonance, lags[i / 2], trial, s, gain, gainBefore, parameters, &gainPlace);
            makeVector(code, i - 1, before);
            update(code, i - 1, filters, before, gainBefore, memories_);
            findTarget(code, i, filters, memories_, s);
            makeVector(code, i, s);
            update(code, i, filters, s, gain, memories_);
        }
        sharpening_ = gain[0] < kMostSharpening ? gain[0] : kMostSharpening;
    }
}

}  // namespace vspv::amr
