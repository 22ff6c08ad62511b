// Levels and gain over time, from the samples before and after the level control.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <vector>

#include "audio/active_level.h"
#include "audio/audio.h"
#include "audio/bounded_trace.h"

constexpr std::size_t kFrame = 160;  // samples, 20 ms
constexpr double kFrameSeconds = double(kFrame) / kRate;

struct LevelPoint {
    double inEnergy = 0, outEnergy = 0, samples = 0;
    double gain = 0;  // linear, at the end; NaN where the samples do not tell

    double inPower() const { return inEnergy / samples; }
    double outPower() const { return outEnergy / samples; }
    LevelPoint& operator+=(const LevelPoint& next);
};

// The gains that explain some samples: x became y = trunc(gain * x), so |y| / |x| <= gain < (|y| + 1) / |x|, and a
// saturated one tells only the former.
struct GainRange {
    double low = 0, high = std::numeric_limits<double>::infinity();

    bool empty() const { return low > high * (1 + 1e-6); }  // the products are rounded to single precision
    double value(double before) const;
};

class GainTrace {
  public:
    // The next samples before and after, a multiple of kFrame but for the last block.
    void process(std::span<const std::int16_t> in, std::span<const std::int16_t> out);
    // When there are no more.
    void finish() { fill(); }

    const BoundedTrace<LevelPoint>& trace() const { return trace_; }  // in frames
    double firstGain() const { return firstGain_; }                   // linear; NaN if the samples never tell
    double lastGain() const { return gain_; }
    double highestGain() const { return highestGain_; }

    // Seconds until a run that began attenuated had found its gain, that is, came within 6 dB of the upper quartile of the
    // gain in the first two seconds of speech; the whole duration if it did not. Speech is what is at most 15.9 dB below
    // the active level of the input. Empty if the gain is not known at the end.
    std::optional<double> attenuatedUntil(const std::optional<ActiveLevel>& speech) const;

  private:
    void addBlock(const GainRange& block);
    void fill();

    static constexpr std::size_t kCapacity = 1 << 15;  // ten minutes in full detail

    BoundedTrace<LevelPoint> trace_{kCapacity};
    GainRange range_;
    double gain_ = std::numeric_limits<double>::quiet_NaN(), firstGain_ = gain_, highestGain_ = gain_;
    std::size_t filled_ = 0;  // frames that have their gain
};
