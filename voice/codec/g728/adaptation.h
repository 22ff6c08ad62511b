// Backward adaptation: what both sides derive from the coded signal (G.728 3.7 to 3.9, with Annex G).
#pragma once

#include "codec/library_state.h"
#include "vspsc/g728.h"

namespace vspv::g728 {

constexpr Vsp32s kVector = 5, kCycle = 4, kFrame = kVector * kCycle, kFrameBytes = 5, kOrder = 10, kSynthesisOrder = 50;

// One vector in block floating point.
struct Vector {
    Vsp16s x[kVector];
    Vsp16s scale;
};

// The prediction of the gain of the next vector.
class GainPredictor {
  public:
    void reset();
    // The logarithmic gain, and the gain as mantissa and scale.
    Vsp16s predict(Vsp32s most, Vsp16s* gain) const;
    void append(Vsp16s logGain);
    // Once a cycle, to the last four gains; during a loss the window alone goes on.
    void adapt(bool lost = false);

  private:
    Vsp16s filter_[kOrder], gains_[kOrder];  // the oldest first
    LibraryState<128> window_;
};

// The synthesis filter of order 50, in the three steps into which the standard spreads it.
class SynthesisFilter {
  public:
    void reset();
    void analyse(const Vector* cycle);  // to order 10
    void complete();                    // to order 50
    void use();                         // from now on
    void attenuate(bool latest);        // during a loss: this filter, or the latest one that was analysed

    const Vsp16s* lpc() const { return filter_; }
    // Of order 10, behind analyse() only.
    bool stable() const { return stable_; }
    const Vsp16s* predictor() const { return recursion_; }
    Vsp16s predictorScale() const { return scale_; }
    Vsp16s reflection() const { return reflection_; }

  private:
    Vsp16s filter_[kSynthesisOrder], next_[kSynthesisOrder], recursion_[kSynthesisOrder];
    Vsp16s correlation_[kSynthesisOrder + 1], energy_, scale_, reflection_;
    bool stable_;  // whether the analysis has succeeded so far
    LibraryState<384> window_;
};

}  // namespace vspv::g728
