#include "echo/step_size.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kNoiseTime = 0.02;    // s
constexpr double kLeakageTime = 0.25;  // s
constexpr double kDriftTime = 3e4;     // s in which a coefficient becomes another one
constexpr float kCorrelated = 0.5f;    // how much less a frame tells than the diagonal covariance makes of it
constexpr float kFloor = 1;            // power in a band that is nothing

float smoothing(double time, double frameRate) { return static_cast<float>(std::exp(-1 / (time * frameRate))); }

}  // namespace

SubbandStepSize::SubbandStepSize(int bands, int taps, double frameRate)
    : bands_(bands),
      taps_(taps),
      groups_((taps + kGroup - 1) / kGroup),
      noiseSmoothing_(smoothing(kNoiseTime, frameRate)),
      leakageSmoothing_(smoothing(kLeakageTime, frameRate)),
      drift_(static_cast<float>(1 / (kDriftTime * frameRate))),
      uncertainty_(static_cast<std::size_t>(groups_ * bands)),
      coefficientPower_(uncertainty_.size()),
      groupPower_(uncertainty_.size()),
      steps_(uncertainty_.size()),
      noise_(static_cast<std::size_t>(bands)),
      predicted_(noise_.size()),
      gain_(noise_.size()) {
    // A first guess of the path: as loud as the far end, decaying.
    double sum = 0;
    const double decay = 0.93;
    for (int t = 0; t < taps; t++) sum += std::pow(decay, t);
    for (int g = 0; g < groups_; g++)
        std::fill_n(row(uncertainty_, g), bands, static_cast<float>(std::pow(decay, g * kGroup) / sum));
}

void SubbandStepSize::measureLeakage(const Frame& frame) {
    double cross = 0, own = 0, both = 0;
    for (int k = 0; k < bands_; k++) {
        cross += frame.correlation[k];
        own += frame.estimatePower[k];
        both += double(frame.errorPower[k]) * frame.estimatePower[k];
    }
    const auto smooth = [this](float& value, double now) {
        value = leakageSmoothing_ * value + (1 - leakageSmoothing_) * static_cast<float>(now);
    };
    smooth(cross_, cross);
    smooth(own_, own);
    smooth(both_, both);
    // The square of the regression coefficient, less what chance gives it.
    const float eta2 = cross_ * cross_ / (own_ * own_ + kFloor);
    const float chance = both_ * (1 - leakageSmoothing_) / (own_ * own_ + kFloor);
    leakage_ = std::min(1.0f, std::max(0.0f, eta2 - 4 * chance));
}

void SubbandStepSize::update(const Frame& frame) {
    measureLeakage(frame);
    std::fill(predicted_.begin(), predicted_.end(), 0.0f);
    for (int g = 0; g < groups_; g++) {
        float* power = row(groupPower_, g);
        float* uncertainty = row(uncertainty_, g);
        const float* coefficient = row(coefficientPower_, g);
        std::fill_n(power, bands_, 0.0f);
        for (int t = firstTap(g); t < firstTap(g) + tapsOf(g); t++)
            for (int k = 0; k < bands_; k++) power[k] += frame.farPower[t][k];
        for (int k = 0; k < bands_; k++) {
            uncertainty[k] = std::max(uncertainty[k] + drift_ * coefficient[k], leakage_ * coefficient[k]);
            predicted_[k] += uncertainty[k] * power[k];
        }
    }
    double error = 0, predicted = 0, noise = 0;
    for (int k = 0; k < bands_; k++) {
        noise_[k] = noiseSmoothing_ * noise_[k] + (1 - noiseSmoothing_) * frame.errorPower[k];
        gain_[k] = 1 / (predicted_[k] + noise_[k] + kFloor);
        error += frame.errorPower[k];
        predicted += predicted_[k];
        noise += noise_[k];
    }
    for (int g = 0; g < groups_; g++) {
        const float* power = row(groupPower_, g);
        float* uncertainty = row(uncertainty_, g);
        float* steps = row(steps_, g);
        const float share = kCorrelated / static_cast<float>(tapsOf(g));
        for (int k = 0; k < bands_; k++) {
            steps[k] = uncertainty[k] * gain_[k];
            uncertainty[k] *= 1 - share * steps[k] * power[k];
        }
    }
    openness_ = predicted / (predicted + noise + 1);
    doubleTalk_ = error > 10 * predicted;
}

void SubbandStepSize::realign(int) {}
