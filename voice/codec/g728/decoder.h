#pragma once

#include "codec/g728/adaptation.h"

namespace vspv::g728 {

// The last samples, which move to the front when there is no room behind them.
class History {
  public:
    static constexpr Vsp32s kLength = 240;
    void append(const Vsp16s* vector);
    const Vsp16s* samples() const { return x_ + start_; }  // the newest last

  private:
    Vsp16s x_[2 * kLength];
    Vsp32s start_;
};

class Decoder {
  public:
    void reset();
    void setPostFilter(bool on);
    void decode(const Vsp16s* indices, Vsp16s* samples);  // a frame's four vectors; null for a lost frame

  private:
    void beginFrame(bool lost);
    Vsp16s excite(const Vsp16s* index, Vector& excitation);
    void output(const Vector& speech, bool withPitch, Vsp16s* samples);
    void adaptPostFilter();

    SynthesisFilter synthesis_;
    GainPredictor gain_;
    Vsp16s lastGain_;
    Vsp32s lostFrames_;      // since the last one that has arrived
    Vsp32s recoveryFrames_;  // how long the gain may only rise slowly
    bool postFiltered_;

    Vsp16s zero_[kOrder], pole_[kOrder], tilt_, inverse_[kOrder];  // of the short-term post-filter
    Vsp16s pitch_, tap_, longTerm_[2];                             // of the long-term post-filter
    History residual_, past_;                                      // Q1 and Q0
    LibraryState<144> synthesisState_;
    LibraryState<176> adapter_;
    LibraryState<64> postFilter_;
    LibraryState<384> concealment_;
};

}  // namespace vspv::g728
