#include "level/gain_trace.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr std::size_t kSameGain = 8;  // samples that get the same gain

GainRange common(const GainRange& a, const GainRange& b) { return {std::max(a.low, b.low), std::min(a.high, b.high)}; }

GainRange gainOfBlock(std::span<const std::int16_t> x, std::span<const std::int16_t> y) {
    GainRange range;
    for (std::size_t i = 0; i < x.size(); i++) {
        if (x[i] == 0) continue;
        const double in = std::abs(double(x[i])), out = std::abs(double(y[i]));
        range.low = std::max(range.low, out / in);
        if (out < 32767) range.high = std::min(range.high, (out + 1) / in);
    }
    return range;
}

double energyOf(std::span<const std::int16_t> x) {
    double energy = 0;
    for (const std::int16_t sample : x) energy += double(sample) * sample;
    return energy;
}

}  // namespace

LevelPoint& LevelPoint::operator+=(const LevelPoint& next) {
    inEnergy += next.inEnergy;
    outEnergy += next.outEnergy;
    samples += next.samples;
    gain = next.gain;
    return *this;
}

double GainRange::value(double before) const {
    return std::isinf(high) ? low : low > 0 ? (low + high) / 2 : std::min(before, high);
}

void GainTrace::process(std::span<const std::int16_t> in, std::span<const std::int16_t> out) {
    for (std::size_t begin = 0; begin < in.size(); begin += kFrame) {
        const std::size_t count = std::min(kFrame, in.size() - begin);
        const auto x = in.subspan(begin, count), y = out.subspan(begin, count);
        for (std::size_t i = 0; i < count; i += kSameGain) {
            const std::size_t n = std::min(kSameGain, count - i);
            addBlock(gainOfBlock(x.subspan(i, n), y.subspan(i, n)));
        }
        trace_.add({energyOf(x), energyOf(y), double(count), 0});
    }
}

// The gain is taken to be constant for as long as one value explains the samples.
void GainTrace::addBlock(const GainRange& block) {
    const GainRange both = common(range_, block);
    if (both.empty()) fill();
    range_ = both.empty() ? block : both;
}

// Gives the frames so far that have none the gain found.
void GainTrace::fill() {
    const bool known = range_.low > 0 || !std::isnan(gain_);
    if (known) gain_ = range_.value(gain_);
    if (filled_ == trace_.units()) return;
    auto& points = trace_.points();
    for (std::size_t i = filled_ / trace_.unitsPerPoint(); i < points.size(); i++) points[i].gain = gain_;
    filled_ = trace_.units();
    if (std::isnan(firstGain_)) firstGain_ = highestGain_ = gain_;
    highestGain_ = std::max(highestGain_, gain_);
}

std::optional<double> GainTrace::attenuatedUntil(const std::optional<ActiveLevel>& speech) const {
    constexpr double kSpeechMargin = 15.9;     // dB
    constexpr double kNear = 0.50119;          // -6 dB
    constexpr double kInitialGain = 1.0 / 32;  // of the level control
    constexpr double kSpeechSeconds = 2;

    const auto& points = trace_.points();
    if (points.empty() || std::isnan(points.back().gain)) return {};
    const double pointSeconds = kFrameSeconds * double(trace_.unitsPerPoint());
    std::vector<double> gains;  // in the first speech
    for (const LevelPoint& p : points)
        if (speech && toDbov(p.inPower()) > speech->dbov - kSpeechMargin &&
            double(gains.size()) * pointSeconds < kSpeechSeconds)
            gains.push_back(p.gain);
    std::sort(gains.begin(), gains.end());
    const double found = gains.empty() ? 0 : gains[gains.size() * 3 / 4];
    const bool neverRose = found * kNear < kInitialGain;
    const auto first = std::find_if(points.begin(), points.end(),
                                    [&](const LevelPoint& p) { return !neverRose && p.gain >= found * kNear; });
    return double(first - points.begin()) * pointSeconds;
}
