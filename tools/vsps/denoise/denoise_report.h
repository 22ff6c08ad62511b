// What vsps denoise reports.
#pragma once

#include <string>
#include <vector>

#include "console/json.h"
#include "denoise/noise_removal.h"

struct DenoiseReport {
    std::string inFile, outFile, plotFile;  // as they were named; plotFile may be empty
    int inRate, rate;                       // Hz
    std::size_t samples;                    // per channel
    std::string mode;
    double elapsedSeconds;  // from the beginning of the command

    double seconds() const { return double(samples) / rate; }
    double timesRealTime() const { return seconds() / elapsedSeconds; }
};

std::string toText(const DenoiseReport& report, const std::vector<NoiseRemoval>& channels);
Json toJson(const DenoiseReport& report, const std::vector<NoiseRemoval>& channels);
