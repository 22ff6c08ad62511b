// The signals that noise suppressors are compared on: recorded prompts with noise.
#pragma once

#include "echo_scenario.h"

namespace noise {

using echo::Signal;

// Prompts of one folder after another with half a second between them, at an active level of -26 dBov (ITU-T P.56).
struct Voices {
    std::vector<Signal> talkers;  // one for each folder
    std::vector<Signal> others;   // eight of other prompts, for babble
};
Voices recordedVoices(const std::vector<std::string>& folders, double seconds);

inline const std::vector<std::string> kNoises = {"white", "pink", "babble", "hum", "changing"};

// Of power 1. Hum: 50 Hz with harmonics. Changing: white noise that is 10 dB louder during every other stretch of four
// seconds.
Signal makeNoise(const std::string& kind, std::size_t length, const Voices& voices);

// Speech with noise so many dB below its active level, rounded.
Signal mix(const Signal& speech, const Signal& noise, double snr);

}  // namespace noise
