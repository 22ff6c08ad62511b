#include "gain_trace.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "active_level.h"

namespace {

constexpr std::size_t kBlock = 8;  // samples that get the same gain

// A sample x became y = trunc(gain * x), so |y| / |x| <= gain < (|y| + 1) / |x|; a saturated one tells only the former.
// The gain of a block is the one closest to that before which explains its samples.
double gainOfBlock(const std::int16_t* x, const std::int16_t* y, std::size_t count, double before) {
    double low = 0, high = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < count; i++) {
        if (x[i] == 0) continue;
        const double in = std::abs(double(x[i])), out = std::abs(double(y[i]));
        low = std::max(low, out / in);
        if (out < 32767) high = std::min(high, (out + 1) / in);
    }
    if (low == 0) return before;  // too quiet to tell
    if (std::isnan(before)) return std::isinf(high) ? low : (low + high) / 2;
    return std::max(low, std::min(before, high));
}

}  // namespace

GainTrace traceGain(const Samples& in, const Samples& out) {
    GainTrace trace;
    trace.reserve(in.size() / kFrame + 1);
    double gain = std::numeric_limits<double>::quiet_NaN();
    for (std::size_t begin = 0; begin < in.size(); begin += kFrame) {
        const std::size_t count = std::min(kFrame, in.size() - begin);
        const std::int16_t *x = in.data() + begin, *y = out.data() + begin;
        double inEnergy = 0, outEnergy = 0;
        for (std::size_t i = 0; i < count; i++) {
            inEnergy += double(x[i]) * x[i];
            outEnergy += double(y[i]) * y[i];
        }
        for (std::size_t i = 0; i < count; i += kBlock) gain = gainOfBlock(x + i, y + i, std::min(kBlock, count - i), gain);
        trace.push_back({inEnergy / double(count), outEnergy / double(count), gain});
    }
    return trace;
}

std::optional<double> attenuatedUntil(const GainTrace& trace, std::optional<double> activeLevel) {
    constexpr double kSpeechMargin = 15.9;     // dB
    constexpr double kNear = 0.70795;          // -3 dB
    constexpr double kInitialGain = 1.0 / 32;  // of the level control
    constexpr int kReferenceFrames = 100;      // 2 s
    constexpr double kFrameSeconds = double(kFrame) / kRate;

    double highest = 0;
    int speechFrames = 0;
    for (const Frame& f : trace)
        if (activeLevel && toDbov(f.inPower) > *activeLevel - kSpeechMargin && speechFrames++ < kReferenceFrames)
            highest = std::max(highest, f.gain);
    if (trace.empty() || std::isnan(trace.back().gain)) return {};
    const bool neverRose = highest * kNear < kInitialGain;
    const auto found =
        std::find_if(trace.begin(), trace.end(), [&](const Frame& f) { return !neverRose && f.gain >= highest * kNear; });
    return double(found - trace.begin()) * kFrameSeconds;
}
