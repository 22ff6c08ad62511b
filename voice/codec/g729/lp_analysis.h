// Pre-processing and LP analysis of an encoder (G.729 3.1, 3.2), with what Annex B takes from them.
#pragma once

#include "codec/g729/lp_filter.h"

namespace vspv::g729 {

class LpAnalysis {
  public:
    void reset();

    // Takes the next 80 samples, which are the last ones of the window. The two highest lags are for the detector of Annex
    // B.
    void analyse(const Vsp16s* samples, bool forDetector);

    // The first of the 80 samples of the current frame; there are 120 before it and 40 behind those of the frame.
    const Vsp16s* speech() const { return speech_ + 120; }
    const Vsp16s* window() const { return speech_; }

    Vsp32s autocorr[13];  // as computed
    Vsp32s windowed[13];  // times the lag window
    Vsp16s exponent;      // of both
    Vsp16s lpc[11], reflection[10];
    Vsp16s memory[13];  // of the recursion, which the noise coder shares

  private:
    Vsp16s speech_[240];
    HighPassState filter_;
};

}  // namespace vspv::g729
