#include "echo/step_size.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

namespace vspv {

namespace {

constexpr double kNoiseTime = 0.02;    // s, smoothing of the error power
constexpr double kLeakageTime = 0.25;  // s, over which error and echo estimate are compared
constexpr double kDriftTime = 3e5;     // s in which an echo path becomes another one
constexpr double kPriorDecay = 0.8;    // of the power of an echo path from tap to tap
constexpr float kCorrelated = 0.4f;    // neighbouring taps are correlated: a frame teaches less than if they were not
constexpr float kChance = 8;           // leakage that comes about by chance, in units of its expectation
constexpr double kIdle = 0.0005;       // share in what is to be learned below which a group is idle
constexpr float kNothing = 1;          // power in a band

float smoothing(double time, double frameRate) { return static_cast<float>(std::exp(-1 / (time * frameRate))); }

// In eight parts, which the compiler adds at once.
float sum(std::span<const float> x) {
    std::array<float, 8> part{};
    std::size_t i = 0;
    for (; i + part.size() <= x.size(); i += part.size())
        for (std::size_t j = 0; j < part.size(); j++) part[j] += x[i + j];
    float all = 0;
    for (; i < x.size(); i++) all += x[i];
    for (const float p : part) all += p;
    return all;
}

}  // namespace

SubbandStepSize::SubbandStepSize(int bands, int taps, double frameRate, Memory& memory)
    : bands_(bands),
      taps_(taps),
      groups_((taps + kGroup - 1) / kGroup),
      noiseSmoothing_(smoothing(kNoiseTime, frameRate)),
      leakageSmoothing_(smoothing(kLeakageTime, frameRate)),
      drift_(static_cast<float>(1 / (kDriftTime * frameRate))),
      prior_(memory.take<float>(groups_)),
      uncertainty_(memory.take<float>(groups_ * bands)),
      coefficientPower_(memory.take<float>(groups_ * bands)),
      farPower_(memory.take<float>(groups_ * bands)),
      steps_(memory.take<float>(groups_ * bands)),
      groupPredicted_(memory.take<double>(groups_)),
      adapts_(memory.take<char>(groups_)),
      noise_(memory.take<float>(bands)),
      predicted_(memory.take<float>(bands)),
      pathPower_(memory.take<float>(bands)),
      left_(memory.take<float>(bands)),
      chancePower_(memory.take<float>(bands)),
      gain_(memory.take<float>(bands)),
      nearSpeech_(frameRate) {
    if (memory.measures()) return;
    const double sum = (1 - std::pow(kPriorDecay, taps)) / (1 - kPriorDecay);
    for (int g = 0; g < groups_; g++)
        prior_[static_cast<std::size_t>(g)] = static_cast<float>(std::pow(kPriorDecay, firstTap(g)) / sum);
    reset();
}

// The path is thought to be as loud as the far end at most.
void SubbandStepSize::reset() {
    for (int g = 0; g < groups_; g++)
        std::fill_n(uncertainty_.begin() + static_cast<std::ptrdiff_t>(offset(g)), bands_,
                    prior_[static_cast<std::size_t>(g)]);
    std::fill(adapts_.begin(), adapts_.end(), char{1});
    std::fill(groupPredicted_.begin(), groupPredicted_.end(), 1.0);
}

void SubbandStepSize::shift(int shift) {
    const auto move = [this, shift](int group) {
        float* to = uncertainty_.data() + offset(group);
        const int first = firstTap(group) + shift, last = first + taps(group) - 1;
        if (first < 0 || last >= taps_) {
            std::fill_n(to, bands_, prior_[static_cast<std::size_t>(group)]);
            return;
        }
        const float *a = uncertainty_.data() + offset(first / kGroup), *b = uncertainty_.data() + offset(last / kGroup);
        for (int k = 0; k < bands_; k++) to[k] = std::max(a[k], b[k]);
    };
    for (int g = 0; g < groups_; g++) move(shift > 0 ? g : groups_ - 1 - g);
    std::fill(adapts_.begin(), adapts_.end(), char{1});
    std::fill(groupPredicted_.begin(), groupPredicted_.end(), 1.0);
}

// The square of the regression coefficient of the error on the estimate, less what it is by chance.
void SubbandStepSize::measureLeakage(const Frame& frame) {
    for (std::size_t k = 0; k < chancePower_.size(); k++) chancePower_[k] = frame.errorPower[k] * frame.estimatePower[k];
    const float cross = sum({frame.correlation, noise_.size()}), estimate = sum({frame.estimatePower, noise_.size()});
    const float chance = sum(chancePower_);
    const float a = leakageSmoothing_;
    cross_ = a * cross_ + (1 - a) * cross;
    estimate_ = a * estimate_ + (1 - a) * estimate;
    chance_ = a * chance_ + (1 - a) * (1 - a) * chance;
    const float square = cross_ * cross_ - kChance * chance_;
    leakage_ = square > 0 ? std::min(1.0f, square / (estimate_ * estimate_ + kNothing)) : 0;
}

// How much of the echo the group may leave, from what is unknown of its coefficients.
void SubbandStepSize::predict(const Frame& frame, int group) {
    const auto g = static_cast<std::size_t>(group);
    float* __restrict power = farPower_.data() + offset(group);
    float* __restrict uncertainty = uncertainty_.data() + offset(group);
    const float* coefficient = coefficientPower_.data() + offset(group);
    std::fill_n(power, bands_, 0.0f);
    for (int t = firstTap(group); t < firstTap(group) + taps(group); t++) {
        const float* tap = frame.farPower[t];
        for (int k = 0; k < bands_; k++) power[k] += tap[k];
    }
    float* __restrict left = left_.data();
    float* __restrict predicted = predicted_.data();
    const float* path = pathPower_.data();
    const float leakage = leakage_, drift = drift_, prior = prior_[g];
    for (int k = 0; k < bands_; k++) {
        const float drifted = uncertainty[k] + drift * coefficient[k];
        const float leaked = leakage * (coefficient[k] + prior * path[k]);
        uncertainty[k] = drifted > leaked ? drifted : leaked;
        left[k] = uncertainty[k] * power[k];
        predicted[k] += left[k];
    }
    groupPredicted_[g] = sum(left_);
}

// The steps, and how much they will reduce the uncertainty.
void SubbandStepSize::correct(int group) {
    const float* power = farPower_.data() + offset(group);
    float* __restrict uncertainty = uncertainty_.data() + offset(group);
    float* __restrict steps = steps_.data() + offset(group);
    const float share = kCorrelated / static_cast<float>(taps(group));
    for (int k = 0; k < bands_; k++) {
        steps[k] = uncertainty[k] * gain_[static_cast<std::size_t>(k)];
        uncertainty[k] *= 1 - share * steps[k] * power[k];
    }
}

void SubbandStepSize::update(const Frame& frame) {
    measureLeakage(frame);
    turn_ = (turn_ + 1) % groups_;
    double total = 0;
    for (const double p : groupPredicted_) total += p;
    std::fill(predicted_.begin(), predicted_.end(), 0.0f);
    if (leakage_ > 0) {
        std::fill(pathPower_.begin(), pathPower_.end(), 0.0f);
        for (int g = 0; g < groups_; g++)
            for (int k = 0; k < bands_; k++)
                pathPower_[static_cast<std::size_t>(k)] +=
                    static_cast<float>(taps(g)) * coefficientPower_[offset(g) + static_cast<std::size_t>(k)];
    }
    for (int g = 0; g < groups_; g++) {
        const auto i = static_cast<std::size_t>(g);
        adapts_[i] = leakage_ > 0 || g == turn_ || groupPredicted_[i] >= kIdle * (total + noiseSum_);
        if (adapts_[i]) predict(frame, g);
    }

    for (std::size_t k = 0; k < noise_.size(); k++) {
        noise_[k] = noiseSmoothing_ * noise_[k] + (1 - noiseSmoothing_) * frame.errorPower[k];
        gain_[k] = 1 / (predicted_[k] + noise_[k] + kNothing);
    }
    for (int g = 0; g < groups_; g++)
        if (adapts(g)) correct(g);
    noiseSum_ = sum(noise_);
    observe(frame);
}

void SubbandStepSize::observe(const Frame& frame) {
    const auto total = [this](const float* x) { return double(sum({x, noise_.size()})); };
    const double error = total(frame.errorPower), estimate = total(frame.estimatePower), predicted = sum(predicted_);
    learning_ = predicted / (predicted + noiseSum_ + kNothing);
    nearSpeech_.update({.near = error + estimate + 2 * total(frame.correlation),
                        .far = total(frame.farPower[0]),
                        .error = error,
                        .estimate = estimate,
                        .noise = noiseSum_,
                        .predicted = predicted,
                        .cancelling = frame.cancelling});
}

}  // namespace vspv
