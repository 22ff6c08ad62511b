// Encoder of the main body and of Annexes B, D, E and I.
#pragma once

#include "codec/g729/backward_analysis.h"
#include "codec/g729/silence_coder.h"
#include "codec/g729/variant.h"

namespace vspv::g729 {

class Encoder {
  public:
    void reset(const Variant& variant);
    void setSilence(bool on);
    // Type and number of octets of the frame are set.
    void encode(const Variant& variant, Rate rate, const Vsp16s* samples, Vsp8u* bytes, VspvFrame& told);

  private:
    // What the filters of a frame are, for each of the two subframes.
    struct Filters {
        Vsp16s unquantised[22], quantised[22], backward[62], gamma1[2], gamma2[2];
        Vsp16s mode;  // 1: backward
        bool dominant, longMemories;

        LpFilter synthesisOf(Vsp32s i) const;
        LpFilter weightingOf(Vsp32s i) const;
    };

    Vsp16s detect(const Variant& variant, Rate rate, const Vsp16s* lsp);
    void findFilters(const Variant& variant, Rate rate, bool active, const Vsp16s* lsp, Frame& frame, Filters& filters);
    void weightSpeech(const Filters& filters);
    void encodeSubframe(const Filters& filters, Vsp32s i, Vsp16s openLoopLag, Frame& frame);
    void encodeNoise(const Variant& variant, const Filters& filters, Vsp8u* bytes, VspvFrame& told);
    void noteOpenLoopLag(Vsp16s lag);
    void noteGain(Vsp16s gain);

    LpAnalysis analysis_;
    SilenceCoder silence_;
    Vsp32s withSilence_;
    Vsp16s lsp_[10], quantisedLsp_[10], lsfHistory_[40], weightingMemory_[3];
    Vsp16s weighted_[143 + 80], excitation_[154 + 80];
    Vsp16s synthesisMemory_[kMaxOrder], weightedMemory_[kMaxOrder], errorMemory_[kMaxOrder], targetMemory_[kMaxOrder];
    Vsp16s sharpening_, searchAllowance_, firstLag_, pastEnergy_[4];
    Vsp32s excitationError_[4];

    // Annexes E and I
    BackwardAnalysis backward_;
    Vsp16s synthesised_[80], previousFilter_[kMaxOrder + 1], modeMemory_[7], previousMode_;
    Vsp16s lags_[5], gains_[5];
    MusicState music_;
};

}  // namespace vspv::g729
