// How much of the near end a canceller removes, and whether that is an echo.
#pragma once

#include <cmath>

namespace vspv {

class EchoPresence {
  public:
    explicit EchoPresence(double blockRate)
        : share_(static_cast<float>(1 - std::exp(-1 / (kTime * blockRate)))),
          lasting_(static_cast<int>(kTime * blockRate)) {}

    // Powers of a block of the near end and of what the canceller leaves of it.
    void update(float near, float left) {
        near_ += share_ * (near - near_);
        left_ += share_ * (left - left_);
        removed_ = left_ < kRemoved * near_ ? removed_ + 1 : 0;
        found_ |= removed_ > lasting_;
    }

    float leftShare() const { return near_ > 0 ? left_ / near_ : 1; }
    // At any time so far.
    bool found() const { return found_; }

  private:
    static constexpr double kTime = 0.7;      // s, smoothing of the powers
    static constexpr float kRemoved = 0.75f;  // what is left where there is an echo

    float share_;
    int lasting_, removed_ = 0;
    float near_ = 0, left_ = 0;
    bool found_ = false;
};

}  // namespace vspv
