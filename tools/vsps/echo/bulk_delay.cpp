#include "echo/bulk_delay.h"

#include <algorithm>
#include <cmath>

#include "echo/arithmetic.h"

namespace {

constexpr double kLowest = 500;     // Hz, the lowest band
constexpr double kStep = 0.3;       // of the normalised LMS rule
constexpr double kNoiseTime = 0.1;  // s, smoothing of the error power
constexpr double kHoldTime = 0.3;   // s for which a new delay must stay the best
constexpr double kOnset = 0.05;     // of the peak: there the path begins
constexpr double kOutside = 0.03;   // share of the response that may lie outside the canceller's filter
constexpr double kClear = 4;        // ratio of the peak to the mean that makes an echo path
constexpr double kNothing = 1;      // power of a band

double power(Vsp32fc z) { return double(z.re) * z.re + double(z.im) * z.im; }

}  // namespace

BulkDelay::BulkDelay(int maxFrames, int taps, double spacing, double frameRate)
    : maxFrames_(maxFrames),
      taps_(taps),
      firstBand_(static_cast<int>(kLowest / spacing)),
      length_(std::min(maxFrames + taps, 255)),
      hold_(static_cast<int>(kHoldTime * frameRate / 2)),
      far_(length_, kBands),
      response_(length_, kBands),
      farPower_(kBands),
      step_(kBands),
      errorPower_(kBands),
      error_(kBands),
      energy_(static_cast<std::size_t>(length_)) {}

// Every other frame is enough.
bool BulkDelay::update(const Vsp32fc* far, const Vsp32fc* near) {
    std::copy_n(far, kBands, far_.push());
    skip_ = !skip_;
    if (skip_) return false;
    adapt(near);
    return decide();
}

void BulkDelay::adapt(const Vsp32fc* near) {
    FloatArithmetic::filter(far_.at(0), response_.at(0), error_.data(), length_, kBands);
    std::fill(farPower_.begin(), farPower_.end(), 0.0);
    for (int t = 0; t < length_; t++)
        for (int k = 0; k < kBands; k++) farPower_[static_cast<std::size_t>(k)] += power(far_.at(t)[0][k]);
    for (std::size_t k = 0; k < kBands; k++) {
        error_[k] = FloatArithmetic::subtract(near[k], error_[k]);
        errorPower_[k] += 0.1 * (power(error_[k]) - errorPower_[k]);
        step_[k] = kStep / (farPower_[k] + errorPower_[k] + kNothing);
    }
    FloatArithmetic::adapt(step_.data(), far_.at(0), error_.data(), response_.at(0), length_, kBands);
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
        for (int t = delay; t < std::min(delay + taps_, length_); t++) energy += energy_[static_cast<std::size_t>(t)];
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
