// The echo return loss enhancement of late: how much less power the output has than the near end.
#pragma once

#include <cmath>

namespace vspv {

class Enhancement {
  public:
    explicit Enhancement(double blockRate) : share_(static_cast<float>(1 - std::exp(-1 / (kTime * blockRate)))) {}

    // The power of a block of both, in time with each other.
    void update(float near, float out) {
        near_ += share_ * (near - near_);
        out_ += share_ * (out - out_);
    }

    double decibels() const { return 10 * std::log10((double(near_) + kNothing) / (double(out_) + kNothing)); }

  private:
    static constexpr double kTime = 0.5;      // s
    static constexpr double kNothing = 0.01;  // power of a sample

    float share_, near_ = 0, out_ = 0;
};

}  // namespace vspv
