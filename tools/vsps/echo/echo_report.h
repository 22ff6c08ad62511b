// What vsps echo has to say about a run.
#pragma once

#include <optional>
#include <string>

#include "audio/active_level.h"
#include "console/json.h"
#include "echo/echo_trace.h"

// A stretch of the recording. Echo return loss enhancement: power of the near end over that of the output, over the frames
// with echo alone.
struct ErlePoint {
    double seconds;              // middle of the stretch
    std::optional<double> erle;  // dB; empty without such frames
};

std::vector<ErlePoint> erleOverTime(const std::vector<EchoFrame>& frames, double stretchSeconds);

struct EchoReport {
    std::string farFile, nearFile, outFile, plotFile;  // plotFile may be empty
    EchoCancellerSettings settings;
    std::size_t samples;
    double cancelSeconds;  // that the canceller took
    std::optional<ActiveLevel> farLevel, nearLevel, outLevel;
    double bulkDelayMs;
    std::optional<double> steadyErle;   // dB, over the second half
    std::optional<double> convergence;  // s of far-end speech until 20 dB are reached for the first time
    double doubleTalkSeconds;
    std::optional<double> doubleTalkChange;  // dB, output over near end in double talk
    double toneSeconds;                      // disabled by a modem's tone
    std::vector<ErlePoint> erle;             // in half seconds

    double seconds() const { return double(samples) / kRate; }
    double timesRealTime() const { return seconds() / cancelSeconds; }
};

// Fills in what can be measured.
void measureEcho(const Samples& far, const Samples& near, const EchoRun& run, EchoReport& report);

std::string toText(const EchoReport& report);
Json toJson(const EchoReport& report);
