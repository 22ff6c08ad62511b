// What vsps level has to say about a run.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "audio/active_level.h"
#include "console/json.h"
#include "level/gain_trace.h"
#include "level/level_control.h"

struct ChannelReport {
    std::optional<ActiveLevel> inLevel, outLevel;
    double inPeak, outPeak;                   // dBov, -infinity for silence
    double firstGain, lastGain, highestGain;  // dB, NaN if the signal does not tell
    std::size_t limited;                      // output samples held at the peak limit
    std::optional<double> attenuatedUntil;    // s, only in one-pass runs
};

// Measures a channel while it is controlled.
class ChannelMeter {
  public:
    explicit ChannelMeter(const LevelSettings& settings) : settings_(settings) {}

    // The next samples before and after, as GainTrace wants them.
    void process(std::span<const std::int16_t> in, std::span<const std::int16_t> out);
    // When there are no more.
    ChannelReport finish();

    const GainTrace& trace() const { return gain_; }

  private:
    LevelSettings settings_;
    LevelMeter in_, out_;
    GainTrace gain_;
    std::size_t limited_ = 0, samples_ = 0;
};

struct LevelReport {
    std::string inFile, outFile, plotFile;  // as they were named; plotFile may be empty
    int inRate;                             // Hz
    std::size_t samples;                    // per channel
    LevelSettings settings;
    double elapsedSeconds;  // from the beginning of the command
    std::vector<ChannelReport> channels;

    double seconds() const { return double(samples) / kRate; }
    double timesRealTime() const { return seconds() / elapsedSeconds; }
};

std::string toText(const LevelReport& report);
Json toJson(const LevelReport& report);
