// Concealment of lost frames at 8 kHz by repeating the last pitch period, ever more quietly, after the example of G.711
// Appendix I but without its delay.
#pragma once

#include "vspsc/types.h"

namespace vspv {

class PeriodRepeater {
  public:
    static constexpr Vsp32s kMaxFrame = 160;

    void reset();

    // Makes a frame in place of a lost one.
    void conceal(Vsp16s* frame, Vsp32s length);

    // Takes a decoded frame. Behind a lost one its first 2 ms are cross-faded with what the repetition goes on with.
    void decoded(Vsp16s* frame, Vsp32s length);

  private:
    static constexpr Vsp32s kLongestPeriod = 160, kHistory = 2 * kLongestPeriod;

    void findPeriod();
    void repeat(Vsp16s* signal, Vsp32s length) const;
    Vsp16s heard(Vsp16s repeated, Vsp32s age) const;
    void keep(const Vsp16s* samples, Vsp32s length);

    Vsp16s history_[kHistory];  // the latest samples; those of lost frames at full level
    Vsp32s period_;
    Vsp32f level_;      // of the repetition, the lower the less alike the last periods were
    Vsp32s seam_;       // from the last sample of the repeated period to the last sample that was heard
    Vsp32s concealed_;  // samples since the last decoded one
};

}  // namespace vspv
