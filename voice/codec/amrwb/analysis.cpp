#include "codec/amrwb/analysis.h"

#include "samples.h"

namespace vspv::amrwb {

const Vsp16s kIspReset[16] = {32138, 30274,  27246,  23170,  18205,  12540,  6393,   0,
                              -6393, -12540, -18205, -23170, -27246, -30274, -32138, 1475};
static constexpr Vsp16s kWeight = 30147;  // Q15: 0.92

bool Analysis::clearLowBits(const Vsp16s* frame, Vsp16s* samples) {
    Vsp16s differences = 0;
    for (Vsp32s i = 0; i < kFrame; i++) {
        differences = Vsp16s(differences | (frame[i] ^ 8));
        samples[i] = Vsp16s(frame[i] & ~3);
    }
    return differences == 0;
}

void Analysis::reset() {
    *this = {};
    exponent_ = 15;
    scales_[0] = scales_[1] = 15;
    copy(kIspReset, isp_, 16);
    for (Vsp32s i = 0; i < 6; i++) openLoopTrack_[i] = 40;
    input_.reset(HighPass::k50Hz);
    weightedHighPass_.reset(HighPass::kWeightedSpeech);
    vspsVADInit_AMRWB_16s(detector_);
}

// The window's last samples are what the filters give without further input.
void Analysis::take(const Vsp16s* samples, Result& result) {
    static constexpr Vsp16s kNothing[15] = {};
    Vsp16s *fresh = speech_ + kNew, resting[30], exponent = 0;
    vspsDownsample_AMRWB_16s(samples, kFrame, downsampling_, fresh);
    copy(downsampling_, resting, 30);
    vspsDownsample_AMRWB_16s(kNothing, 15, resting, fresh + kCore);
    input_.filter(fresh, kCore);
    HighPass input = input_;
    input.filter(fresh + kCore, kLookAhead);

    vspsPreemphasizeScale_AMRWB_16s(fresh, kCore + kLookAhead, kTilt, preemphasis_, scales_, &exponent);
    const Vsp16s last = fresh[kCore - 1];
    vspsPreemphasize_AMRWB_16s_ISfs(kTilt, fresh, kCore + kLookAhead, 1 - exponent, &preemphasis_);
    preemphasis_ = last;
    result.exponent = exponent;
    result.change = exponent - exponent_;
    exponent_ = exponent;
    scale(speech_, result.change, kNew);
    scale(decimation_, result.change, 3);
    scale(&deemphasis_, result.change, 1);
}

bool Analysis::isSpeech(const Result& result) {
    Vsp16s scaled[kCore], flag = 0;
    scale(speech_ + kNew, 1 - result.exponent, scaled, kCore);
    vspsVAD_AMRWB_16s(scaled, &flag, detector_);
    return flag != 0;
}

void Analysis::predict(Result& result) {
    Vsp32s autocorr[17];
    Vsp16s lpc[17], isp[16];
    vspsAutoCorr_AMRWB_16s32s(speech_, autocorr);
    vspsLagWindow_AMRWB_32s_I(autocorr + 1, 16);
    vspsLevinsonDurbin_AMRWB_32s16s(autocorr, recursion_, lpc);
    vspsLPCToISP_AMRWB_16s(lpc, isp_, isp);
    vspsInterpolateISP_AMRWB_16s(isp_, isp, result.plain);
    copy(isp, isp_, 16);
    vspsISPToISF_AMRWB_16s(isp, result.isf);
}

void Analysis::search(bool once, Result& result) {
    weigh(result);
    const Vsp32s length = once ? 128 : 64;
    for (Vsp32s i = 0; i < (once ? 1 : 2); i++) {
        Vsp16s lag = 0, gain = 0;
        vspsOpenLoopPitchSearch_AMRWB_16s(weighted_ + kPast + length * i, length, openLoopTrack_[5], openLoopTrack_[7],
                                          openLoopPast_, &lag, &gain, weightedHighPass_.state());
        vspsOpenLoopPitchTrack_AMRWB_16s(lag, gain, openLoopTrack_);
        vspsVADTone_AMRWB_16s(gain, detector_);
        result.lags[i] = Vsp16s(2 * lag);
    }
}

// The weighted speech, at half the rate.
void Analysis::weigh(Result& result) {
    Vsp16s full[kCore];
    Vsp32s shift = 0;
    for (Vsp32s k = 0; k < 4; k++) {
        Vsp16s* weighted = result.weighted + 17 * k;
        vspsMulPowerC_NR_16s_Sfs(result.plain + 17 * k, kWeight, weighted, 17, 15);
        vspsResidualFilter_AMRWB_16s_Sfs(weighted, speech(k), full + kSubframe * k, kSubframe, 11);
    }
    vspsDeemphasize_AMRWB_16s_ISfs(kTilt, full, kCore, 1, &deemphasis_);
    vspsOpenLoopScale_AMRWB_16s(full, kCore, &largestWeighted_, &shift);
    vspsLowPassDecimate_AMRWB_16s(full, kCore, decimation_, weighted_ + kPast);
    scale(weighted_ + kPast, shift, kCore / 2);
    const Vsp32s change = result.change + shift - weightedShift_;
    result.weightedShift = weightedShift_ = shift;
    if (change == 0) return;
    scale(weighted_, change, kPast);
    scale(openLoopPast_, change, kPast);
    vspsHighPassFilterScale_AMRWB_16s(change, weightedHighPass_.state());
}

void Analysis::finish() {
    moveDown(speech_, kWindow - kCore, kCore);
    moveDown(weighted_, kPast, kCore / 2);
}

}  // namespace vspv::amrwb
