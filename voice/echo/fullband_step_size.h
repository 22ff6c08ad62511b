// Step size of the full-band filter: the rule of the sub-band filters (step_size.h) with one uncertainty for all taps.
#pragma once

#include "echo/near_speech.h"

namespace vspv {

class FullbandStepSize {
  public:
    FullbandStepSize(int taps, double blockRate);

    // Of a block filtered with the taps as they are: powers per sample, and the sum of squares of the reference over the
    // filter. Returns the normalised step, 0 to 1, for the block.
    struct Block {
        double farEnergy, farPower, errorPower, estimatePower, correlation;
        int samples;
        bool cancelling;  // the filter has been seen to remove echo
    };
    double update(const Block& block, double tapEnergy);

    void reset();
    // Nothing is known of a share of the taps any more.
    void forget(double share);
    bool nearSpeech() const { return nearSpeech_.heard(); }

  private:
    double leakage(const Block& block);

    int taps_;
    double blockRate_, uncertainty_ = 0;  // the uncertainty is the sum over the taps
    double noise_ = 0;
    double cross_ = 0, estimate_ = 0, chance_ = 0;
    NearSpeech nearSpeech_;
};

}  // namespace vspv
