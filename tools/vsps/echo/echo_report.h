// What vsps echo has to say about a run.
#pragma once

#include <string>

#include "console/json.h"
#include "echo/echo_meter.h"

struct EchoReport {
    std::string farFile, nearFile, outFile, plotFile;  // as they were named; plotFile may be empty
    VspvEchoSettings settings;
    int nearRate;           // Hz, of the file
    std::uint64_t samples;  // at the rate of the canceller
    double elapsedSeconds;  // from the beginning of the command
    EchoMeasures measures;

    double seconds() const { return double(samples) / settings.samplingRate; }
    double timesRealTime() const { return seconds() / elapsedSeconds; }
};

std::string toText(const EchoReport& report);
Json toJson(const EchoReport& report);
