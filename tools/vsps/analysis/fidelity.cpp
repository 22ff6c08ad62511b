#include "analysis/fidelity.h"

#include <algorithm>
#include <numeric>

namespace {

constexpr double kQuiet = 1e-5 * 32768 * 32768;       // mean square, -50 dBov
constexpr double kLowestSnr = -10, kHighestSnr = 35;  // dB: a few segments do not decide
constexpr float kDynamics = 1e-5f;                    // what is 50 dB below the strongest bin counts as that much
constexpr float kFloor = 1e-12f;                      // power, for silence

// Root mean square over the bins of the difference in dB.
double logSpectralDistance(std::span<const float> a, std::span<const float> b) {
    const float floor = std::max(kFloor, kDynamics * *std::max_element(a.begin(), a.end()));
    double sum = 0;
    for (std::size_t k = 0; k < a.size(); k++) {
        const double d = 10 * std::log10(std::max(a[k], floor) / std::max(b[k], floor));
        sum += d * d;
    }
    return std::sqrt(sum / double(a.size()));
}

double energy(std::span<const std::int16_t> x) {
    return std::accumulate(x.begin(), x.end(), 0.0, [](double sum, double v) { return sum + v * v; });
}

}  // namespace

FidelityMeter::FidelityMeter(int rate) : rate_(rate), original_(spectrumOrder(rate)), heard_(spectrumOrder(rate)) {}

FidelityStep FidelityMeter::process(std::span<const std::int16_t> original, std::span<const std::int16_t> heard) {
    FidelityStep s{};
    s.original = original_.process(original);
    s.heard = heard_.process(heard);
    const double signal = energy(original);
    double noise = 0;
    for (std::size_t i = 0; i < original.size(); i++) {
        const double e = original[i] - heard[i];
        noise += e * e;
    }
    s.active = signal > kQuiet * double(original.size());
    s.snr = signal == 0 ? kLowestSnr : std::clamp(10 * std::log10(signal / std::max(1.0, noise)), kLowestSnr, kHighestSnr);
    s.distance = logSpectralDistance(s.original, s.heard);
    steps_++;
    if (s.active) {
        snr_ += s.snr;
        distance_ += s.distance;
        active_++;
    }
    return s;
}

int delayBetween(std::span<const std::int16_t> original, std::span<const std::int16_t> heard, int rate) {
    const auto reach = std::ptrdiff_t(rate / 10), size = std::min(std::ssize(original), std::ssize(heard)) - 2 * reach;
    if (size < 1) return 0;
    const std::vector<float> x(original.begin() + reach, original.begin() + reach + size), y(heard.begin(), heard.end());
    double power = energy(heard.first(std::size_t(size))), best = 0;
    int delay = 0;
    for (std::ptrdiff_t lag = -reach; lag <= reach; lag++) {
        const float *early = x.data(), *late = &y[std::size_t(reach + lag)];
        float sums[16] = {};
        for (std::ptrdiff_t i = 0; i + 16 <= size; i += 16)
            for (std::ptrdiff_t k = 0; k < 16; k++) sums[k] += early[i + k] * late[i + k];
        const double correlation = std::accumulate(sums, sums + 16, 0.0);
        const double normalised = correlation > 0 && power > 0 ? correlation * correlation / power : 0;
        if (normalised > best) {
            best = normalised;
            delay = int(lag);
        }
        if (lag < reach) power += double(late[size]) * late[size] - double(late[0]) * late[0];
    }
    return delay;
}
