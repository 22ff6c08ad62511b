// Step sizes of the sub-band filters, and with them the protection against double talk.
//
// Each band's filter is taken for a random vector that drifts slowly, and its uncertainty is tracked as a Kalman filter
// with a diagonal covariance does (G. Enzner, P. Vary: Frequency-domain adaptive Kalman filter for acoustic echo control
// in hands-free telephones, Signal Processing 86, 2006). The step follows from the part of the error that the uncertainty
// explains: near-end speech makes the error larger than that and the step small, in the very frame in which it begins.
//
// A filter that is certain and wrong, because the echo path has changed, would never recover. So the error is also
// correlated with the echo estimate: near-end speech has nothing in common with it, echo that is left over has
// (J.-M. Valin: On adjusting the learning rate in frequency domain echo cancellation with double-talk, IEEE Trans. ASLP 15,
// 2007). What they have in common makes the filter uncertain again.
#pragma once

#include <span>
#include <vector>

class SubbandStepSize {
  public:
    // Taps share a step in groups of neighbours.
    static constexpr int kGroup = 4;

    SubbandStepSize(int bands, int taps, double frameRate);

    // What a frame gave in each band: all arrays hold `bands` values.
    struct Frame {
        float* const* farPower;  // of each tap's reference: [tap][band]
        const float* errorPower;
        const float* estimatePower;  // of the echo estimate
        const float* correlation;    // real part of error * conj(estimate)
    };
    void update(const Frame& frame);

    int groups() const { return groups_; }
    int firstTap(int group) const { return group * kGroup; }
    int tapsOf(int group) const { return group == groups_ - 1 ? taps_ - firstTap(group) : kGroup; }
    // Step of each band: the update of a coefficient is step * error * conj(reference).
    const float* steps(int group) const { return row(steps_, group); }

    // The filter tells the mean power of the coefficients of a group when it has changed; in turns is enough.
    float* coefficientPower(int group) { return row(coefficientPower_, group); }

    // The reference has moved by so many taps, and the coefficients with it: tap t is what tap t + shift was.
    void realign(int shift);

    // From 0 to 1, over all bands: the part of the error power that the filter is to follow.
    double openness() const { return openness_; }
    bool doubleTalk() const { return doubleTalk_; }

  private:
    float* row(std::vector<float>& v, int group) const { return v.data() + static_cast<std::size_t>(group * bands_); }
    const float* row(const std::vector<float>& v, int group) const { return v.data() + static_cast<std::size_t>(group * bands_); }
    void measureLeakage(const Frame& frame);

    int bands_, taps_, groups_;
    float noiseSmoothing_, leakageSmoothing_, drift_;
    std::vector<float> uncertainty_;       // mean square error of a coefficient: [group][band]
    std::vector<float> coefficientPower_;  // [group][band]
    std::vector<float> groupPower_;        // of the reference, summed over the taps of a group: [group][band]
    std::vector<float> steps_;             // [group][band]
    std::vector<float> noise_;             // power of what is not echo, [band]
    std::vector<float> predicted_, gain_;  // [band]
    float cross_ = 0, own_ = 0, both_ = 0, leakage_ = 0;
    double openness_ = 0;
    bool doubleTalk_ = false;
};
