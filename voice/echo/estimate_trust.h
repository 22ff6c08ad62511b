// Whether the echo estimate may be trusted where the output is louder than the near end. Both a wrong estimate and a right
// one make it so, the right one where the near end's talker and the echo happen to cancel each other. But then the echo is
// removed in the other bands, and a wrong estimate makes many bands louder.
#pragma once

#include <algorithm>
#include <cmath>

#include "echo/frame_powers.h"

namespace vspv {

class EstimateTrust {
  public:
    explicit EstimateTrust(double frameRate)
        : share_(static_cast<float>(1 - std::exp(-1 / (kTime * frameRate)))),
          doubt_(static_cast<int>(kDoubt * frameRate)),
          doubtful_(doubt_) {}

    // A frame in so many bands; the step size.
    void update(const FramePowers& frame, int bands, double learning) {
        quieter_ += share_ * (static_cast<float>(frame.quieter) - quieter_);
        louder_ += share_ * (static_cast<float>(frame.louder) - louder_);
        many_ = louder_ > kMany * static_cast<float>(bands);
        doubtful_ = many_ && louder_ > quieter_ ? doubt_ : std::max(doubtful_ - 1, 0);
        learned_ = learning < kLearned;
    }

    // It has not been wrong for seconds, has nothing to learn and removes more than it adds.
    bool trusted() const { return doubtful_ == 0 && learned_ && !many_ && quieter_ > kClearly * louder_; }

  private:
    static constexpr double kTime = 0.04, kDoubt = 3;  // s
    static constexpr float kClearly = 2;
    static constexpr float kMany = 0.1f;  // of the bands
    static constexpr double kLearned = 0.01;

    float share_, quieter_ = 0, louder_ = 0;
    int doubt_, doubtful_;
    bool learned_ = false, many_ = false;
};

}  // namespace vspv
