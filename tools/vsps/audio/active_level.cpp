#include "audio/active_level.h"

#include <array>
#include <cmath>

namespace {

constexpr int kThresholds = 15;      // 2^0 to 2^14
constexpr double kMargin = 15.9;     // dB between active level and threshold
constexpr double kSmoothing = 0.03;  // s, time constant of the envelope
constexpr double kRate = 8000;       // Hz
constexpr int kHangover = 1600;      // samples, 200 ms

// The samples for which the envelope is above each threshold or was within the hangover time.
std::array<double, kThresholds> activeSamples(std::span<const std::int16_t> x) {
    const double g = std::exp(-1 / (kRate * kSmoothing));
    std::array<int, kThresholds> hangover;
    hangover.fill(kHangover);
    std::array<double, kThresholds> active{};
    double p = 0, envelope = 0;
    for (const std::int16_t sample : x) {
        p = g * p + (1 - g) * std::abs(double(sample));
        envelope = g * envelope + (1 - g) * p;
        for (int j = 0; j < kThresholds; j++) {
            const bool above = envelope >= double(1 << j);
            hangover[j] = above ? 0 : hangover[j] + 1;
            active[j] += hangover[j] <= kHangover;
        }
    }
    return active;
}

double sumOfSquares(std::span<const std::int16_t> x) {
    double sum = 0;
    for (const std::int16_t sample : x) sum += double(sample) * sample;
    return sum;
}

}  // namespace

double toDbov(double power) { return 10 * std::log10(power / (32768.0 * 32768.0)); }

// The active level is where the level above a threshold exceeds that threshold by just the margin. Levels are interpolated
// linearly between thresholds.
std::optional<ActiveLevel> activeLevel(std::span<const std::int16_t> x) {
    const double energy = sumOfSquares(x);
    const auto active = activeSamples(x);
    double lastLevel = 0, lastExcess = 0;
    for (int j = 0; j < kThresholds && active[j] > 0; j++) {
        const double level = toDbov(energy / active[j]);
        const double excess = level - toDbov(std::pow(4.0, j)) - kMargin;
        if (excess <= 0) {
            if (j == 0) return {};
            const double result = lastLevel + (level - lastLevel) * lastExcess / (lastExcess - excess);
            return ActiveLevel{result, energy / double(x.size()) / (std::pow(10.0, result / 10) * 0x1p30)};
        }
        lastLevel = level;
        lastExcess = excess;
    }
    return {};
}
