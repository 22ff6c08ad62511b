#include "level/gain_trace.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr std::size_t kBlock = 8;  // samples that get the same gain

// The gains that explain some samples: x became y = trunc(gain * x), so |y| / |x| <= gain < (|y| + 1) / |x|, and a
// saturated one tells only the former.
struct GainRange {
    double low = 0, high = std::numeric_limits<double>::infinity();

    bool empty() const { return low > high * (1 + 1e-6); }  // the products are rounded to single precision
    double value(double before) const {
        return std::isinf(high) ? low : low > 0 ? (low + high) / 2 : std::min(before, high);
    }
};

GainRange common(const GainRange& a, const GainRange& b) { return {std::max(a.low, b.low), std::min(a.high, b.high)}; }

GainRange gainOfBlock(const std::int16_t* x, const std::int16_t* y, std::size_t count) {
    GainRange range;
    for (std::size_t i = 0; i < count; i++) {
        if (x[i] == 0) continue;
        const double in = std::abs(double(x[i])), out = std::abs(double(y[i]));
        range.low = std::max(range.low, out / in);
        if (out < 32767) range.high = std::min(range.high, (out + 1) / in);
    }
    return range;
}

double meanSquare(const std::int16_t* x, std::size_t count) {
    double energy = 0;
    for (std::size_t i = 0; i < count; i++) energy += double(x[i]) * x[i];
    return energy / double(count);
}

// Fills in one gain at a time: it is taken to be constant for as long as one value explains the samples.
class GainFinder {
  public:
    explicit GainFinder(GainTrace& trace) : trace_(trace) {}

    void addBlock(const GainRange& block) {
        const GainRange both = common(range_, block);
        if (both.empty()) fill();
        range_ = both.empty() ? block : both;
    }

    // Gives the frames so far that have none the gain found.
    void fill() {
        const bool known = range_.low > 0 || !std::isnan(gain_);
        if (known) gain_ = range_.value(gain_);
        for (; filled_ < trace_.size(); filled_++) trace_[filled_].gain = gain_;
    }

  private:
    GainTrace& trace_;
    GainRange range_;
    double gain_ = std::numeric_limits<double>::quiet_NaN();
    std::size_t filled_ = 0;
};

}  // namespace

GainTrace traceGain(const Samples& in, const Samples& out) {
    GainTrace trace;
    trace.reserve(in.size() / kFrame + 1);
    GainFinder finder(trace);
    for (std::size_t begin = 0; begin < in.size(); begin += kFrame) {
        const std::size_t end = std::min(begin + kFrame, in.size());
        const std::int16_t *x = in.data(), *y = out.data();
        for (std::size_t i = begin; i < end; i += kBlock)
            finder.addBlock(gainOfBlock(x + i, y + i, std::min(kBlock, end - i)));
        trace.push_back({meanSquare(x + begin, end - begin), meanSquare(y + begin, end - begin), 0});
    }
    finder.fill();
    return trace;
}

std::optional<double> attenuatedUntil(const GainTrace& trace, const std::optional<ActiveLevel>& speech) {
    constexpr double kSpeechMargin = 15.9;      // dB
    constexpr double kNear = 0.50119;           // -6 dB
    constexpr double kInitialGain = 1.0 / 32;   // of the level control
    constexpr std::size_t kSpeechFrames = 100;  // 2 s
    constexpr double kFrameSeconds = double(kFrame) / kRate;

    if (trace.empty() || std::isnan(trace.back().gain)) return {};
    std::vector<double> gains;  // in the first speech
    for (const Frame& f : trace)
        if (speech && toDbov(f.inPower) > speech->dbov - kSpeechMargin && gains.size() < kSpeechFrames)
            gains.push_back(f.gain);
    std::sort(gains.begin(), gains.end());
    const double found = gains.empty() ? 0 : gains[gains.size() * 3 / 4];
    const bool neverRose = found * kNear < kInitialGain;
    const auto first =
        std::find_if(trace.begin(), trace.end(), [&](const Frame& f) { return !neverRose && f.gain >= found * kNear; });
    return double(first - trace.begin()) * kFrameSeconds;
}
