#include "echo_canceller/bulk_delay.h"

#include <algorithm>
#include <cmath>

#include "echo_canceller/prototype_window.h"

namespace {

constexpr double kLowest = 500;     // Hz, the lowest band
constexpr double kStep = 0.3;       // of the normalised LMS rule
constexpr double kNoiseTime = 0.1;  // s, smoothing of the error power
constexpr double kHoldTime = 0.3;   // s for which a new delay must stay the best
constexpr double kOnset = 0.05;     // of the peak: there the path begins
constexpr double kOutside = 0.03;   // share of the response that may lie outside the canceller's filter
constexpr double kClear = 4;        // ratio of the peak to the mean that makes an echo path
constexpr int kMaxTaps = 255;       // of the library's filters
constexpr double kNothing = 1;      // power of a band

double power(Vsp32fc z) { return double(z.re) * z.re + double(z.im) * z.im; }

}  // namespace

BulkDelay::BulkDelay(int maxFrames, int covered, double spacing, double frameRate)
    : maxFrames_(maxFrames),
      covered_(covered),
      firstBand_(static_cast<int>(kLowest / spacing)),
      length_(std::min(maxFrames + covered, kMaxTaps)),
      hold_(static_cast<int>(kHoldTime * frameRate / kDecide)),
      noiseShare_(1 - std::exp(-kAdapt / (kNoiseTime * frameRate))),
      far_(length_, kBands),
      response_(length_, kBands),
      estimate_(kBands),
      error_(kBands),
      farPower_(kBands),
      errorPower_(kBands),
      steps_(kBands),
      energy_(static_cast<std::size_t>(length_)) {}

// The near end is in the error.
void BulkDelay::adapt() {
    FloatArithmetic::filter(far_.at(0), response_.at(0), estimate_.data(), length_, kBands);
    std::fill(farPower_.begin(), farPower_.end(), 0.0);
    for (int t = 0; t < length_; t++)
        for (std::size_t k = 0; k < kBands; k++) farPower_[k] += power(far_.at(t)[0][k]);
    for (std::size_t k = 0; k < kBands; k++) {
        error_[k] = FloatArithmetic::subtract(error_[k], estimate_[k]);
        errorPower_[k] += noiseShare_ * (power(error_[k]) - errorPower_[k]);
        steps_[k] = kStep / (farPower_[k] + errorPower_[k] + kNothing);
    }
    FloatArithmetic::adapt(steps_.data(), far_.at(0), error_.data(), response_.at(0), length_, kBands);
}

bool BulkDelay::decide() {
    double peak = 0, sum = 0;
    for (int t = 0; t < length_; t++) {
        double& e = energy_[static_cast<std::size_t>(t)];
        e = 0;
        for (int k = 0; k < kBands; k++) e += power(response_.at(t)[0][k]);
        peak = std::max(peak, e);
        sum += e;
    }
    if (peak * length_ < kClear * sum) return false;
    const auto onset = std::find_if(energy_.begin(), energy_.end(), [peak](double e) { return e > kOnset * peak; });
    const int found = std::clamp(static_cast<int>(onset - energy_.begin()) - 1, 0, maxFrames_);

    const auto inside = [this](int delay) {
        double energy = 0;
        for (int t = delay; t < std::min(delay + covered_, length_); t++) energy += energy_[static_cast<std::size_t>(t)];
        return energy;
    };
    if (found == delay_ || inside(found) - inside(delay_) < kOutside * sum) {
        held_ = 0;
        return false;
    }
    held_ = found == candidate_ ? held_ + 1 : 0;
    candidate_ = found;
    if (held_ < hold_) return false;
    delay_ = found;
    held_ = 0;
    return true;
}

SignalBulkDelay::SignalBulkDelay(const BankShape& shape, int maxFrames, int covered, int rate)
    : shape_(shape),
      farBank_(shape, farWindow(shape)),
      nearBank_(shape, farWindow(shape)),
      farIn_(static_cast<std::size_t>(shape.frame)),
      nearIn_(farIn_.size()),
      far_(static_cast<std::size_t>(shape.bands())),
      near_(far_.size()),
      delay_(maxFrames, covered, double(rate) / shape.transform(), double(rate) / shape.frame) {}

bool SignalBulkDelay::update(float far, float near) {
    farIn_[filled_] = far;
    nearIn_[filled_] = near;
    if (++filled_ < farIn_.size()) return false;
    filled_ = 0;
    farBank_.analyse(farIn_.data(), far_.data());
    nearBank_.analyse(nearIn_.data(), near_.data());
    return delay_.update(far_.data(), near_.data());
}
