// Whether the echo estimate may be trusted where the output is louder than the near end. Both a wrong estimate and a right
// one make it so, the right one where the near end's talker and the echo happen to cancel each other. But then the echo is
// removed in the other bands, and a wrong estimate makes many bands louder.
#pragma once

#include <algorithm>
#include <cmath>

#include "echo/samples.h"

namespace vspv {

class EstimateTrust {
  public:
    explicit EstimateTrust(double frameRate)
        : share_(static_cast<float>(1 - std::exp(-1 / (kTime * frameRate)))),
          doubt_(static_cast<int>(kDoubt * frameRate)),
          doubtful_(doubt_) {}

    // The bands of a frame of the near end and of what the estimate leaves of it; the step size.
    template <class Complex>
    void update(const Complex* near, const Complex* left, int bands, double learning) {
        FourFlags quieterOfFour{}, louderOfFour{};
        int k = 0;
        for (; k + 4 <= bands; k += 4) {
            const Four before = powersOf(near + k), after = powersOf(left + k);
            quieterOfFour -= after < kQuieter * before;
            louderOfFour -= after > kLouder * before;
        }
        int quieter = sumOf(quieterOfFour), louder = sumOf(louderOfFour);
        for (; k < bands; k++) {
            const float before = powerOf(inFloat(near[k])), after = powerOf(inFloat(left[k]));
            quieter += after < kQuieter * before;
            louder += after > kLouder * before;
        }
        quieter_ += share_ * (static_cast<float>(quieter) - quieter_);
        louder_ += share_ * (static_cast<float>(louder) - louder_);
        many_ = louder_ > kMany * static_cast<float>(bands);
        doubtful_ = many_ && louder_ > quieter_ ? doubt_ : std::max(doubtful_ - 1, 0);
        learned_ = learning < kLearned;
    }

    // It has not been wrong for seconds, has nothing to learn and removes more than it adds.
    bool trusted() const { return doubtful_ == 0 && learned_ && !many_ && quieter_ > kClearly * louder_; }

  private:
    static constexpr double kTime = 0.04, kDoubt = 3;  // s
    static constexpr float kQuieter = 0.5f, kLouder = 2, kClearly = 2;
    static constexpr float kMany = 0.1f;  // of the bands
    static constexpr double kLearned = 0.01;

    static int sumOf(FourFlags x) { return x[0] + x[1] + x[2] + x[3]; }

    float share_, quieter_ = 0, louder_ = 0;
    int doubt_, doubtful_;
    bool learned_ = false, many_ = false;
};

}  // namespace vspv
