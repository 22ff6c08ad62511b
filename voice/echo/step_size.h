// Step sizes of the sub-band filters, and with them the protection against double talk.
//
// Each coefficient is taken for a random value that drifts slowly, and the mean square of what is still unknown of it, its
// uncertainty, is tracked as a Kalman filter with a diagonal covariance does (G. Enzner, P. Vary: Frequency-domain adaptive
// Kalman filter for acoustic echo control in hands-free telephones, Signal Processing 86, 2006). The step follows from the
// share of the error that the uncertainties explain: near-end speech makes the error larger than that and the step small,
// in the very frame in which it begins.
//
// A filter that is certain and wrong, because the echo path has changed, would not recover. So the error is also correlated
// with the echo estimate: near-end speech has nothing in common with it, the echo of another path has (J.-M. Valin: On
// adjusting the learning rate in frequency domain echo cancellation with double-talk, IEEE Trans. ASLP 15, 2007). What they
// have in common makes the filter uncertain again.
#pragma once

#include <span>

#include "echo/memory.h"
#include "echo/near_speech.h"

namespace vspv {

class SubbandStepSize {
  public:
    SubbandStepSize(int bands, int taps, double frameRate, Memory& memory);

    // What a frame gave, a value for each band.
    struct Frame {
        const float* const* farPower;  // of the reference at each tap: [tap][band]
        const float* errorPower;
        const float* estimatePower;  // of the echo estimate
        const float* correlation;    // real part of error * conj(estimate)
        bool cancelling;             // the filter has been seen to remove echo
    };
    void update(const Frame& frame);

    // Groups of neighbouring taps have a step size in common for each band. Groups that have nothing to learn, because the
    // echo path does not reach them, are left out most of the time.
    int groups() const { return groups_; }
    int firstTap(int group) const { return group * kGroup; }
    int taps(int group) const { return group == groups_ - 1 ? taps_ - firstTap(group) : kGroup; }
    bool adapts(int group) const { return adapts_[static_cast<std::size_t>(group)]; }
    // For each band; a coefficient grows by step * error * conj(reference).
    const float* steps(int group) const { return steps_.data() + offset(group); }

    // The mean power of the coefficients of a group, which the filter tells from time to time.
    float* coefficientPower(int group) { return coefficientPower_.data() + offset(group); }

    // Nothing is known of the echo path any more.
    void reset();
    // Tap t is now what tap t + shift was; nothing is known of those that were none.
    void shift(int shift);

    // The share of the error power that is still to be learned, 0 to 1: the step size over all bands.
    double learning() const { return learning_; }
    bool nearSpeech() const { return nearSpeech_.heard(); }

  private:
    static constexpr int kGroup = 4;

    std::size_t offset(int group) const { return static_cast<std::size_t>(group * bands_); }
    void measureLeakage(const Frame& frame);
    void predict(const Frame& frame, int group);
    void correct(int group);
    void observe(const Frame& frame);

    int bands_, taps_, groups_;
    float noiseSmoothing_, leakageSmoothing_, drift_;
    std::span<float> prior_;             // share of a coefficient in the power of a path, [group]
    std::span<float> uncertainty_;       // [group][band]
    std::span<float> coefficientPower_;  // [group][band]
    std::span<float> farPower_;          // of the reference, summed over the group, [group][band]
    std::span<float> steps_;             // [group][band]
    std::span<double> groupPredicted_;   // of the residual echo, [group]
    std::span<char> adapts_;             // [group]
    std::span<float> noise_, predicted_, pathPower_, left_, chancePower_, gain_;  // [band]
    float cross_ = 0, estimate_ = 0, chance_ = 0;                                 // smoothed, for the leakage
    float leakage_ = 0;
    int turn_ = 0;
    double learning_ = 0, noiseSum_ = 0;
    NearSpeech nearSpeech_;
};

}  // namespace vspv
