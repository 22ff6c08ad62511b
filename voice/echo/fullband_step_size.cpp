#include "echo/fullband_step_size.h"

#include <algorithm>
#include <cmath>

namespace vspv {

namespace {

constexpr double kNoiseTime = 0.02;    // s, smoothing of the error power
constexpr double kLeakageTime = 0.25;  // s, over which error and echo estimate are compared
constexpr double kDriftTime = 3e4;     // s in which an echo path becomes another one
constexpr double kCorrelated = 0.15;   // samples are correlated: one teaches less than if they were not
constexpr double kChance = 8;          // leakage that comes about by chance, in units of its expectation
constexpr double kNothing = 0.1;       // power of a sample

void smooth(double& value, double now, double time, double rate) {
    value += (1 - std::exp(-1 / (time * rate))) * (now - value);
}

}  // namespace

FullbandStepSize::FullbandStepSize(int taps, double blockRate)
    : taps_(taps), blockRate_(blockRate), nearSpeech_(blockRate) {
    reset();
}

void FullbandStepSize::reset() { uncertainty_ = 1; }

void FullbandStepSize::forget(double share) { uncertainty_ = std::max(uncertainty_, share); }

double FullbandStepSize::leakage(const Block& b) {
    const double share = 1 - std::exp(-1 / (kLeakageTime * blockRate_));
    smooth(cross_, b.correlation, kLeakageTime, blockRate_);
    smooth(estimate_, b.estimatePower, kLeakageTime, blockRate_);
    smooth(chance_, share * b.errorPower * b.estimatePower, kLeakageTime, blockRate_);
    const double square = cross_ * cross_ - kChance * chance_;
    return std::clamp(square / (estimate_ * estimate_ + kNothing), 0.0, 1.0);
}

double FullbandStepSize::update(const Block& b, double tapEnergy) {
    uncertainty_ = std::max(uncertainty_ + tapEnergy / (kDriftTime * blockRate_), leakage(b) * tapEnergy);
    smooth(noise_, b.errorPower, kNoiseTime, blockRate_);
    const double predicted = uncertainty_ * b.farEnergy / taps_;
    const double step = predicted / (predicted + noise_ + kNothing);
    uncertainty_ *= 1 - std::min(1.0, kCorrelated * step * b.samples / taps_);
    nearSpeech_.update({.near = b.errorPower + b.estimatePower + 2 * b.correlation,
                        .far = std::max(b.farPower, b.farEnergy / taps_),
                        .error = noise_,
                        .estimate = b.estimatePower,
                        .noise = noise_,
                        .predicted = predicted,
                        .cancelling = b.cancelling});
    return step;
}

}  // namespace vspv
