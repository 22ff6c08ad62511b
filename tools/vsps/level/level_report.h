// What vsps level has to say about a run.
#pragma once

#include <optional>

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

ChannelReport measureChannel(const Samples& in, const Samples& out, const GainTrace& trace, const LevelSettings& settings);

struct LevelReport {
    std::string inFile, outFile, plotFile;  // plotFile may be empty
    int inRate;                             // Hz
    std::size_t samples;                    // per channel
    LevelSettings settings;
    double controlSeconds;  // that the level control took
    std::vector<ChannelReport> channels;

    double seconds() const { return double(samples) / kRate; }
    double timesRealTime() const { return seconds() / controlSeconds; }
};

std::string toText(const LevelReport& report);
Json toJson(const LevelReport& report);
