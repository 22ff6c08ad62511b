// When a canceller has learned the echo.
#pragma once

#include <deque>
#include <optional>

#include "echo/traced_canceller.h"

class Convergence {
  public:
    // Learned is an echo of which so much is removed, dB.
    explicit Convergence(double goal) : goal_(goal) {}

    void watch(const EchoFrame& frame);

    double speechSeconds() const { return speechFrames_ * kEchoFrameSeconds; }  // of the far end so far
    // s of far-end speech until the goal is reached for the first time.
    const std::optional<double>& seconds() const { return seconds_; }

  private:
    struct Powers {
        double near, left;
    };

    double goal_, speechFrames_ = 0;
    std::deque<Powers> last_;  // frames with echo alone
    std::optional<double> seconds_;
};
