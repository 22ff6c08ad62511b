// What a G.729 encoder computes of the speech before its pitch searches, without the quantisation.
#pragma once

#include "vspsc/types.h"

namespace vspv {

constexpr Vsp32s kPitchFrame = 80, kPitchSubframe = 40, kPitchLookAhead = 40;
constexpr Vsp32s kOrder = 10;

using LpcFilter = Vsp16s[kOrder + 1];  // Q12

struct SubframeSignals {
    Vsp16s residual[kPitchSubframe];  // of the linear prediction
    Vsp16s impulse[kPitchSubframe];   // response of the weighted synthesis filter W(z)/A(z), Q12
    Vsp16s target[kPitchSubframe];    // the residual filtered by W(z)/A(z)
    LpcFilter poles;                  // A(z) with the weighting of the denominator
};

struct FrameSignals {
    Vsp16s weighted[kPitchFrame];  // speech for the open-loop search
    SubframeSignals subframes[2];
};

// Runs over a signal, frame by frame: high-pass filter, which halves the signal (G.729 3.1), linear prediction with 5 ms of
// look-ahead, interpolated between frames by line spectral pairs (3.2), perceptual weighting (3.3), impulse response and
// target (3.5, 3.6). As nothing is quantised, the synthesis so far equals the speech, so that the filters which make the
// target begin each subframe at rest. Annex A: fixed weighting, low-pass filtered speech for the open loop.
class SpeechAnalysis {
  public:
    static Vsp32s stateBytes();

    // The state of the high-pass filter is memory of the caller.
    SpeechAnalysis(bool annexA, void* highPass);

    // Takes the next samples.
    void read(const Vsp16s* samples, Vsp32s count, void* highPass);
    // What there is to know of the frame kPitchLookAhead samples ago; to be called once for each.
    void analyse(FrameSignals& frame);

  private:
    static constexpr Vsp32s kWindow = 240;

    struct Weighting {  // W(z) = A(z/gamma1) / A(z/gamma2), Q15
        Vsp16s gamma1[2], gamma2[2];
    };

    Weighting predict(LpcFilter (&lpc)[2]);
    void weigh(const Vsp16s* speech, const LpcFilter& zeros, const LpcFilter& poles, Vsp16s* weighted);

    bool annexA_;
    Vsp16s speech_[kWindow] = {};
    Vsp16s lsp_[kOrder] = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};  // of the last frame
    Vsp16s levinsonMem_[kOrder + 3] = {4096};
    Vsp16s factorsMem_[3] = {0, 0, 1};
    Vsp16s weightedMem_[kOrder] = {};  // the last samples of the weighted speech
};

}  // namespace vspv
