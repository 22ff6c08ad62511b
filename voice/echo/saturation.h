// A loudspeaker or amplifier that saturates: f(x) = L g(x / L) with g(r) = r / (1 + |r|^p)^(1/p) (C. Rapp: Effects of
// HPA-nonlinearity on a 4-DPSK/OFDM-signal for a digital sound broadcasting system, 1991), which clips the harder the
// larger p is. Powers of two by squares and roots alone, so that every processor gives the same; the others are mixed from
// their neighbours.
#pragma once

#include <algorithm>
#include <cmath>

namespace vspv {

class Saturation {
  public:
    static constexpr float kHardest = 4;

    // hardness: log2(p) - 1, 0 to kHardest.
    Saturation(float limit, float hardness)
        : limit_(limit),
          level_(1 / limit),
          squares_(std::min(static_cast<int>(hardness), static_cast<int>(kHardest) - 1) + 1),
          mix_(hardness - static_cast<float>(squares_ - 1)) {}

    struct Value {
        float played, byLimit, byHardness;  // and how it changes with the logarithm of the limit, and with the hardness
    };

    Value operator()(float x) const {
        const float r = std::abs(x) * level_, small = r < 1 ? r : 1 / r;
        const float signedLimit = x < 0 ? -limit_ : limit_;
        float power = small * small;
        for (int i = 1; i < squares_; i++) power *= power;
        const Shape soft = shape(r, power, squares_), hard = shape(r, power * power, squares_ + 1);
        return {signedLimit * (soft.value + mix_ * (hard.value - soft.value)),
                signedLimit * (soft.byLimit + mix_ * (hard.byLimit - soft.byLimit)),
                signedLimit * (hard.value - soft.value)};
    }

  private:
    struct Shape {
        float value, byLimit;
    };

    // power: of r or 1 / r, whichever is below 1.
    static Shape shape(float r, float power, int roots) {
        float root = 1 + power;
        for (int i = 0; i < roots; i++) root = std::sqrt(root);
        const float value = (r < 1 ? r : 1) / root;
        return {value, value * (r < 1 ? power : 1) / (1 + power)};
    }

    float limit_, level_;
    int squares_;
    float mix_;
};

}  // namespace vspv
