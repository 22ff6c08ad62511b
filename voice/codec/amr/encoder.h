#pragma once

#include "codec/amr/frame.h"
#include "vspsc/gsmamr/vad.h"

namespace vspv::amr {

// Codes frames of 160 samples, which it takes 40 samples ahead (5 ms) below 12.2 kbit/s and for the detector.
class Encoder {
  public:
    void reset();

    // Codes a frame with the bit rate of `mode`, or as silence where the detector finds none of speech. Returns the mode of
    // the parameters: `mode`, or kModeSid.
    Vsp32s encode(const Vsp16s* samples, Vsp32s mode, Detector detector, Parameters& parameters, SentType& type);

  private:
    struct Filters;
    struct Subframe;

    Vsp32s detect(Vsp32s mode, Detector detector, Vsp32s& computeSid);
    void analyse(Vsp32s mode, Vsp32s used, Filters& filters, Vsp16s* lspIndex);
    void findOpenLoopLags(Vsp32s mode, Detector detector, const Filters& filters, Vsp16s* lags);
    void search(Subframe& s, const Filters& filters, Vsp32s mode, int number, const Vsp16s* memW0, Vsp16s*& index);
    void finish(const Subframe& s, const Filters& filters, Vsp32s mode, int number, Vsp16s* memSyn, Vsp16s* memW0);
    void encodePair475(const Filters& filters, const Vsp16s* lags, int even, Vsp16s*& index);
    void setTarget(Subframe& s, const Filters& filters, Vsp32s mode, int number, const Vsp16s* memW0);
    void setVector(Subframe& s, Vsp32s mode, int number);

    const Vsp16s* coded() const { return speech_ + 120; }
    Vsp16s* excitation(int number) { return excitation_ + 154 + kSubframe * number; }

    Vsp16s speech_[2 * kSamples], weighted_[143 + kSamples], excitation_[154 + kSamples];
    Vsp16s levinson_[kOrder + 1], lsp_[kOrder], quantisedLsp_[kOrder], lspResidual_[kOrder];
    Vsp16s openLoop_[10], detectorPitch_[5];
    Vsp16s memWeighted_[kOrder], memSyn_[kOrder], memW0_[kOrder], memErr_[kOrder];
    Vsp16s sharp_, prevLag_, resonances_, pitchGains_[7], predictor_[8], gainMemory_[30], sidMemory_[2];
    Vsp32s resonant_;
    VspGSMAMRVad1State vad1_;
    VspGSMAMRVad2State vad2_;
    alignas(8) unsigned char highPass_[16], dtx_[192];
};

}  // namespace vspv::amr
