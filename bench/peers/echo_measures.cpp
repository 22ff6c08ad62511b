#include "echo_measures.h"

#include <algorithm>
#include <cmath>

namespace echo {

namespace {

constexpr std::size_t kMaxDelay = 160;

struct Difference {
    std::size_t delay;
    double energy;
};

Difference leastDifference(const Signal& out, const Signal& wanted, std::size_t from, std::size_t to) {
    Difference best{0, 1e300};
    for (std::size_t delay = 0; delay <= kMaxDelay; delay++) {
        double sum = 0;
        for (std::size_t n = from; n < to - kMaxDelay && sum < best.energy; n++) {
            const double e = double(out[n + delay]) - wanted[n];
            sum += e * e;
        }
        if (sum < best.energy) best = {delay, sum};
    }
    return best;
}

// Power below which a frame of the far end counts as a pause.
double quietest(const Signal& far) { return 0.01 * power(far.data(), far.size()); }

}  // namespace

std::size_t delayOf(const Signal& out, const Signal& wanted, std::size_t from, std::size_t to) {
    return leastDifference(out, wanted, from, to).delay;
}

double residual(const Signal& out, const Signal& wanted, std::size_t from, std::size_t to) {
    return leastDifference(out, wanted, from, to).energy / static_cast<double>(to - kMaxDelay - from);
}

Residue residueOf(const Signal& out, const Signal& far, double noisePower, std::size_t from, std::size_t to) {
    const double quiet = quietest(far);
    Residue r{};
    std::size_t all = 0, good = 0;
    for (std::size_t n = from; n + kFrame <= to; n += kFrame) {
        if (power(far.data() + n, kFrame) < quiet) continue;
        const double left = decibels(power(out.data() + n, kFrame) / noisePower);
        all++;
        good += left <= 3;
        r.overNoise += left;
    }
    return {100 * double(good) / double(all), r.overNoise / double(all)};
}

double segmentalSnr(const Signal& out, const Signal& far, const Signal& nearSpeech, std::size_t from) {
    const std::size_t delay = delayOf(out, nearSpeech, from, out.size());
    const double quiet = quietest(far), quietTalk = 0.03 * power(nearSpeech.data() + from, nearSpeech.size() - from);
    double sum = 0;
    std::size_t frames = 0;
    for (std::size_t n = from; n + kFrame + delay <= far.size(); n += kFrame) {
        const double talk = power(nearSpeech.data() + n, kFrame);
        if (power(far.data() + n, kFrame) < quiet || talk < quietTalk) continue;
        double error = 0;
        for (std::size_t i = n; i < n + kFrame; i++) error += std::pow(double(out[i + delay]) - nearSpeech[i], 2);
        sum += std::clamp(decibels(talk * kFrame / (error + 1)), -10.0, 35.0);
        frames++;
    }
    return sum / double(frames);
}

}  // namespace echo
