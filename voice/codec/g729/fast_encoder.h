// Encoder of Annex A, with Annex B.
#pragma once

#include "codec/g729/silence_coder.h"
#include "codec/g729/variant.h"

namespace vspv::g729 {

class FastEncoder {
  public:
    void reset();
    void setSilence(bool on);
    void encode(const Vsp16s* samples, Vsp8u* bytes, VspvFrame& told);

  private:
    // 1 / A(z / 0.75) of the quantised filter weights everything in Annex A.
    struct Weighting {
        Vsp16s lpc[22];

        explicit Weighting(const Vsp16s* quantised);
        LpFilter of(Vsp32s subframe) const { return {lpc + 11 * subframe, 10}; }
    };

    void weightSpeech(const Weighting& weighting, const Vsp16s* lpResidual, Vsp16s* responses);
    void encodeSubframe(const LpFilter& weighting, const Vsp16s* impulse, Vsp32s i, Vsp16s openLoopLag, Frame& frame);
    void encodeNoise(Vsp8u* bytes, VspvFrame& told);

    LpAnalysis analysis_;
    SilenceCoder silence_;
    Vsp32s withSilence_;
    Vsp16s lsp_[10], quantisedLsp_[10], lsfHistory_[40];
    Vsp16s weighted_[143 + 80], excitation_[154 + 80];
    Vsp16s weightedMemory_[kMaxOrder], targetMemory_[kMaxOrder];
    Vsp16s sharpening_, firstLag_, pastEnergy_[4];
    Vsp32s excitationError_[4];
};

}  // namespace vspv::g729
