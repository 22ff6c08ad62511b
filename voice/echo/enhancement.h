// The echo return loss enhancement of late: how much less power the output has than the near end.
#pragma once

#include <cmath>
#include <span>

#include "echo/samples.h"

namespace vspv {

class Enhancement {
  public:
    explicit Enhancement(double blockRate) : share_(static_cast<float>(1 - std::exp(-1 / (kTime * blockRate)))) {}

    // A block of both, in time with each other.
    template <class Sample>
    void update(std::span<const Sample> near, std::span<const Sample> out) {
        near_ += share_ * (meanSquare(near) - near_);
        out_ += share_ * (meanSquare(out) - out_);
    }

    double decibels() const { return 10 * std::log10((double(near_) + kNothing) / (double(out_) + kNothing)); }

  private:
    static constexpr double kTime = 0.5;      // s
    static constexpr double kNothing = 0.01;  // power of a sample

    float share_, near_ = 0, out_ = 0;
};

}  // namespace vspv
