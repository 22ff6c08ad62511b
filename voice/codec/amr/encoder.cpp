#include "codec/amr/encoder.h"

#include "vspsc/common.h"
#include "vspsc/gsmamr.h"

namespace vspv::amr {

struct Encoder::Filters {
    Vsp16s lpc[4][kOrder + 1], quantised[4][kOrder + 1];
};

struct Encoder::Subframe {
    Vsp16s impulse[kSubframe], target[kSubframe], residual[kSubframe];
    Vsp16s y1[kSubframe], target2[kSubframe], residual2[kSubframe], code[kSubframe], y2[kSubframe];
    Vsp16s openLag, delay[2], gain[2], gainBefore[2];
    Vsp16s* gainIndex;
};

void Encoder::reset() {
    *this = {};
    levinson_[0] = 4096;
    copy(kStartLsp, kOrder, lsp_);
    copy(kStartLsp, kOrder, quantisedLsp_);
    constexpr Vsp16s kLag = 40;
    for (int i = 0; i < 5; i++) openLoop_[i] = kLag;
    openLoop_[7] = kLag;
    detectorPitch_[1] = 13106;
    resetPredictor(predictor_);
    resetPredictor(gainMemory_);
    sidMemory_[0] = 3;
    vad1_ = VSP_GSMAMR_VAD1_STATE_INIT;
    vad2_ = VSP_GSMAMR_VAD2_STATE_INIT;
    vspsHighPassFilterInit_GSMAMR_16s(0, highPass_);
    vspsDTXInit_GSMAMR_16s(dtx_);
}

Vsp32s Encoder::detect(Vsp32s mode, Detector detector, Vsp32s& computeSid) {
    if (detector == Detector::none) return mode;
    Vsp16s speech = 0;
    if (detector == Detector::option1)
        vspsVAD1_GSMAMR_16s(speech_ + kSamples - 40, &vad1_, &speech, detectorPitch_[1], detectorPitch_[0]);
    else
        vspsVAD2_GSMAMR_16s(speech_ + kSamples, &vad2_, &speech, detectorPitch_[4]);
    Vsp32s used = mode;
    vspsDTXHandler_GSMAMR_16s(speech, &used, &computeSid, dtx_);
    return used;
}

// The filters of the subframes, and the indices of the LSPs unless the frame is silence.
void Encoder::analyse(Vsp32s mode, Vsp32s used, Filters& filters, Vsp16s* lspIndex) {
    const auto lpc = [&](const Vsp16s* window, Vsp32s number, int subframe) {
        Vsp32s autocorr[kOrder + 1], norm;
        Vsp16s reflection[4];
        vspsAutoCorr_GSMAMR_16s32s(window, number, autocorr, &norm);
        vspsLagWindow_G729_32s_I(autocorr + 1, kOrder);
        vspsLevinsonDurbin_GSMAMR_32s16s(autocorr, levinson_, filters.lpc[subframe], reflection);
    };
    Vsp16s lsp[2 * kOrder], subframeLsp[4 * kOrder];  // middle, end
    Vsp16s *const middle = lsp, *const end = lsp + kOrder;
    const bool twice = mode == kMode122;
    if (twice) {
        lpc(speech_ + 40, 1, 1);
        lpc(speech_ + 40, 2, 3);
        vspsLPCToLSP_GSMAMR_16s(filters.lpc[1], lsp_, middle);
        vspsLPCToLSP_GSMAMR_16s(filters.lpc[3], middle, end);
    } else {
        lpc(speech_ + 80, 0, 3);
        vspsLPCToLSP_GSMAMR_16s(filters.lpc[3], lsp_, end);
    }
    vspsInterpolateLSP_GSMAMR_16s(lsp_, middle, end, mode, subframeLsp);
    for (int s = 0; s < 3; s += twice ? 2 : 1) vspsLSPToLPC_GSMAMR_16s(subframeLsp + kOrder * s, filters.lpc[s]);

    if (used != kModeSid) {
        Vsp16s quantised[2 * kOrder];
        const Vsp16s* const quantisedEnd = twice ? quantised + kOrder : quantised;
        vspsLSPQuant_GSMAMR_16s(twice ? lsp : end, mode, lspResidual_, quantised, lspIndex);
        vspsInterpolateLSP_GSMAMR_16s(quantisedLsp_, quantised, quantisedEnd, mode, subframeLsp);
        for (int s = 0; s < 4; s++) vspsLSPToLPC_GSMAMR_16s(subframeLsp + kOrder * s, filters.quantised[s]);
        copy(quantisedEnd, kOrder, quantisedLsp_);
    }
    copy(end, kOrder, lsp_);
    vspsDTXBuffer_GSMAMR_16s(lsp_, speech_ + kSamples, dtx_);
}

void Encoder::findOpenLoopLags(Vsp32s mode, Detector detector, const Filters& filters, Vsp16s* lags) {
    vspsWeightedSpeech_GSMAMR_16s(coded(), filters.lpc[0], mode, memWeighted_, weighted_ + 143);
    vspsOpenLoopPitchSearch_GSMAMR_16s(weighted_ + 143, mode, Vsp32s(detector), openLoop_, detectorPitch_,
                                       &vad1_.pitchFlags, lags);
}

void Encoder::setTarget(Subframe& s, const Filters& filters, Vsp32s mode, int number, const Vsp16s* memW0) {
    vspsPitchTarget_GSMAMR_16s(coded() + kSubframe * number, filters.lpc[number], filters.quantised[number], memErr_, memW0,
                               mode, s.impulse, s.target, s.residual);
    copy(s.residual, kSubframe, excitation(number));
}

void Encoder::setVector(Subframe& s, Vsp32s mode, int number) {
    vspsDecodeAdaptiveVector_GSMAMR_16s_I(s.delay, mode, excitation(number));
    vspsConvPartial_16s_Sfs(excitation(number), s.impulse, s.y1, kSubframe, 12);
}

// All parameters of a subframe.
void Encoder::search(Subframe& s, const Filters& filters, Vsp32s mode, int number, const Vsp16s* memW0, Vsp16s*& index) {
    setTarget(s, filters, mode, number, memW0);
    Vsp16s* const exc = excitation(number);
    vspsAdaptiveCodebookSearch_GSMAMR_16s(s.target, s.impulse, exc, mode, number, s.openLag, &prevLag_, s.delay, index++);
    setVector(s, mode, number);

    Vsp16s coeff[4], limit;
    vspsAdaptiveCodebookGain_GSMAMR_16s(s.target, s.y1, mode, s.gain, coeff);
    vspsPitchGainLimit_GSMAMR_16s(pitchGains_, mode, resonant_, s.gain, &limit);
    if (mode == kMode122) vspsPitchGainQuant_GSMAMR_16s(limit, s.gain, index++);
    vspsAdaptiveCodebookContribution_GSMAMR_16s(s.gain[0], s.y1, s.target, s.target2);
    vspsAdaptiveCodebookContribution_GSMAMR_16s(s.gain[0], exc, s.residual, s.residual2);
    if (number == 0 && openLoop_[5] > 0) openLoop_[1] = s.delay[0];
    if (number == 3 && openLoop_[6] > 0) openLoop_[0] = s.delay[0];

    vspsAlgebraicCodebookSearch_GSMAMR_16s(s.target2, s.residual2, s.impulse, mode, number, s.delay[0],
                                           mode == kMode122 ? s.gain[0] : sharp_, s.code, s.y2, index);
    index += pulseCount(mode);
    const bool pairs = mode == kMode475;
    if (!pairs || number % 2 == 0) s.gainIndex = index++;
    if (mode == kMode795) index++;
    vspsGainQuant_GSMAMR_16s(s.residual, exc, s.code, s.target, s.target2, s.y1, s.y2, coeff, mode, number, limit,
                             predictor_, gainMemory_, s.gain, s.gainBefore, s.gainIndex);
    push(pitchGains_, 7, Vsp16s(s.gain[0] >> 3));
}

// Excitation, synthesis and what it leaves.
void Encoder::finish(const Subframe& s, const Filters& filters, Vsp32s mode, int number, Vsp16s* memSyn, Vsp16s* memW0) {
    const bool high = mode == kMode122;
    Vsp16s *const exc = excitation(number), synthesis[kSubframe];
    sharp_ = sharpeningOf(s.gain[0]);
    vspsInterpolateC_NR_G729_16s_Sfs(exc, high ? Vsp16s(s.gain[0] >> 1) : s.gain[0], s.code, s.gain[1], exc, kSubframe,
                                     high ? 13 : 14);
    vspsSynthesisFilter_NR_16s_Sfs(filters.quantised[number], exc, synthesis, kSubframe, 12, memSyn);
    copy(synthesis + kSubframe - kOrder, kOrder, memSyn);
    vspsWeightedErrorUpdate_GSMAMR_16s(coded() + kSubframe * number, synthesis, s.target, s.y1, s.y2, s.gain, mode, memErr_,
                                       memW0);
}

// The gains of an even subframe are known with those of the odd one after it, which is searched as if they were not
// quantised. Then both are done again.
void Encoder::encodePair475(const Filters& filters, const Vsp16s* lags, int even, Vsp16s*& index) {
    Vsp16s memSyn[kOrder], memW0[kOrder], memErr[kOrder];
    copy(memSyn_, kOrder, memSyn);
    copy(memW0_, kOrder, memW0);
    copy(memErr_, kOrder, memErr);
    const Vsp16s sharp = sharp_;
    Subframe first, second;
    first.openLag = second.openLag = lags[even / 2];
    search(first, filters, kMode475, even, memW0, index);
    finish(first, filters, kMode475, even, memSyn, memW0);
    sharp_ = sharp;
    second.gainIndex = first.gainIndex;
    search(second, filters, kMode475, even + 1, memW0, index);

    copy(memErr, kOrder, memErr_);
    copy(second.gainBefore, 2, first.gain);
    setVector(first, kMode475, even);
    finish(first, filters, kMode475, even, memSyn_, memW0_);
    setTarget(second, filters, kMode475, even + 1, memW0_);
    setVector(second, kMode475, even + 1);
    finish(second, filters, kMode475, even + 1, memSyn_, memW0_);
}

Vsp32s Encoder::encode(const Vsp16s* samples, Vsp32s mode, Detector detector, Parameters& parameters, SentType& type) {
    constexpr int k13Bits = ~7;
    for (int i = 0; i < kSamples; i++) speech_[kSamples + i] = Vsp16s(samples[i] & k13Bits);
    vspsHighPassFilter_GSMAMR_16s_I(speech_ + kSamples, kSamples, highPass_);

    Vsp32s computeSid = 0;
    const Vsp32s used = detect(mode, detector, computeSid);
    Filters filters;
    analyse(mode, used, filters, parameters.values);
    if (used == kModeSid) {
        vspsDTXEncode_GSMAMR_16s(computeSid, predictor_, parameters.values, dtx_);
        clear(excitation_, 154 + kSamples);
        clear(memW0_, kOrder);
        clear(memErr_, kOrder);
        clear(lspResidual_, kOrder);
        prevLag_ = sharp_ = 0;
        copy(lsp_, kOrder, quantisedLsp_);
    } else {
        vspsResonanceDetect_GSMAMR_16s(lsp_, &resonances_, &resonant_);
    }
    Vsp16s lags[2];
    findOpenLoopLags(mode, detector, filters, lags);
    if (used != kModeSid) {
        Vsp16s* index = parameters.values + lspCount(mode);
        for (int n = 0; n < 4; n++) {
            if (mode == kMode475) {
                encodePair475(filters, lags, n++, index);
                continue;
            }
            Subframe s;
            s.openLag = lags[n / 2];
            search(s, filters, mode, n, memW0_, index);
            finish(s, filters, mode, n, memSyn_, memW0_);
        }
    }
    copy(speech_ + kSamples, kSamples, speech_);
    copy(weighted_ + kSamples, 143, weighted_);
    copy(excitation_ + kSamples, 154, excitation_);
    Vsp32s sent;
    vspsSIDSync_GSMAMR_16s(used, sidMemory_, &sent);
    type = SentType(sent);
    return used;
}

}  // namespace vspv::amr
