// Whether there is a far-end signal whose echo may still be heard.
#pragma once

#include <algorithm>

namespace vspv {

class FarActivity {
  public:
    // An echo may last so many blocks.
    explicit FarActivity(int blocks) : blocks_(blocks) {}

    // power: mean square of a block.
    void update(double power) { left_ = power > kQuiet ? blocks_ : std::max(left_ - 1, 0); }
    bool active() const { return left_ > 0; }

  private:
    static constexpr double kQuiet = 32768.0 * 32768.0 * 1e-6;  // -60 dBov

    int blocks_, left_ = 0;
};

}  // namespace vspv
