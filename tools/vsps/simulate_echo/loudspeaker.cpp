#include "simulate_echo/loudspeaker.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

// For a limit of 1.
double clipped(Clipping clipping, double x) { return clipping == Clipping::soft ? std::tanh(x) : std::clamp(x, -1.0, 1.0); }

// Total harmonic distortion of a sine of that amplitude, %: all harmonics over the fundamental.
double distortion(Clipping clipping, double amplitude) {
    constexpr int kPoints = 1024;
    double power = 0, fundamental = 0;
    for (int i = 0; i < kPoints; i++) {
        const double sine = std::sin(2 * std::numbers::pi * i / kPoints), y = clipped(clipping, amplitude * sine);
        power += y * y / kPoints;
        fundamental += std::numbers::sqrt2 * y * sine / kPoints;
    }
    return 100 * std::sqrt(std::max(0.0, power / (fundamental * fundamental) - 1));
}

double amplitudeOf(Clipping clipping, double percent) {
    double least = 0, most = 100;
    for (int i = 0; i < 60; i++) {
        const double middle = (least + most) / 2;
        (distortion(clipping, middle) < percent ? least : most) = middle;
    }
    return most;
}

}  // namespace

Loudspeaker::Loudspeaker(Clipping clipping, double percent, double dbov)
    : clipping_(clipping), limit_(32768 * std::numbers::sqrt2 * std::pow(10, dbov / 20) / amplitudeOf(clipping, percent)) {}

double Loudspeaker::play(double x) const { return limit_ * clipped(clipping_, x / limit_); }
