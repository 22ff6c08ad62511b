// What is measured of a canceller's output.
#pragma once

#include "echo_scenario.h"

namespace echo {

// The delay of the output, 0 to 160 samples, that leaves least of its difference to what is wanted, in samples from..to:
// webrtc's canceller delays its output without saying by how much.
std::size_t delayOf(const Signal& out, const Signal& wanted, std::size_t from, std::size_t to);

// The power of that difference.
double residual(const Signal& out, const Signal& wanted, std::size_t from, std::size_t to);

constexpr std::size_t kFrame = kRate / 50;

struct Residue {
    double inaudible, overNoise;  // % of frames, dB on the average of frames
};

// The frames of from..to with far-end speech, nobody talking at the near end: inaudible if at most 3 dB above the noise.
Residue residueOf(const Signal& out, const Signal& far, double noisePower, std::size_t from, std::size_t to);

// Of the near-end speech, in the frames from a sample on in which both talk, each limited to -10 .. 35 dB.
double segmentalSnr(const Signal& out, const Signal& far, const Signal& nearSpeech, std::size_t from);

}  // namespace echo
