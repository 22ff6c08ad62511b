// The library's detector of an answer tone's phase reversals.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "vspsc.h"

// It begins anew after 50 ms of constant samples: with nothing to hear the library's detector does not forget a tone.
class ReversalDetector {
  public:
    // In floating or in fixed point; the rate is 8000 or 16000 Hz.
    ReversalDetector(int rate, bool fixedPoint);

    // Takes a millisecond, or less at the end; true if there was a reversal.
    bool detect(std::span<const std::int16_t> block);

  private:
    void begin();

    int rate_;
    bool fixedPoint_;
    std::vector<Vsp64f> state_;
    std::size_t constant_ = 0;  // ms
};
