#include "audio/active_level.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kMargin = 15.9;     // dB between active level and threshold
constexpr double kSmoothing = 0.03;  // s, time constant of the envelope
constexpr double kHangover = 0.2;    // s

}  // namespace

double toDbov(double power) { return 10 * std::log10(power / (32768.0 * 32768.0)); }

LevelMeter::LevelMeter(int rate)
    : smoothing_(std::exp(-1 / (rate * kSmoothing))), longHangover_(std::lround(kHangover * rate)) {
    hangover_.fill(longHangover_);
}

void LevelMeter::process(std::span<const std::int16_t> block) {
    const double g = smoothing_;
    for (const std::int16_t sample : block) {
        const double magnitude = std::abs(double(sample));
        p_ = g * p_ + (1 - g) * magnitude;
        envelope_ = g * envelope_ + (1 - g) * p_;
        for (int j = 0; j < kThresholds; j++) {
            hangover_[j] = envelope_ >= double(1 << j) ? 0 : hangover_[j] + 1;
            active_[j] += hangover_[j] <= longHangover_;
        }
        energy_ += magnitude * magnitude;
        peak_ = std::max(peak_, magnitude);
    }
    samples_ += double(block.size());
}

// The active level is where the level above a threshold exceeds that threshold by just the margin. Levels are interpolated
// linearly between thresholds.
std::optional<ActiveLevel> LevelMeter::activeLevel() const {
    double lastLevel = 0, lastExcess = 0;
    for (int j = 0; j < kThresholds && active_[j] > 0; j++) {
        const double level = toDbov(energy_ / active_[j]);
        const double excess = level - toDbov(std::pow(4.0, j)) - kMargin;
        if (excess <= 0) {
            if (j == 0) return {};
            const double result = lastLevel + (level - lastLevel) * lastExcess / (lastExcess - excess);
            return ActiveLevel{result, energy_ / samples_ / (std::pow(10.0, result / 10) * 0x1p30)};
        }
        lastLevel = level;
        lastExcess = excess;
    }
    return {};
}

double LevelMeter::meanDbov() const { return toDbov(energy_ / samples_); }

double LevelMeter::peakDbov() const { return toDbov(peak_ * peak_); }

std::optional<ActiveLevel> activeLevel(std::span<const std::int16_t> x) {
    LevelMeter meter;
    meter.process(x);
    return meter.activeLevel();
}
