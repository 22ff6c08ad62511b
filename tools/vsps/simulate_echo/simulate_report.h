// What vsps simulate-echo has to say about a run.
#pragma once

#include <optional>
#include <string>

#include "audio/active_level.h"
#include "console/json.h"
#include "simulate_echo/loudspeaker.h"

struct SimulateSettings {
    std::string path = "d2";
    double echoReturnLoss = 12, delay = 0, nearAt = 0;  // dB, ms, s
    std::optional<double> noise;                        // dBov
    unsigned seed = 1;
    std::optional<double> distortion;  // %, of a sine of the far end's active level
    Clipping clipping = Clipping::soft;
};

struct SignalLevel {
    double level;  // dBov, -infinity for silence
    std::optional<ActiveLevel> active;
};

SignalLevel measured(const LevelMeter& meter);

struct SimulateReport {
    std::string farFile, nearFile, outFile;  // as they were named; nearFile is empty if nobody talks
    SimulateSettings settings;
    int rate;  // Hz
    std::size_t taps, samples;
    SignalLevel far, near, echo, noise, out;
    double measuredLoss;  // dB, from the far end to its echo; NaN if one is silent
    std::size_t clipped;

    double seconds() const { return double(samples) / rate; }
};

std::string toText(const SimulateReport& report);
Json toJson(const SimulateReport& report);
