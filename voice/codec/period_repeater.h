// Concealment of lost frames at 8 kHz by repeating the last pitch period, ever more quietly.
#pragma once

#include "vspsc/types.h"

namespace vspv {

class PeriodRepeater {
  public:
    static constexpr Vsp32s kMaxFrame = 160;

    void reset();

    // Makes a frame in place of a lost one.
    void conceal(Vsp16s* frame, Vsp32s length);

    // Takes a decoded frame. Behind a lost one its first 5 ms are cross-faded with what the repetition goes on with.
    void decoded(Vsp16s* frame, Vsp32s length);

  private:
    static constexpr Vsp32s kLongestPeriod = 143, kHistory = 2 * kLongestPeriod;

    void findPeriod();
    void repeat(Vsp16s* signal, Vsp32s length) const;
    void keep(const Vsp16s* samples, Vsp32s length);

    Vsp16s history_[kHistory];  // the latest samples; those of lost frames at full level
    Vsp32s period_;
    Vsp32s concealed_;  // samples since the last decoded one
};

}  // namespace vspv
