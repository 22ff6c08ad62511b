// The echo path models of ITU-T G.168 Annex D: impulse responses of hybrids in telephone networks.
#pragma once

#include <span>

struct G168Path {
    const char* name;           // "d2" for model D.2
    double k;                   // K of the model
    std::span<const int> taps;  // as published, at 8 kHz
};

std::span<const G168Path> g168Paths();
