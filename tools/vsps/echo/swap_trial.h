// Whether the ends of a call have been mistaken for each other.
//
// The far end comes first, so that its echo in the near end is soon learned. The other way round there is something to
// learn too, if the echo comes without delay and nobody talks over it, but it takes far longer.
#pragma once

#include <optional>
#include <span>

#include "echo/convergence.h"

class SwapTrial {
  public:
    explicit SwapTrial(VspvEchoSettings settings);

    // The same ends as the canceller gets, and what it has achieved with them so far.
    void process(std::span<const std::int16_t> far, std::span<const std::int16_t> near, const Convergence& asGiven);

    bool seemSwapped(const Convergence& asGiven) const;

    static constexpr double kLearned = 12;  // dB of what is removed, with which an echo is one

  private:
    std::optional<TracedCanceller> canceller_;  // as long as it is not certain
    Convergence swapped_{kLearned};
};
