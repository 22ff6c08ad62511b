// The signals that echo cancellers are compared on: recorded speech through echo paths.
#pragma once

#include <limits>
#include <string>
#include <vector>

#include "simulate_echo/loudspeaker.h"

namespace echo {

constexpr int kRate = 8000;         // Hz
using Signal = std::vector<float>;  // on the scale of 16-bit samples

// An echo path: a hybrid of ITU-T G.168 Annex D behind a delay, and what a room or a second hybrid adds.
struct Path {
    std::string hybrid;  // d2 to d9; room: none, a path that decays from its beginning
    double delayMs;      // before the hybrid's response
    double lengthMs;     // from the first sample to where the decaying tail ends, 40 dB below its beginning
    double erl;          // dB between far-end speech and its echo
};

// Eight paths of 16 to 128 ms.
std::vector<Path> eightPaths();

// Recorded prompts, 8 kHz, one after another, cut to the given length or repeated up to it.
Signal recordedSpeech(const std::vector<std::string>& files, double seconds);

// As a loudspeaker plays it that distorts a sine of the signal's active level by so many percent; behind a high-pass of
// first order at so many hertz, 0: none.
Signal played(const Signal& x, Clipping clipping, double percent, double highPassHz = 0);

struct Scenario {
    Signal far;         // recorded speech
    Signal echo;        // of the far end
    Signal noise;       // white, with the rounding
    Signal nearSpeech;  // recorded speech; may be silent
    Signal near;        // the sum, rounded to integers
};

constexpr double kNoiseDbov = -68;

// The near-end speech lasts from startOfNear to endOfNear seconds; its active level is nearDb above that of the far end.
Scenario makeScenario(const Path& path, const Signal& far, const Signal& nearSpeech, double startOfNear,
                      double endOfNear = std::numeric_limits<double>::infinity(), double nearDb = 0,
                      double noiseDbov = kNoiseDbov);

Signal whiteNoise(std::size_t length, double dbov, unsigned seed = 5);
double activeDbov(const Signal& x);  // ITU-T P.56
void scale(Signal& x, double db);

double power(const float* x, std::size_t count);  // mean square
double decibels(double ratio);

}  // namespace echo
