// Speech level as telephony measures it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

// Level of a power (mean square of 16-bit samples), dB relative to the overload point: a full-scale sine is at -3 dBov.
double toDbov(double power);

struct ActiveLevel {
    double dbov;      // mean power while there is speech, dBov
    double activity;  // part of the time with speech, 0 to 1
};

// Active speech level of 8 kHz samples, ITU-T P.56 method B. Empty for silence and for what is too short to tell.
std::optional<ActiveLevel> activeLevel(std::span<const std::int16_t> x);
