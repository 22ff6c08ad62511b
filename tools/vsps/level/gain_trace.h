// Levels and gain over time, from the samples before and after the level control.
#pragma once

#include <optional>
#include <vector>

#include "audio/active_level.h"
#include "audio/audio.h"

constexpr std::size_t kFrame = 160;  // samples, 20 ms

struct Frame {
    double inPower, outPower;  // mean squares
    double gain;               // linear, at the end of the frame; NaN where the samples do not tell
};

using GainTrace = std::vector<Frame>;

// One frame for every 20 ms begun; the powers of the last are those of the samples it has.
GainTrace traceGain(const Samples& in, const Samples& out);

// Seconds until a run that began attenuated had found its gain, that is, came within 6 dB of the upper quartile of the gain
// in the first two seconds of speech; the whole duration if it did not. Speech is what is at most 15.9 dB below the active
// level of the input. Empty if the gain is never known.
std::optional<double> attenuatedUntil(const GainTrace& trace, const std::optional<ActiveLevel>& speech);
