#pragma once

#include "codec/g728/adaptation.h"

namespace vspv::g728 {

class Encoder {
  public:
    void reset();
    void encode(const Vsp16s* samples, Vsp16s* indices);  // of a frame's four vectors

  private:
    Vsp16s encodeVector(const Vsp16s* samples, Vector& coded);
    void adaptWeighting();
    void respond();

    SynthesisFilter synthesis_;
    GainPredictor gain_;
    Vsp16s zero_[kOrder], pole_[kOrder];        // of the weighting filter
    Vsp16s response_[kVector], energies_[128];  // of both filters, and of the shapes behind them
    Vsp16s recent_[kFrame];                     // the last samples of the input, Q2
    LibraryState<64> weighting_;
    LibraryState<208> combined_;
    LibraryState<192> window_;
};

}  // namespace vspv::g728
