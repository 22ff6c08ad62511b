// The encoder's side of Annex B: is there speech, and if not, what noise does the decoder make of it.
#pragma once

#include "codec/codec.h"
#include "codec/g729/lp_analysis.h"

namespace vspv::g729 {

// What the noise coder changes in an encoder.
struct NoiseTarget {
    Vsp16s* excitation;  // the first of the frame's 80 samples; 154 before it
    Vsp16s* quantisedLsp;
    Vsp16s* lsfHistory;
    Vsp32s* excitationError;
    Vsp16s* lpc;  // out: filters of both subframes
};

class SilenceCoder {
  public:
    void reset();

    // The detector's decision of a frame, 1 for speech.
    Vsp16s detect(const LpAnalysis& analysis, const Vsp16s* lsp);
    // The decision was changed.
    void correct(Vsp16s active);
    // Every frame, with the decision in force.
    void update(const LpAnalysis& analysis, Vsp16s active);
    // An inactive frame: a silence descriptor or no data, which is told. The root search is that of Annex A or not.
    void encode(LpAnalysis& analysis, bool fast, const NoiseTarget& target, Vsp8u* bytes, VspvFrame& told);
    void frameDone(Vsp16s active);

    bool wasActive() const { return previous_ != 0; }

  private:
    VadState vad_;
    NoiseCoderState noise_;
    Vsp16s previous_, seed_;
};

}  // namespace vspv::g729
