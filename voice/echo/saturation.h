// A loudspeaker or amplifier that saturates: f(x) = L g(x / L) with g(r) = r / (1 + |r|^p)^(1/p) (C. Rapp: Effects of
// HPA-nonlinearity on a 4-DPSK/OFDM-signal for a digital sound broadcasting system, 1991), which clips the harder the
// larger p is. Powers of two by squares and roots alone, so that every processor gives the same; the others are mixed from
// their neighbours.
#pragma once

#include <algorithm>
#include <cstddef>
#include <span>

#include "echo/samples.h"

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

    // What becomes of samples, in whole fours, and how that changes with the logarithm of the limit, and with the hardness.
    template <class Sample>
    void apply(std::span<const Sample> x, float* played, float* byLimit, float* byHardness) const {
        for (std::size_t n = 0; n < x.size(); n += 4) {
            const Value y = at(fourOf(&x[n]));
            store(y.played, played + n);
            store(y.byLimit, byLimit + n);
            store(y.byHardness, byHardness + n);
        }
    }

    // What the softest one adds to samples.
    template <class Sample>
    static void softest(std::span<const Sample> x, float limit, float* added) {
        const Saturation curve(limit, 0);
        for (std::size_t n = 0; n < x.size(); n += 4) {
            const Four in = fourOf(&x[n]);
            const Ratio r = curve.ratioOf(in);
            store(r.limit * shape(r, r.power, 1).value - in, added + n);
        }
    }

  private:
    struct Value {
        Four played, byLimit, byHardness;
    };
    struct Shape {
        Four value, byLimit;
    };
    // Of a sample's size to the limit: at most 1; above 1; the square of it or of its inverse, whichever is smaller; the
    // limit with the sample's sign.
    struct Ratio {
        Four clipped;
        FourFlags above;
        Four power, limit;
    };

    Ratio ratioOf(Four x) const {
        const Four limit = Four{} + limit_, one = Four{} + 1;
        const Four r = (x < 0 ? -x : x) * level_;
        const FourFlags above = r >= 1;
        const Four small = above ? 1 / r : r;
        return {above ? one : r, above, small * small, x < 0 ? -limit : limit};
    }

    Value at(Four x) const {
        const Ratio r = ratioOf(x);
        Four power = r.power;
        for (int i = 1; i < squares_; i++) power *= power;
        const Shape soft = shape(r, power, squares_), hard = shape(r, power * power, squares_ + 1);
        return {r.limit * (soft.value + mix_ * (hard.value - soft.value)),
                r.limit * (soft.byLimit + mix_ * (hard.byLimit - soft.byLimit)), r.limit * (hard.value - soft.value)};
    }

    static Shape shape(const Ratio& r, Four power, int roots) {
        const Four sum = 1 + power, one = Four{} + 1;
        Four root = sum;
        for (int i = 0; i < roots; i++) root = rootOf(root);
        const Four value = r.clipped / root;
        return {value, value * (r.above ? one : power) / sum};
    }

    float limit_, level_;
    int squares_;
    float mix_;
};

}  // namespace vspv
