// What a microphone or a telephone line picks up: the near end, the echo of the far end, and noise.
#pragma once

#include <optional>

#include "audio/audio.h"
#include "simulate_echo/echo_path.h"

struct NoiseSettings {
    double level;  // dBov
    unsigned seed;
};

struct LineSignals {
    Samples echo, noise, out;
    double farPower, echoPower;  // mean squares; the echo's before rounding
    std::size_t clipped;         // samples of out at full scale because the sum was beyond
};

// far and near are of one length; the echo is so many samples late.
LineSignals simulateLine(const Samples& far, const Samples& near, const EchoPath& path, std::size_t delay,
                         const std::optional<NoiseSettings>& noise);
