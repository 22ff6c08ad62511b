// What the tests of both detectors share.
#pragma once

#include <cmath>
#include <ostream>
#include <vector>

#include "gsmamr/definitions.h"
#include "gsmamr/recorded.h"
#include "support/guarded.h"
#include "support/level_test.h"
#include "support/samples.h"
#include "support/speech.h"

namespace vsp::test {

template <class T>
std::vector<std::byte> bytesOf(const T& x) {
    std::vector<std::byte> bytes(sizeof x);
    std::memcpy(bytes.data(), &x, sizeof x);
    return bytes;
}

// Any content: random bits, small values, extremes.
template <class State>
State anyRecord(unsigned seed) {
    const auto words = samples(sizeof(State) / sizeof(Vsp16s), seed);
    State state;
    std::memcpy(&state, words.data(), sizeof state);
    return state;
}

// Telephone speech from very soft to clipped, alone and in noise, then noises, silences and extremes.
inline std::vector<Vsp16s> longRecording() {
    const auto speech = recordedSpeech();
    std::mt19937 random(1);
    std::vector<Vsp16s> signal;
    for (const auto& [gain, noise] : {std::pair(1.0, 0.0),
                                      {0.03, 5.0},
                                      {20.0, 0.0},
                                      {0.2, 300.0},
                                      {1.0, 3000.0},
                                      {0.0, 40.0},
                                      {0.002, 0.0},
                                      {0.0, 30000.0}})
        for (const Vsp16s x : speech) {
            const double y = gain * x + noise * (double(random()) * 0x1p-31 - 1);
            signal.push_back(Vsp16s(std::lround(std::clamp(y, -32768.0, 32767.0))));
        }
    const auto mixed = samples(8000, 5);
    signal.insert(signal.end(), mixed.begin(), mixed.end());
    return signal;
}

}  // namespace vsp::test
