// Which signals explain what the filters leave: a least-squares fit of the error by them, over the last seconds.
#pragma once

#include <array>
#include <cstddef>

#include "echo/samples.h"

namespace vspv {

// Some bands of a frame.
constexpr int kRegressionBands = 16;
using RegressionFrame = std::array<Vsp32fc, kRegressionBands>;

inline float product(const RegressionFrame& a, const RegressionFrame& b) {
    return sumOf(a.size(), [&](std::size_t i) { return a[i].re * b[i].re + a[i].im * b[i].im; });
}

class ErrorRegression {
  public:
    static constexpr std::size_t kBases = 3;
    using Bases = std::array<RegressionFrame, kBases>;
    using Shares = std::array<double, kBases>;

    void forget() { *this = {}; }

    // The first bases of a frame; one in which much is left counts less, since that may be a talker. left: its power.
    void add(const Bases& bases, std::size_t count, const RegressionFrame& error, float left) {
        constexpr float kSmall = 0.03f;  // of the first basis
        const double weight = 1 / (left + kSmall * product(bases[0], bases[0]));
        for (std::size_t p = 0; p < count; p++) {
            for (std::size_t q = p; q < count; q++)
                products_[p][q] = products_[q][p] = kRemembered * products_[p][q] + weight * product(bases[p], bases[q]);
            withError_[p] = kRemembered * withError_[p] + weight * product(bases[p], error);
        }
        error_ = kRemembered * error_ + weight * left;
    }

    // The best shares of the first bases, 0 for the others.
    Shares fit(std::size_t bases) const {
        constexpr double kMore = 1.001, kNothing = 1e-9;
        auto a = products_;
        Shares x{};
        for (std::size_t i = 0; i < bases; i++) {
            x[i] = withError_[i];
            a[i][i] = kMore * a[i][i] + kNothing;
        }
        for (std::size_t i = 0; i < bases; i++)
            for (std::size_t j = i + 1; j < bases; j++) {
                const double share = a[j][i] / a[i][i];
                for (std::size_t k = i; k < bases; k++) a[j][k] -= share * a[i][k];
                x[j] -= share * x[i];
            }
        for (std::size_t i = bases; i-- > 0;) {
            for (std::size_t k = i + 1; k < bases; k++) x[i] -= a[i][k] * x[k];
            x[i] /= a[i][i];
        }
        return x;
    }

    // The share of the error's power that a fit explains.
    double explained(const Shares& x) const {
        double sum = 0;
        for (std::size_t i = 0; i < kBases; i++) sum += x[i] * withError_[i];
        return error_ > 0 ? sum / error_ : 0;
    }

    // So much of the bases is in the estimate from now on.
    void take(const Shares& x) {
        for (std::size_t p = 0; p < kBases; p++)
            for (std::size_t q = 0; q < kBases; q++) withError_[p] -= products_[p][q] * x[q];
    }

  private:
    static constexpr double kRemembered = 0.995;  // of a frame after the next

    std::array<Shares, kBases> products_{};
    Shares withError_{};
    double error_ = 0;
};

}  // namespace vspv
